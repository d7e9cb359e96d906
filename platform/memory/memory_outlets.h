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

/// Makes a control for every name that is asked for, except those that are missing on purpose.
class MemoryOutlets final : public OutletSource {
public:
    Label* label(std::string_view name) override { return find(labels, name); }
    TextField* textField(std::string_view name) override { return find(textFields, name); }
    Button* button(std::string_view name) override { return find(buttons, name); }
    PopUpButton* popUpButton(std::string_view name) override
    {
        return missing.contains(name) ? nullptr : &popUp;
    }
    PopUpButtonCell* popUpButtonCell(std::string_view name) override
    {
        return missing.contains(name) ? nullptr : &cell;
    }
    Menu* menu(std::string_view name) override
    {
        return missing.contains(name) ? nullptr : &popUpMenu;
    }
    ProgressIndicator* progressIndicator(std::string_view name) override
    {
        return missing.contains(name) ? nullptr : &spinner;
    }
    ImageView* imageView(std::string_view name) override { return find(imageViews, name); }
    TextView* textView(std::string_view name) override { return find(textViews, name); }

    /// The doubles themselves.
    MemoryLabel& labelNamed(std::string_view name) { return made(labels, name); }
    MemoryTextField& fieldNamed(std::string_view name) { return made(textFields, name); }
    MemoryButton& buttonNamed(std::string_view name) { return made(buttons, name); }
    MemoryImageView& imageViewNamed(std::string_view name) { return made(imageViews, name); }
    MemoryTextView& textViewNamed(std::string_view name) { return made(textViews, name); }

    /// From now on, what code does to any control made so far goes into `events`.
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

private:
    template <typename T> T& made(Controls<T>& controls, std::string_view name)
    {
        auto& control = controls[std::string(name)];
        if (!control)
            control = std::make_unique<T>();
        return *control;
    }
    template <typename T> T* find(Controls<T>& controls, std::string_view name)
    {
        return missing.contains(name) ? nullptr : &made(controls, name);
    }
};

/// Puts the controls of a view into the state that the storyboard gives them: "LoginVC" or "ToUVC".
void layOut(std::string_view customClass, MemoryOutlets& outlets);

/// The action that the storyboard connects to a button, or "".
std::string_view actionOfButton(std::string_view name);

} // namespace zarn::memory
