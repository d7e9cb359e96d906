// SPDX-License-Identifier: MIT
#pragma once

#include <mutex>
#include <string>

namespace zarn {

class Bundle;

/// The texts of the information dictionary, read once, on first use. Any thread.
/// A missing dictionary or text stops the process.
class BundleTexts {
public:
    explicit BundleTexts(const Bundle& bundle)
        : m_bundle(bundle)
    {
    }

    const std::string& appVersion() const { return m_appVersion.get(m_bundle); }
    const std::string& buildVersion() const { return m_buildVersion.get(m_bundle); }
    const std::string& appExecutableName() const { return m_appExecutableName.get(m_bundle); }
    /// Sent as "User-Agent": the executable's name, everything but letters and digits
    /// percent-encoded, then "/" and the version.
    std::string userAgentText() const;

private:
    class Text {
    public:
        explicit Text(const char* key)
            : m_key(key)
        {
        }
        const std::string& get(const Bundle& bundle) const;

    private:
        const char* m_key;
        mutable std::once_flag m_once;
        mutable std::string m_text;
    };

    const Bundle& m_bundle;
    Text m_appVersion{"CFBundleShortVersionString"};
    Text m_buildVersion{"CFBundleVersion"};
    Text m_appExecutableName{"CFBundleExecutable"};
};

} // namespace zarn
