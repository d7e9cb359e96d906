// SPDX-License-Identifier: MIT
#pragma once

#include "platform/application.h"
#include "platform/storyboard.h"
#include "tests/contract/alert_contract.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace zarn {

/// Lends the application and storyboard "Main", and does and sees what a user does and sees.
/// Controls go by their storyboard names, in the window in front.
class ScreenFixture {
public:
    virtual ~ScreenFixture() = default;
    virtual Application& application() = 0;
    virtual Storyboards& storyboards() = 0;
    virtual AlertFixture& alerts() = 0;

    /// Runs the application and does each step as an event of its own. A run that does not end with
    /// the last of them fails the test.
    virtual int run(ApplicationDelegate& delegate, std::vector<std::function<void()>> steps) = 0;
    /// Control is back in the event loop, outside of a run.
    virtual void settle() = 0;

    // Each is false when the screen does not let the user do it.
    [[nodiscard]] virtual bool click(std::string_view button) = 0;
    /// Chooses an item of the pop-up button by clicks, with the Option key or without.
    [[nodiscard]] virtual bool choose(std::string_view title, bool withOption) = 0;
    /// Clicks into a text field, or moves on to another control by keyboard.
    [[nodiscard]] virtual bool moveFocus(std::string_view control) = 0;
    /// Opens a menu of the menu bar and leaves it without a choice.
    [[nodiscard]] virtual bool lookIntoMenu() = 0;
    [[nodiscard]] virtual bool chooseMenuItem(std::string_view title) = 0;
    /// Another program's window gets the keyboard.
    [[nodiscard]] virtual bool switchToOtherProgram() = 0;
    /// The other program's window closes, and this program's has the keyboard again.
    [[nodiscard]] virtual bool comeBack() = 0;
    [[nodiscard]] virtual bool closeWindow(std::string_view title) = 0;
    [[nodiscard]] virtual bool clickLink(std::string_view textView, std::string_view text) = 0;
    /// Type where the keyboard focus is; a field's text gets longer.
    virtual void type(std::string_view text) = 0;
    virtual void pressReturn() = 0;
    virtual void pressSpace() = 0;

    [[nodiscard]] virtual bool isShown(std::string_view control) = 0;
    virtual std::string shownText(std::string_view control) = 0;
    /// The image of a button or an image view; nothing when it shows none.
    virtual std::optional<ImageName> shownImage(std::string_view control) = 0;
    virtual std::string toolTip(std::string_view button) = 0;
    /// Whether the window of that title has the keyboard, now or soon.
    [[nodiscard]] virtual bool isInFront(std::string_view title) = 0;
    /// Width and height, without the menu bar.
    virtual std::pair<int, int> contentSize() = 0;
    /// The grey of the view's layer where it lets nothing through, from 0 to 255.
    virtual int layerGrey() = 0;
    /// The addresses that links opened, in order.
    virtual std::vector<std::string> openedLinks() = 0;
};

class ProbeController;

/// What happened, in order, and the controllers that live, by custom class.
struct ProbeRecord {
    std::vector<std::string> events;
    std::map<std::string, ProbeController*, std::less<>> living;
    /// What a controller does when its view is about to appear, by custom class.
    std::map<std::string, std::function<void(View&)>> onWillAppear;
};

/// Records its callbacks and actions: "<class> <callback>", and "<action>" for the use of a
/// control.
class ProbeController final : public ViewController {
public:
    ProbeController(std::string customClass, ProbeRecord& record);
    ~ProbeController() override;
    ProbeController(const ProbeController&) = delete;
    ProbeController& operator=(const ProbeController&) = delete;

    void connectOutlets(OutletSource& source) override;
    void viewDidLoad() override;
    void viewWillAppear() override;
    void viewDidAppear() override;
    void viewWillDisappear() override;
    bool performAction(std::string_view action, Button* button) override;

    View& shownView() { return view(); }
    OutletSource& outlets() { return *m_outlets; }

    /// `button` is what the action came with.
    std::function<void(Button* button)> onAction;

private:
    void record(std::string_view what);

    std::string m_customClass;
    ProbeRecord& m_record;
    OutletSource* m_outlets = nullptr;
};

/// Made by the backend that this is linked with.
std::unique_ptr<ScreenFixture> makeScreenFixture();

/// A screen whose storyboard makes probes for the three custom classes.
class ScreenContract : public testing::Test {
protected:
    ScreenContract();

    Storyboard& storyboard() { return *fixture->storyboards().storyboard("Main"); }
    /// Shows the initial window and forgets what was recorded meanwhile.
    void showInitialWindow();
    ProbeController& probe(std::string_view customClass)
    {
        return *record.living.at(std::string(customClass));
    }
    OutletSource& outlets() { return probe("LoginVC").outlets(); }
    TextField& field(std::string_view name) { return *outlets().textField(name); }
    Button& button(std::string_view name) { return *outlets().button(name); }
    std::vector<std::string>& events() { return record.events; }
    /// The titles of the program's own windows, in their order.
    std::vector<std::string> windowTitles();

    ProbeRecord record;
    std::unique_ptr<ScreenFixture> fixture = makeScreenFixture();
};

} // namespace zarn
