// SPDX-License-Identifier: MIT
#pragma once

#include "platform/memory/memory_application.h"
#include "platform/memory/memory_controls.h"
#include "platform/storyboard.h"

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace zarn::memory {

/// A view that remembers. Records "segue <identifier>" and "dismiss".
class MemoryView final : public View {
public:
    explicit MemoryView(std::vector<std::string>& events)
        : m_events(events)
    {
    }
    Window* window() override { return shownIn; }
    void setWantsLayer(bool wants) override { m_hasLayer = wants; }
    bool hasLayer() const override { return m_hasLayer; }
    void setLayerBackground(double level, double alphaValue) override
    {
        greyLevel = level;
        alpha = alphaValue;
    }
    void setPreferredContentSize(int newWidth, int newHeight) override
    {
        width = newWidth;
        height = newHeight;
    }
    void performSegue(std::string_view identifier) override
    {
        m_events.push_back("segue " + std::string(identifier));
    }
    void dismissViewController() override { m_events.emplace_back("dismiss"); }

    Window* shownIn = nullptr;
    double greyLevel = -1;
    double alpha = -1;
    int width = 0;
    int height = 0;

private:
    std::vector<std::string>& m_events;
    bool m_hasLayer = false;
};

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
    template <typename T> T* find(Controls<T>& controls, std::string_view name)
    {
        if (missing.contains(name))
            return nullptr;
        auto& control = controls[std::string(name)];
        if (!control)
            control = std::make_unique<T>();
        return control.get();
    }
};

/// A window controller with everything it shows.
class MemoryWindowController final : public WindowController {
public:
    MemoryWindowController(std::string title, std::vector<std::string>& events)
        : ownWindow(std::move(title), events)
        , view(events)
    {
        view.shownIn = &ownWindow;
    }
    Window* window() override { return withoutWindow ? nullptr : &ownWindow; }

    bool withoutWindow = false;
    MemoryWindow ownWindow;
    MemoryView view;
    MemoryOutlets outlets;
    std::unique_ptr<ViewController> controller;
};

/// Knows the initial controller ("LoginVC") and "aboutWC" ("AboutVC"). Records "show <title>".
class MemoryStoryboard final : public Storyboard {
public:
    explicit MemoryStoryboard(std::vector<std::string>& events)
        : m_events(events)
    {
    }
    void setViewControllerFactory(ViewControllerFactory factory) override
    {
        m_factory = std::move(factory);
    }
    std::unique_ptr<WindowController> instantiateController(std::string_view identifier) override;
    std::unique_ptr<WindowController> instantiateInitialController() override;
    void showWindow(std::unique_ptr<WindowController> controller) override;

    std::vector<std::unique_ptr<MemoryWindowController>> shown;
    std::set<std::string, std::less<>> unknownIdentifiers;
    int instantiated = 0;

private:
    std::unique_ptr<WindowController> load(std::string_view customClass, const std::string& title);

    ViewControllerFactory m_factory;
    std::vector<std::string>& m_events;
};

class MemoryStoryboards final : public Storyboards {
public:
    explicit MemoryStoryboards(std::vector<std::string>& events)
        : main(events)
    {
    }
    Storyboard* storyboard(std::string_view name) override
    {
        return name == "Main" && !withoutMain ? &main : nullptr;
    }
    MemoryStoryboard main;
    bool withoutMain = false;
};

} // namespace zarn::memory
