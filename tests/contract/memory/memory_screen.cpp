// SPDX-License-Identifier: MIT
// The user of the screen in memory.
#include "platform/memory/memory_platform.h"
#include "tests/contract/screen_contract.h"

#include <cmath>
#include <utility>

namespace zarn {
namespace {

constexpr const char* switchedAway = "switched to another program";

class MemoryAlertFixture : public AlertFixture {
public:
    explicit MemoryAlertFixture(memory::MemoryAlertRunner& runner)
        : m_runner(runner)
    {
    }
    AlertRunner& runner() override { return m_runner; }
    void whenOpen(std::function<void()> act) override
    {
        m_runner.whileOpen = [this, act = std::move(act)] {
            const auto once = act;
            m_runner.whileOpen = nullptr;
            once();
        };
    }
    bool isOpen() const override { return m_runner.isOpen(); }
    bool press(std::string_view title) override { return m_runner.press(title); }
    void pressKey(std::string_view key) override { (void)m_runner.pressKey(key); }
    void pressEscape() override { m_runner.leave(); }
    void closeWindow() override { m_runner.leave(); }
    std::vector<std::string> texts() const override
    {
        const auto& alert = m_runner.shown.back();
        if (alert.messageText.empty())
            return {alert.informativeText};
        return {alert.messageText, alert.informativeText};
    }
    std::vector<std::string> buttons() const override
    {
        std::vector<std::string> titles;
        for (const auto& button : m_runner.shown.back().buttons)
            titles.push_back(button.title);
        return titles;
    }

private:
    memory::MemoryAlertRunner& m_runner;
};

struct OwnedAlerts {
    std::vector<std::string> events;
    memory::MemoryAlertRunner alerts{events};
};

class OwningAlertFixture final : OwnedAlerts, public MemoryAlertFixture {
public:
    OwningAlertFixture()
        : MemoryAlertFixture(alerts)
    {
    }
};

class MemoryScreenFixture final : public ScreenFixture {
public:
    Application& application() override { return m_platform.application; }
    Storyboards& storyboards() override { return m_platform.storyboards; }
    AlertFixture& alerts() override { return m_alerts; }
    int run(ApplicationDelegate& delegate, std::vector<std::function<void()>> steps) override;
    void settle() override
    {
        if (!m_platform.application.isEnding())
            m_platform.application.runPosted();
        main().endDismissed();
    }

    bool click(std::string_view button) override;
    bool choose(std::string_view title, bool withOption) override;
    bool moveFocus(std::string_view control) override;
    bool lookIntoMenu() override { return !main().windows().empty(); }
    bool chooseMenuItem(std::string_view title) override;
    bool switchToOtherProgram() override;
    bool comeBack() override;
    bool closeWindow(std::string_view title) override { return main().closeByUser(title); }
    bool clickLink(std::string_view textView, std::string_view text) override;
    void type(std::string_view text) override { front().typeKeys(text); }
    void pressReturn() override { front().pressReturn(); }
    void pressSpace() override { front().pressSpace(); }

    bool isShown(std::string_view control) override;
    std::string shownText(std::string_view control) override;
    std::optional<ImageName> shownImage(std::string_view control) override;
    std::string toolTip(std::string_view button) override;
    bool isInFront(std::string_view title) override;
    std::pair<int, int> contentSize() override;
    int layerGrey() override;
    std::vector<std::string> openedLinks() override { return m_openedLinks; }

private:
    memory::MemoryStoryboard& main() { return m_platform.storyboards.main; }
    memory::MemoryWindowController& front();

    memory::MemoryPlatform m_platform;
    MemoryAlertFixture m_alerts{m_platform.alertRunner};
    std::vector<std::string> m_openedLinks;
};

memory::MemoryWindowController& MemoryScreenFixture::front()
{
    return main().terms() ? *main().terms() : *main().shown.back();
}

int MemoryScreenFixture::run(
    ApplicationDelegate& delegate, std::vector<std::function<void()>> steps)
{
    auto& application = m_platform.application;
    application.whileRunning = [&] {
        for (const auto& step : steps) {
            if (application.isEnding())
                return;
            step();
            settle();
        }
        EXPECT_TRUE(application.isEnding()) << "the application runs on";
    };
    return application.run(delegate);
}

bool MemoryScreenFixture::click(std::string_view button)
{
    return front().click(button);
}

bool MemoryScreenFixture::choose(std::string_view title, bool withOption)
{
    m_platform.application.modifierFlags = withOption ? modifierFlagOption : 0;
    const bool chosen = front().choose(title);
    m_platform.application.modifierFlags = 0;
    return chosen;
}

bool MemoryScreenFixture::moveFocus(std::string_view control)
{
    return front().moveFocus(control);
}

bool MemoryScreenFixture::chooseMenuItem(std::string_view title)
{
    return m_platform.application.chooseMenuItem(title);
}

bool MemoryScreenFixture::switchToOtherProgram()
{
    m_platform.events.emplace_back(switchedAway);
    return true;
}

bool MemoryScreenFixture::comeBack()
{
    m_platform.events.emplace_back("activate");
    return true;
}

bool MemoryScreenFixture::clickLink(std::string_view textView, std::string_view text)
{
    const auto link = front().outlets.textViewNamed(textView).linkOf(text);
    if (link)
        m_openedLinks.push_back(*link);
    return link.has_value();
}

bool MemoryScreenFixture::isShown(std::string_view control)
{
    auto& outlets = front().outlets;
    if (outlets.progressIndicator(control))
        return outlets.spinner.isAnimating() && !outlets.spinner.isHidden();
    const Control* candidates[]
        = {outlets.label(control), outlets.textField(control), outlets.button(control),
            outlets.popUpButton(control), outlets.imageView(control), outlets.textView(control)};
    for (const auto* candidate : candidates) {
        if (candidate)
            return !candidate->isHidden();
    }
    ADD_FAILURE() << "there is no " << control;
    return false;
}

std::string MemoryScreenFixture::shownText(std::string_view control)
{
    auto& outlets = front().outlets;
    if (const auto* label = outlets.label(control))
        return label->stringValue();
    if (const auto* button = outlets.button(control))
        return button->title();
    if (outlets.textField(control))
        return outlets.fieldNamed(control).shownText();
    if (outlets.textView(control))
        return outlets.textViewNamed(control).shownText();
    if (const auto* popUp = outlets.popUpButton(control))
        return popUp->titleOfSelectedItem();
    ADD_FAILURE() << "there is no " << control;
    return "";
}

std::optional<ImageName> MemoryScreenFixture::shownImage(std::string_view control)
{
    auto& outlets = front().outlets;
    if (outlets.button(control))
        return outlets.buttonNamed(control).image();
    return outlets.imageViewNamed(control).image();
}

std::string MemoryScreenFixture::toolTip(std::string_view button)
{
    return front().outlets.buttonNamed(button).toolTip();
}

bool MemoryScreenFixture::isInFront(std::string_view title)
{
    bool wasActivated = false;
    for (auto it = m_platform.events.rbegin(); it != m_platform.events.rend(); ++it) {
        if (*it == switchedAway && !wasActivated)
            return false;
        wasActivated = wasActivated || *it == "activate";
        for (const std::string_view how : {"show ", "front "}) {
            if (it->starts_with(how))
                return it->substr(how.size()) == title;
        }
    }
    return false;
}

std::pair<int, int> MemoryScreenFixture::contentSize()
{
    return {front().view.width, front().view.height};
}

int MemoryScreenFixture::layerGrey()
{
    const auto& view = front().view;
    return view.alpha == 1 ? static_cast<int>(std::lround(view.greyLevel * 255)) : -1;
}

} // namespace

std::unique_ptr<AlertFixture> makeAlertFixture()
{
    return std::make_unique<OwningAlertFixture>();
}

std::unique_ptr<ScreenFixture> makeScreenFixture()
{
    return std::make_unique<MemoryScreenFixture>();
}

} // namespace zarn
