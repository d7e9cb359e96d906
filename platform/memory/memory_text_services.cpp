// SPDX-License-Identifier: MIT
#include "platform/memory/memory_text_services.h"

#include <algorithm>

namespace zarn::memory {

namespace {

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}
bool isUpper(char c)
{
    return c >= 'A' && c <= 'Z';
}
char lower(char c)
{
    return isUpper(c) ? static_cast<char>(c - 'A' + 'a') : c;
}

int sign(int value)
{
    return value < 0 ? -1 : value > 0 ? 1 : 0;
}

std::string_view takeDigits(std::string_view& text)
{
    std::size_t count = 0;
    while (count < text.size() && isDigit(text[count]))
        ++count;
    const auto run = text.substr(0, count);
    text.remove_prefix(count);
    return run;
}

int compareRuns(std::string_view a, std::string_view b)
{
    a.remove_prefix(std::min(a.find_first_not_of('0'), a.size()));
    b.remove_prefix(std::min(b.find_first_not_of('0'), b.size()));
    if (a.size() != b.size())
        return a.size() < b.size() ? -1 : 1;
    return sign(a.compare(b));
}

} // namespace

int MemoryTextServices::localizedCompare(std::string_view a, std::string_view b) const
{
    const auto folded = [](std::string_view text) {
        std::string result(text);
        std::transform(result.begin(), result.end(), result.begin(), lower);
        return result;
    };
    if (const int order = folded(a).compare(folded(b)))
        return sign(order);
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (a[i] != b[i])
            return isUpper(a[i]) ? 1 : -1;
    }
    return 0;
}

void MemoryTextServices::sortLocalized(std::vector<std::string>& texts) const
{
    std::stable_sort(texts.begin(), texts.end(),
        [this](const auto& a, const auto& b) { return localizedCompare(a, b) < 0; });
}

int MemoryTextServices::numericCompare(std::string_view a, std::string_view b) const
{
    while (!a.empty() && !b.empty()) {
        if (isDigit(a.front()) && isDigit(b.front())) {
            if (const int order = compareRuns(takeDigits(a), takeDigits(b)))
                return order;
            continue;
        }
        if (a.front() != b.front())
            return static_cast<unsigned char>(a.front()) < static_cast<unsigned char>(b.front())
                ? -1
                : 1;
        a.remove_prefix(1);
        b.remove_prefix(1);
    }
    return a.empty() == b.empty() ? 0 : a.empty() ? -1 : 1;
}

std::optional<std::string> MemoryTextServices::firstMatch(
    std::string_view pattern, std::string_view text) const
{
    constexpr std::string_view opening = "(?<=";
    constexpr std::string_view middle = ")[^";
    const auto literalEnd = pattern.find(middle);
    if (!pattern.starts_with(opening) || !pattern.ends_with("]+")
        || literalEnd == std::string_view::npos)
        return std::nullopt;
    std::string literal(pattern.substr(opening.size(), literalEnd - opening.size()));
    std::string excluded(pattern.substr(literalEnd + middle.size()));
    excluded.resize(excluded.size() - std::string_view("]+").size());
    // Both write "\/" for "/".
    std::erase(literal, '\\');
    std::erase(excluded, '\\');
    for (auto at = text.find(literal); at != std::string_view::npos;
         at = text.find(literal, at + 1)) {
        const auto start = at + literal.size();
        const auto end = std::min(text.find_first_of(excluded, start), text.size());
        if (end > start)
            return std::string(text.substr(start, end - start));
    }
    return std::nullopt;
}

} // namespace zarn::memory
