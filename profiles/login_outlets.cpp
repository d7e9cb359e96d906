// SPDX-License-Identifier: MIT
#include "profiles/login_outlets.h"

#include "platform/view_controller.h"

namespace zarn {

void LoginOutlets::connect(OutletSource& source)
{
    for (auto* label :
        {&displayName_Label, &serverURL_Label, &username_label, &password_label, &status_Label})
        label->connect(source.label(label->name()));
    for (auto* field : {&displayName_TextField, &zarnProServer_textfield,
             &zarnProUsername_textfield, &zarnProPassword_textfield})
        field->connect(source.textField(field->name()));
    for (auto* button : {&useUsername_button, &hideCreds_button, &updateServerInfo_Button,
             &quit_Button, &saveCreds_button})
        button->connect(source.button(button->name()));
    selectServer_Button.connect(source.popUpButton(selectServer_Button.name()));
    selectedServer_ButtonCell.connect(source.popUpButtonCell(selectedServer_ButtonCell.name()));
    selectServer_Menu.connect(source.menu(selectServer_Menu.name()));
    spinner_PI.connect(source.progressIndicator(spinner_PI.name()));
}

std::array<Control*, 6> LoginOutlets::credentialControls() const
{
    return {&zarnProServer_textfield.get(), &zarnProUsername_textfield.get(),
        &zarnProPassword_textfield.get(), &serverURL_Label.get(), &username_label.get(),
        &password_label.get()};
}

void LoginOutlets::emptyCredentialFields() const
{
    zarnProServer_textfield->setStringValue("");
    zarnProUsername_textfield->setStringValue("");
    zarnProPassword_textfield->setStringValue("");
}

} // namespace zarn
