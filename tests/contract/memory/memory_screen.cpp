// SPDX-License-Identifier: MIT
#include "tests/contract/memory/memory_screen.h"

#include <cmath>

namespace zarn {

namespace {
constexpr const char* switchedAway = "switched to another program";
}

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
    const Control* candidates[] = {outlets.label(control), outlets.textField(control),
        outlets.button(control), outlets.popUpButton(control), outlets.progressIndicator(control),
        outlets.imageView(control), outlets.textView(control)};
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

} // namespace zarn
