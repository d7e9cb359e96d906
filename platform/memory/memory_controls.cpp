// SPDX-License-Identifier: MIT
#include "platform/memory/memory_controls.h"

#include <algorithm>
#include <set>

namespace zarn::memory {

std::string MemoryTextView::shownText() const
{
    std::string result;
    for (const auto& run : m_text)
        result += run.text;
    return result;
}

std::optional<std::string> MemoryTextView::linkOf(std::string_view text) const
{
    const auto run = std::find_if(
        m_text.begin(), m_text.end(), [&](const TextRun& each) { return each.text == text; });
    return run == m_text.end() ? std::nullopt : run->link;
}

void MemoryPopUpButton::removeAllItems()
{
    record("remove all");
    m_items.clear();
    m_selected.reset();
}

std::vector<MemoryPopUpButton::Item>::const_iterator MemoryPopUpButton::find(
    std::string_view title) const
{
    return std::ranges::find_if(
        m_items, [title](const Item& item) { return !item.isSeparator && item.title == title; });
}

void MemoryPopUpButton::addItem(std::string_view title)
{
    record("add " + std::string(title));
    if (const auto it = find(title); it != m_items.end())
        m_items.erase(it);
    m_items.push_back({std::string(title), false});
    if (m_items.size() == 1)
        m_selected = std::string(title);
}

void MemoryPopUpButton::addItems(const std::vector<std::string>& titles)
{
    for (const auto& title : titles)
        record("add " + title);
    // Of equal titles the last one stays, which is where adding one by one would have moved it.
    std::set<std::string_view> added(titles.begin(), titles.end());
    std::erase_if(
        m_items, [&](const Item& item) { return !item.isSeparator && added.contains(item.title); });
    const auto start = static_cast<std::ptrdiff_t>(m_items.size());
    for (auto title = titles.rbegin(); title != titles.rend(); ++title) {
        if (added.erase(*title) == 1)
            m_items.push_back({*title, false});
    }
    std::reverse(m_items.begin() + start, m_items.end());
    if (start == 0 && !titles.empty())
        m_selected = titles.front();
}

void MemoryPopUpButton::removeItem(std::string_view title)
{
    record("remove " + std::string(title));
    if (const auto it = find(title); it != m_items.end())
        m_items.erase(it);
    if (m_selected == title)
        m_selected.reset();
}

void MemoryPopUpButton::selectItem(std::string_view title)
{
    record("select " + std::string(title));
    if (!choose(title))
        m_selected.reset();
}

bool MemoryPopUpButton::choose(std::string_view title)
{
    if (find(title) == m_items.end())
        return false;
    m_selected = std::string(title);
    return true;
}

std::vector<std::string> MemoryPopUpButton::shownItems() const
{
    std::vector<std::string> items;
    for (const auto& item : m_items)
        items.push_back(item.isSeparator ? "-" : item.title);
    return items;
}

std::vector<std::string> MemoryPopUpButton::itemTitles() const
{
    std::vector<std::string> titles;
    for (const auto& item : m_items)
        titles.push_back(item.title);
    return titles;
}

void MemoryPopUpButton::insertSeparator(std::size_t index)
{
    record("separator at " + std::to_string(index));
    m_items.insert(m_items.begin() + static_cast<std::ptrdiff_t>(index), Item{"", true});
}

} // namespace zarn::memory
