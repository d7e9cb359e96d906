// SPDX-License-Identifier: MIT
#include "update/version_check.h"

#include "base/fatal.h"
#include "base/utf8.h"
#include "platform/bundle.h"
#include "platform/text_services.h"

#include <charconv>
#include <vector>

namespace zarn {

namespace {

// The brackets hold a set of characters, not the closing tag: a published version is cut at its
// first "t" or "d". The publisher knows.
constexpr std::string_view latestVersionPattern
    = "(?<=<tr><td>Current Version<\\/td><td>)[^<\\/td>]+";

[[noreturn]] void malformed(std::string_view text)
{
    fatalError("malformed application version " + std::string(text));
}

std::vector<std::string> piecesOf(std::string_view text, char separator)
{
    std::vector<std::string> pieces;
    while (!text.empty()) {
        const auto end = std::min(text.find(separator), text.size());
        if (end > 0)
            pieces.emplace_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return pieces;
}

std::int64_t decimal(std::string_view piece, std::string_view whole)
{
    auto digits = piece;
    if (digits.starts_with('+') && !digits.starts_with("+-"))
        digits.remove_prefix(1);
    std::int64_t number = 0;
    const auto* end = digits.data() + digits.size();
    const auto [stop, error] = std::from_chars(digits.data(), end, number);
    if (error != std::errc() || stop != end)
        malformed(whole);
    return number;
}

} // namespace

AppVersion parseAppVersion(std::string_view text)
{
    const auto pieces = piecesOf(text, '.');
    if (pieces.size() < 3)
        malformed(text);
    auto last = pieces[2];
    for (char& c : last)
        c = c == 'B' ? 'b' : c;
    const auto patchAndBeta = piecesOf(last, 'b');
    if (patchAndBeta.empty())
        malformed(text);
    AppVersion version{
        decimal(pieces[0], text), decimal(pieces[1], text), decimal(patchAndBeta[0], text)};
    if (patchAndBeta.size() > 1) {
        version.isBeta = true;
        version.beta = decimal(patchAndBeta[1], text);
    }
    return version;
}

void VersionCheck::checkForUpdate(std::function<void(bool)> completion)
{
    m_deps.sessions.removeAllCachedResponses();
    const auto* info = m_deps.bundle.infoDictionary();
    const auto currentVersion
        = info ? stringMember(*info, "CFBundleShortVersionString") : std::nullopt;
    if (!currentVersion)
        fatalError("the information dictionary has no CFBundleShortVersionString");
    // Only its form matters here: the comparison below works on the text.
    parseAppVersion(*currentVersion);
    const auto url = Url::fromText(m_deps.updateCheckPageURL);
    if (!url)
        fatalError("malformed update-check page address");
    const auto session = m_deps.sessions.makeSession({}, *this);
    session->dataTask({*url},
        [this, current = *currentVersion, completion = std::move(completion)](
            const UrlReply& reply) {
            if (reply)
                completion(isNewer(reply.value(), current));
        });
}

bool VersionCheck::isNewer(const HttpResponse& response, const std::string& currentVersion) const
{
    if (response.status < 200 || response.status > 299 || !isUtf8(response.body))
        return false;
    const auto latest = m_deps.texts.firstMatch(latestVersionPattern, response.body);
    return latest && m_deps.texts.numericCompare(*latest, currentVersion) > 0;
}

} // namespace zarn
