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
/// reads as empty and is renamed. After a failed read nothing is written until a read
/// succeeds: what the caller would write may be based on the failed one. Main thread only.
class PlistDomain final : public SettingsDomain {
public:
    /// `observer`, which may be absent, outlives the domain.
    explicit PlistDomain(std::string path, const Settings::FailureObserver* observer = nullptr)
        : m_path(std::move(path))
        , m_observer(observer)
    {
    }

    std::optional<Value> object(std::string_view key) const override;
    void set(std::string_view key, const Value& value) override;
    void remove(std::string_view key) override;

    /// The same with a result, for tools.
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
    // With the lock held: a damaged file is set aside (see durable_file.h for its new name).
    Result<std::shared_ptr<Seen>> lookUnderLock() const;
    Result<std::shared_ptr<Seen>> lookAndSetAside() const;
    Status change(const std::function<bool(PlistDocument&)>& apply);
    void report(const std::string& what, const Status& status) const;

    std::string m_path;
    const Settings::FailureObserver* m_observer;
    mutable std::shared_ptr<Seen> m_seen;
    // The error of the last read; "" after a success.
    mutable std::string m_readFailure;
    bool m_lockTimedOut = false;
};

/// The domains in a folder, one file each; the standard one has layers. Main thread only.
class PlistSettings final : public Settings {
public:
    /// `globalValues` may be absent and outlives this.
    PlistSettings(
        std::string folder, Value::Dictionary launchArguments, const GlobalValues* globalValues);
    ~PlistSettings() override;
    PlistSettings(const PlistSettings&) = delete;
    PlistSettings& operator=(const PlistSettings&) = delete;

    SettingsDomain& standard() override;
    /// nullptr when the name is not a plain file name or the folder cannot be created.
    SettingsDomain* suite(std::string_view name) override;
    PlistDomain* domain(std::string_view name);
    void setFailureObserver(FailureObserver observer) override { m_observer = std::move(observer); }

    static constexpr const char* standardIdentifier = "com.zarn.ZarnActions";

private:
    class StandardDomain;
    std::string m_folder;
    FailureObserver m_observer;
    std::map<std::string, std::unique_ptr<PlistDomain>, std::less<>> m_domains;
    std::unique_ptr<StandardDomain> m_standard;
};

/// The "-key value" pairs of a command line, as texts. A key without a value is ignored.
Value::Dictionary launchArgumentsOf(const std::vector<std::string>& arguments);

} // namespace zarn::linux_backend
