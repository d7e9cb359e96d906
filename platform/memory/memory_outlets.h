// SPDX-License-Identifier: MIT
#pragma once

#include "platform/memory/memory_controls.h"
#include "platform/view_controller.h"

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace zarn::memory {

/// The controls of one view. Until the view is laid out, every name that is looked up gets a
/// control, except those that a test declares missing.
class MemoryOutlets final : public OutletSource {
public:
    Label* label(std::string_view name) override { return find(labels, name); }
    TextField* textField(std::string_view name) override { return find(textFields, name); }
    Button* button(std::string_view name) override { return find(buttons, name); }
    PopUpButton* popUpButton(std::string_view name) override
    {
        return isThere(name, "selectServer_Button") ? &popUp : nullptr;
    }
    PopUpButtonCell* popUpButtonCell(std::string_view name) override
    {
        return isThere(name, "selectedServer_ButtonCell") ? &cell : nullptr;
    }
    Menu* menu(std::string_view name) override
    {
        return isThere(name, "selectServer_Menu") ? &popUpMenu : nullptr;
    }
    ProgressIndicator* progressIndicator(std::string_view name) override
    {
        return isThere(name, "spinner_PI") ? &spinner : nullptr;
    }
    ImageView* imageView(std::string_view name) override { return find(imageViews, name); }
    TextView* textView(std::string_view name) override { return find(textViews, name); }

    /// The doubles themselves.
    MemoryLabel& labelNamed(std::string_view name) { return made(labels, name); }
    MemoryTextField& fieldNamed(std::string_view name) { return made(textFields, name); }
    MemoryButton& buttonNamed(std::string_view name) { return made(buttons, name); }
    MemoryImageView& imageViewNamed(std::string_view name) { return made(imageViews, name); }
    MemoryTextView& textViewNamed(std::string_view name) { return made(textViews, name); }

    /// From now on, changes that code makes to the existing controls are recorded in `events`.
    void recordInto(std::vector<std::string>* events);

    template <typename T> using Controls = std::map<std::string, std::unique_ptr<T>, std::less<>>;
    Controls<MemoryLabel> labels;
    Controls<MemoryTextField> textFields;
    Controls<MemoryButton> buttons;
    Controls<MemoryImageView> imageViews;
    Controls<MemoryTextView> textViews;
    MemoryPopUpButton popUp;
    MemoryPopUpButtonCell cell{popUp};
    MemoryMenu popUpMenu{popUp};
    MemoryProgressIndicator spinner;
    std::set<std::string, std::less<>> missing;
    MemoryFocus focus;
    /// From now on no further controls are made.
    bool isLaidOut = false;
    /// The pop-up button and the spinner are there too.
    bool hasServerMenu = true;

private:
    bool isThere(std::string_view name, std::string_view wanted) const
    {
        return !missing.contains(name) && (!isLaidOut || (hasServerMenu && name == wanted));
    }
    template <typename T> T& made(Controls<T>& controls, std::string_view name)
    {
        auto& control = controls[std::string(name)];
        if (!control) {
            control = std::make_unique<T>();
            control->shareFocus(focus);
        }
        return *control;
    }
    template <typename T> T* find(Controls<T>& controls, std::string_view name)
    {
        const bool isMissing = missing.contains(name) || (isLaidOut && !controls.contains(name));
        return isMissing ? nullptr : &made(controls, name);
    }
};

/// Makes the controls of a view in the state that the storyboard gives them: "LoginVC", "AboutVC"
/// or "ToUVC".
void layOut(std::string_view customClass, MemoryOutlets& outlets);

/// The action that the storyboard connects to a button, or "".
std::string_view actionOfButton(std::string_view name);

} // namespace zarn::memory
