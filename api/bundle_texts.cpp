// SPDX-License-Identifier: MIT
#include "api/bundle_texts.h"

#include "base/fatal.h"
#include "platform/bundle.h"

#include <string_view>

namespace zarn {

namespace {

std::string percentEncoded(const std::string& text)
{
    static constexpr std::string_view digits = "0123456789ABCDEF";
    std::string result;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if ((c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z')) {
            result += c;
        } else {
            result += '%';
            result += digits[byte >> 4U];
            result += digits[byte & 15U];
        }
    }
    return result;
}

} // namespace

const std::string& BundleTexts::Text::get(const Bundle& bundle) const
{
    std::call_once(m_once, [&] {
        const auto* info = bundle.infoDictionary();
        const auto text = info ? stringMember(*info, m_key) : std::nullopt;
        if (!text)
            fatalError(std::string("the information dictionary has no ") + m_key);
        m_text = *text;
    });
    return m_text;
}

std::string BundleTexts::userAgentText() const
{
    return percentEncoded(appExecutableName()) + "/" + appVersion();
}

} // namespace zarn
