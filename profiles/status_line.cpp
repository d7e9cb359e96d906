// SPDX-License-Identifier: MIT
#include "profiles/status_line.h"

#include "base/utf8.h"
#include "platform/console.h"
#include "platform/controls.h"

#include <algorithm>
#include <array>

namespace zarn {

namespace {

constexpr std::size_t longestLine = 300;
constexpr std::string_view replacement = "\xEF\xBF\xBD";
constexpr std::string_view ellipsis = "\xE2\x80\xA6";

bool isContinuation(char c)
{
    return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U;
}

bool misleads(std::string_view character)
{
    if (character.size() == 1)
        return static_cast<unsigned char>(character[0]) < 0x20 || character[0] == 0x7F;
    // The C1 controls, then what separates lines or changes the direction of text.
    struct Range {
        std::string_view first;
        std::string_view last;
    };
    static constexpr std::array<Range, 5> ranges{{
        {"\xC2\x80", "\xC2\x9F"},
        {"\xD8\x9C", "\xD8\x9C"},
        {"\xE2\x80\x8B", "\xE2\x80\x8F"},
        {"\xE2\x80\xA8", "\xE2\x80\xAE"},
        {"\xE2\x81\xA0", "\xE2\x81\xAF"},
    }};
    return std::any_of(ranges.begin(), ranges.end(),
        [&](const Range& range) { return character >= range.first && character <= range.last; });
}

} // namespace

std::string plainLine(std::string_view text)
{
    const bool wellFormed = isUtf8(text);
    std::string line;
    while (!text.empty()) {
        std::size_t length = 1;
        while (wellFormed && length < text.size() && isContinuation(text[length]))
            ++length;
        const auto character = text.substr(0, length);
        if (line.size() + length > longestLine)
            return line.append(ellipsis);
        const bool isForeign = !wellFormed && static_cast<unsigned char>(character[0]) >= 0x80;
        line += isForeign || misleads(character) ? replacement : character;
        text.remove_prefix(length);
    }
    return line;
}

void StatusLine::setLabel(Label* label)
{
    m_label = label;
    m_shown.clear();
    update();
}

void StatusLine::userActed()
{
    m_failure.clear();
    update();
}

void StatusLine::showProgress(Wait wait, std::string_view text)
{
    m_progress[wait] = plainLine(text);
    update();
}

void StatusLine::endProgress(Wait wait)
{
    m_progress.erase(wait);
    update();
}

void StatusLine::showFailure(std::string_view operation, std::string_view cause)
{
    m_failure = plainLine(cause);
    m_console.writeLine("[" + std::string(operation) + "] " + m_failure);
    update();
}

void StatusLine::update()
{
    const auto& text = m_progress.empty() ? m_failure : m_progress.rbegin()->second;
    // Setting a text announces it, so a text that stays is not set again.
    if (!m_label || text == m_shown)
        return;
    m_shown = text;
    m_label->setStringValue(text);
}

} // namespace zarn
