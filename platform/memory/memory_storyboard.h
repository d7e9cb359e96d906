// SPDX-License-Identifier: MIT
#pragma once

#include "platform/memory/memory_application.h"
#include "platform/memory/memory_outlets.h"
#include "platform/storyboard.h"

#include <functional>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace zarn::memory {

/// A view that keeps its state. Records "segue <identifier>" and "dismiss", and "size <width> x
/// <height>" when the recording of sizes is on.
class MemoryView final : public View {
public:
    explicit MemoryView(std::vector<std::string>& events)
        : m_events(events)
    {
    }
    Window* window() override { return shownIn; }
    void setWantsLayer(bool wants) override { m_hasLayer = wants && canHaveLayer; }
    bool hasLayer() const override { return m_hasLayer; }
    void setLayerBackground(double level, double alphaValue) override
    {
        greyLevel = level;
        alpha = alphaValue;
    }
    void setPreferredContentSize(int newWidth, int newHeight) override;
    void performSegue(std::string_view identifier) override;
    void dismissViewController() override;

    Window* shownIn = nullptr;
    double greyLevel = -1;
    double alpha = -1;
    int width = 0;
    int height = 0;
    bool canHaveLayer = true;
    bool recordsSizes = false;
    std::function<void(std::string_view identifier)> onSegue;
    std::function<void()> onDismiss;

private:
    std::vector<std::string>& m_events;
    bool m_hasLayer = false;
};

/// A window controller with its controls and the actions of a user.
class MemoryWindowController final : public WindowController {
public:
    MemoryWindowController(std::string title, std::vector<std::string>& events)
        : ownWindow(std::move(title), events)
        , view(events)
    {
        view.shownIn = &ownWindow;
    }
    Window* window() override { return withoutWindow ? nullptr : &ownWindow; }

    /// Clicks a button; a check box or disclosure button flips first. False when it is hidden,
    /// disabled or has no action.
    [[nodiscard]] bool click(std::string_view name);
    /// Chooses an item of the pop-up button; false when it is hidden or has no such item.
    [[nodiscard]] bool choose(std::string_view title);
    /// Replaces a field's text by typing; false when a user could not.
    [[nodiscard]] bool type(std::string_view name, std::string_view text);
    /// The keyboard focus leaves a field.
    void leave(std::string_view name) { outlets.fieldNamed(name).endEditing(); }
    /// Moves the keyboard focus to a control; false when that one is hidden or disabled.
    [[nodiscard]] bool moveFocus(std::string_view name);
    /// Types at the end of the field that has the keyboard focus.
    void typeKeys(std::string_view text) const;
    /// Presses Return, which stays in a field and presses a button.
    void pressReturn();
    /// Presses Space, for the button that has the keyboard focus.
    void pressSpace();

    bool withoutWindow = false;
    MemoryWindow ownWindow;
    MemoryView view;
    MemoryOutlets outlets;
    std::unique_ptr<ViewController> controller;
};

/// Knows the initial controller ("LoginVC"), "aboutWC" ("AboutVC") and the segue "termsOfUse"
/// ("ToUVC"). Records "show <title>".
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

    /// Closes a shown window and ends its controller. The delegate hears of the last one.
    void close(std::size_t index);
    /// The user closes the window of that title; false when its style mask does not allow it.
    [[nodiscard]] bool closeByUser(std::string_view title);
    /// The windows on screen, in the order in which they were shown.
    std::vector<Window*> windows() const;
    /// Control returns to the event loop: dismissed controllers are destroyed.
    void endDismissed() { m_dismissed.clear(); }
    /// The program ends: every window is destroyed without a callback.
    void closeAll();
    /// The terms-of-use view while it is presented, else nullptr.
    MemoryWindowController* terms() const { return m_terms.get(); }

    std::vector<std::unique_ptr<MemoryWindowController>> shown;
    std::function<void()> onLastWindowClosed;
    std::set<std::string, std::less<>> unknownIdentifiers;
    /// The windows of the controllers made next have none.
    bool withoutWindows = false;
    int instantiated = 0;

private:
    std::unique_ptr<MemoryWindowController> load(
        std::string_view customClass, const std::string& title);
    void presentTerms();
    std::unique_ptr<MemoryWindowController> takeOffScreen(std::size_t index);
    void dismiss(const MemoryWindowController& window);

    ViewControllerFactory m_factory;
    std::vector<std::string>& m_events;
    std::unique_ptr<MemoryWindowController> m_terms;
    // A controller that dismisses itself is still running when it is taken off screen.
    std::vector<std::unique_ptr<MemoryWindowController>> m_dismissed;
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
