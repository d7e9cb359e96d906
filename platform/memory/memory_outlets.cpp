// SPDX-License-Identifier: MIT
#include "platform/memory/memory_outlets.h"

#include <array>
#include <utility>

namespace zarn::memory {

namespace {

void layOutLogin(MemoryOutlets& outlets)
{
    outlets.labelNamed("displayName_Label").setStringValue("Server:");
    outlets.labelNamed("serverURL_Label").setStringValue("Server URL:");
    outlets.labelNamed("username_label").setStringValue("Client ID:");
    outlets.labelNamed("password_label").setStringValue("Client Secret:");
    outlets.labelNamed("status_Label");
    outlets.fieldNamed("displayName_TextField").setHidden(true);
    outlets.fieldNamed("zarnProServer_textfield").setEditable(false);
    outlets.fieldNamed("zarnProServer_textfield").interfaceIdentifier = "server";
    outlets.fieldNamed("zarnProUsername_textfield").interfaceIdentifier = "username";
    outlets.fieldNamed("zarnProPassword_textfield").isSecure = true;
    outlets.buttonNamed("hideCreds_button").kind = MemoryButton::Kind::Disclosure;
    outlets.buttonNamed("quit_Button").setTitle("Quit");
    outlets.buttonNamed("updateServerInfo_Button").setTitle("Set");
    for (const auto& [name, title] : {std::pair{"useUsername_button", "Use username and password"},
             std::pair{"saveCreds_button", "Save credentials"}}) {
        outlets.buttonNamed(name).setTitle(title);
        outlets.buttonNamed(name).kind = MemoryButton::Kind::CheckBox;
    }
}

void layOutAbout(MemoryOutlets& outlets)
{
    outlets.imageViewNamed("about_image");
    outlets.labelNamed("appName_textfield");
    outlets.labelNamed("version_textfield");
    outlets.textViewNamed("license_textfield");
}

void layOutTerms(MemoryOutlets& outlets)
{
    outlets.imageViewNamed("icon_ImageView");
    outlets.textViewNamed("termsOfUse_TextView");
    outlets.buttonNamed("exit_Button").setTitle("Exit");
    outlets.buttonNamed("accept_Button").setTitle("Accept");
}

} // namespace

void MemoryOutlets::recordInto(std::vector<std::string>* events)
{
    const auto recordAll = [events](auto& controls) {
        for (auto& [name, control] : controls)
            control->recordAs(name, events);
    };
    recordAll(labels);
    recordAll(textFields);
    recordAll(buttons);
    recordAll(imageViews);
    recordAll(textViews);
    popUp.recordAs("selectServer_Button", events);
    spinner.recordAs("spinner_PI", events);
}

void layOut(std::string_view customClass, MemoryOutlets& outlets)
{
    if (customClass == "LoginVC")
        layOutLogin(outlets);
    else if (customClass == "AboutVC")
        layOutAbout(outlets);
    else if (customClass == "ToUVC")
        layOutTerms(outlets);
    outlets.hasServerMenu = customClass == "LoginVC";
    outlets.isLaidOut = true;
}

std::string_view actionOfButton(std::string_view name)
{
    static constexpr std::array<std::pair<std::string_view, std::string_view>, 7> actions{{
        {"accept_Button", "exitOrAccept"},
        {"exit_Button", "exitOrAccept"},
        {"hideCreds_button", "hideCreds_action"},
        {"quit_Button", "quit_Action"},
        {"saveCreds_button", "saveCredentials_Action"},
        {"updateServerInfo_Button", "updateServerInfo_Action"},
        {"useUsername_button", "useUsername_action"},
    }};
    for (const auto& [button, action] : actions) {
        if (button == name)
            return action;
    }
    return {};
}

} // namespace zarn::memory
