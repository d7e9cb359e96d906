// SPDX-License-Identifier: MIT
#pragma once

#include "platform/url_session.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace zarn {

class Bundle;
class TextServices;

/// A version of this program: M.m.p or M.m.pbN.
struct AppVersion {
    std::int64_t major = 0;
    std::int64_t minor = 0;
    std::int64_t patch = 0;
    bool isBeta = false;
    std::int64_t beta = 0;
    bool operator==(const AppVersion&) const = default;
};

/// Stops the process when the text has another form.
AppVersion parseAppVersion(std::string_view text);

/// Reads the published version from a web page and compares it with the running one. Main thread
/// only. Its sessions accept every certificate: the page is public and nothing secret is sent.
class VersionCheck final : public UrlSessionDelegate {
public:
    struct Deps {
        UrlSessions& sessions;
        const Bundle& bundle;
        const TextServices& texts;
        std::string updateCheckPageURL;
    };
    explicit VersionCheck(Deps deps)
        : m_deps(std::move(deps))
    {
    }

    /// `completion` receives true when a newer version is published. It is called later, at most
    /// once; never when there is no HTTP response. A malformed version or page address of our own
    /// stops the process.
    void checkForUpdate(std::function<void(bool)> completion);

    ServerTrust serverTrustDisposition() override { return ServerTrust::AcceptAny; }

private:
    bool isNewer(const HttpResponse& response, const std::string& currentVersion) const;

    Deps m_deps;
};

} // namespace zarn
