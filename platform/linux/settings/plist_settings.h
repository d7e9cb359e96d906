// SPDX-License-Identifier: MIT
#pragma once

#include "base/result.h"
#include "platform/linux/settings/global_values.h"
#include "platform/linux/settings/plist_document.h"
#include "platform/settings.h"

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace zarn::linux_backend {

/// One domain: a property-list file, replaced as a whole under a lock. A file that does not parse
/// reads as empty and is renamed. After a read that failed nothing is written until one succeeds:
/// what would be written may stem from the failure. Main thread only.
class PlistDomain final : public SettingsDomain {
public:
    explicit PlistDomain(std::string path)
        : m_path(std::move(path))
    {
    }

    std::optional<Value> object(std::string_view key) const override;
    void set(std::string_view key, const Value& value) override;
    void remove(std::string_view key) override;

    /// The same with an outcome, for tools.
    Status trySet(std::string_view key, const Value& value);
    Status tryRemove(std::string_view key);
    /// Every key and value.
    Value::Dictionary dictionary() const;
    const std::string& path() const { return m_path; }

private:
    // The file as it was last seen; parsed again only when it changed.
    struct Seen;
    const PlistDocument& current() const;
    Result<std::shared_ptr<Seen>> look() const;
    // With the lock held: a damaged file is set aside.
    Result<std::shared_ptr<Seen>> lookUnderLock() const;
    Result<std::shared_ptr<Seen>> lookAndSetAside() const;
    Status change(const std::function<bool(PlistDocument&)>& apply);

    std::string m_path;
    mutable std::shared_ptr<Seen> m_seen;
    // What the last read failed with; "" after one that succeeded.
    mutable std::string m_readFailure;
    bool m_lockTimedOut = false;
};

/// The domains in a folder, one file each, and the layers of the standard one. Main thread only.
class PlistSettings final : public Settings {
public:
    /// `globalValues` may be absent and outlives this.
    PlistSettings(
        std::string folder, Value::Dictionary launchArguments, const GlobalValues* globalValues);
    ~PlistSettings() override;
    PlistSettings(const PlistSettings&) = delete;
    PlistSettings& operator=(const PlistSettings&) = delete;

    SettingsDomain& standard() override;
    /// nullptr for a name that is no plain file name, and when the folder cannot be made.
    SettingsDomain* suite(std::string_view name) override;
    PlistDomain* domain(std::string_view name);

    static constexpr const char* standardIdentifier = "com.zarn.ZarnActions";

private:
    class StandardDomain;
    std::string m_folder;
    std::map<std::string, std::unique_ptr<PlistDomain>, std::less<>> m_domains;
    std::unique_ptr<StandardDomain> m_standard;
};

/// "-key value" pairs of a command line as texts; a key without a value is left out.
Value::Dictionary launchArgumentsOf(const std::vector<std::string>& arguments);

} // namespace zarn::linux_backend
