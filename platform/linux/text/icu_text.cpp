// SPDX-License-Identifier: MIT
#include "platform/linux/text/icu_text.h"

#include <unicode/coll.h>
#include <unicode/locid.h>
#include <unicode/regex.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <clocale>
#include <cstdlib>
#include <mutex>
#include <numeric>

namespace zarn::linux_backend {

namespace {

icu::UnicodeString unicode(std::string_view text)
{
    return icu::UnicodeString::fromUTF8({text.data(), static_cast<std::int32_t>(text.size())});
}

// The locale's name, searched in the C library's order, without its encoding.
std::string collationLocaleName()
{
    for (const char* variable : {"LC_ALL", "LC_COLLATE", "LANG"}) {
        const char* value = std::getenv(variable);
        if (!value || !*value)
            continue;
        std::string name(value);
        name = name.substr(0, name.find('.'));
        return name == "C" || name == "POSIX" ? "" : name;
    }
    return "";
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

std::string_view takeDigits(std::string_view& text)
{
    const auto* const end = std::find_if_not(text.begin(), text.end(), isDigit);
    const auto run = text.substr(0, static_cast<std::size_t>(end - text.begin()));
    text.remove_prefix(run.size());
    return run;
}

int compareByValue(std::string_view a, std::string_view b)
{
    a.remove_prefix(std::min(a.find_first_not_of('0'), a.size()));
    b.remove_prefix(std::min(b.find_first_not_of('0'), b.size()));
    if (a.size() != b.size())
        return a.size() < b.size() ? -1 : 1;
    const int order = a.compare(b);
    return order < 0 ? -1 : order > 0 ? 1 : 0;
}

} // namespace

class IcuTextServices::Collation {
public:
    Collation()
    {
        UErrorCode status = U_ZERO_ERROR;
        const auto name = collationLocaleName();
        m_collator.reset(icu::Collator::createInstance(
            name.empty() ? icu::Locale::getRoot() : icu::Locale(name.c_str()), status));
        if (U_FAILURE(status))
            m_collator.reset();
    }

    int compare(std::string_view a, std::string_view b) const
    {
        UErrorCode status = U_ZERO_ERROR;
        if (m_collator) {
            const auto order
                = m_collator->compareUTF8({a.data(), static_cast<std::int32_t>(a.size())},
                    {b.data(), static_cast<std::int32_t>(b.size())}, status);
            if (U_SUCCESS(status))
                return order;
        }
        const int order = a.compare(b);
        return order < 0 ? -1 : order > 0 ? 1 : 0;
    }

private:
    std::unique_ptr<icu::Collator> m_collator;
};

struct IcuTextServices::Lazy {
    std::once_flag once;
    std::unique_ptr<Collation> collation;
};

IcuTextServices::IcuTextServices()
    : m_lazy(std::make_unique<Lazy>())
{
}

IcuTextServices::~IcuTextServices() = default;

const IcuTextServices::Collation& IcuTextServices::collation() const
{
    std::call_once(m_lazy->once, [this] { m_lazy->collation = std::make_unique<Collation>(); });
    return *m_lazy->collation;
}

int IcuTextServices::localizedCompare(std::string_view a, std::string_view b) const
{
    return collation().compare(a, b);
}

void IcuTextServices::sortLocalized(std::vector<std::string>& texts) const
{
    if (texts.size() < 2)
        return;
    const auto& order = collation();
    std::stable_sort(texts.begin(), texts.end(),
        [&](const auto& a, const auto& b) { return order.compare(a, b) < 0; });
}

int IcuTextServices::numericCompare(std::string_view a, std::string_view b) const
{
    while (!a.empty() && !b.empty()) {
        if (isDigit(a.front()) && isDigit(b.front())) {
            if (const int order = compareByValue(takeDigits(a), takeDigits(b)))
                return order;
            continue;
        }
        const auto left = static_cast<unsigned char>(a.front());
        const auto right = static_cast<unsigned char>(b.front());
        if (left != right)
            return left < right ? -1 : 1;
        a.remove_prefix(1);
        b.remove_prefix(1);
    }
    return a.empty() == b.empty() ? 0 : a.empty() ? -1 : 1;
}

std::optional<std::string> IcuTextServices::firstMatch(
    std::string_view pattern, std::string_view text) const
{
    UErrorCode status = U_ZERO_ERROR;
    const auto input = unicode(text);
    icu::RegexMatcher matcher(unicode(pattern), input, 0, status);
    if (U_FAILURE(status))
        return std::nullopt;
    // Limits for hostile pages: the engine's steps (about a second) and the bytes of its stack.
    matcher.setTimeLimit(1000, status);
    matcher.setStackLimit(8 << 20, status);
    if (!matcher.find(status) || U_FAILURE(status))
        return std::nullopt;
    std::string match;
    matcher.group(status).toUTF8String(match);
    return U_SUCCESS(status) ? std::optional(match) : std::nullopt;
}

} // namespace zarn::linux_backend
