// SPDX-License-Identifier: MIT
#include "platform/linux/settings/plist_settings.h"

#include "base/warn.h"
#include "platform/linux/files/durable_file.h"
#include "platform/linux/files/file_lock.h"

namespace zarn::linux_backend {

namespace {

constexpr std::size_t largestFile = std::size_t{256} << 20;
constexpr std::chrono::milliseconds longLockWait{5000};
// After a lock was not released in time, and for a read that finds damage.
constexpr std::chrono::milliseconds shortLockWait{1000};

bool isPlainName(std::string_view name)
{
    return !name.empty() && name.size() <= 200 && name.front() != '.'
        && name.find_first_not_of(
               "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789.-_")
        == std::string_view::npos;
}

} // namespace

struct PlistDomain::Seen {
    HeldFile held;
    PlistDocument document;
    // Why the file does not parse; "" when it does.
    std::string damage;
};

Result<std::shared_ptr<PlistDomain::Seen>> PlistDomain::look() const
{
    auto seen = std::make_shared<Seen>();
    auto file = openPrivateFile(m_path, largestFile);
    if (!file) {
        if (file.error().code != ErrorCode::NotFound)
            return file.error();
        return seen;
    }
    seen->held = std::move(file.value().held);
    auto parsed = PlistDocument::parse(file.value().contents);
    if (parsed)
        seen->document = std::move(parsed.value());
    else
        seen->damage = parsed.error().message;
    return seen;
}

Result<std::shared_ptr<PlistDomain::Seen>> PlistDomain::lookUnderLock() const
{
    auto looked = look();
    if (!looked || looked.value()->damage.empty())
        return looked;
    const auto kept = setDamagedFileAside(m_path);
    if (!kept)
        return kept.error();
    warn("damaged settings (" + looked.value()->damage + ") read as empty: " + m_path
        + " is kept as " + kept.value());
    return std::make_shared<Seen>();
}

Result<std::shared_ptr<PlistDomain::Seen>> PlistDomain::lookAndSetAside() const
{
    auto looked = look();
    if (!looked || looked.value()->damage.empty())
        return looked;
    // Another process may have replaced the file meanwhile.
    const auto lock = FileLock::acquire(m_path, shortLockWait);
    if (!lock)
        return lock.error();
    return lookUnderLock();
}

const PlistDocument& PlistDomain::current() const
{
    if (m_seen && m_readFailure.empty() && m_seen->held.stamp == stampOf(m_path))
        return m_seen->document;
    auto looked = lookAndSetAside();
    if (looked) {
        m_seen = std::move(looked.value());
        m_readFailure.clear();
        return m_seen->document;
    }
    m_seen = std::make_shared<Seen>();
    if (m_readFailure != looked.error().message)
        warn("settings read as empty: " + looked.error().message);
    m_readFailure = looked.error().message;
    return m_seen->document;
}

std::optional<Value> PlistDomain::object(std::string_view key) const
{
    return current().object(key);
}

Value::Dictionary PlistDomain::dictionary() const
{
    return current().dictionary();
}

Status PlistDomain::change(const std::function<bool(PlistDocument&)>& apply)
{
    if (!m_readFailure.empty())
        return Error{ErrorCode::Io, m_readFailure};
    const auto lock = FileLock::acquire(m_path, m_lockTimedOut ? shortLockWait : longLockWait);
    m_lockTimedOut = !lock && lock.error().code == ErrorCode::Unavailable;
    if (!lock)
        return lock.error();
    if (!m_seen || m_seen->held.stamp != stampOf(m_path)) {
        auto looked = lookUnderLock();
        if (!looked)
            return looked.error();
        m_seen = std::move(looked.value());
    }
    if (!apply(m_seen->document))
        return Success{};
    auto written = replacePrivateFile(m_path, m_seen->document.xml());
    if (!written) {
        // The document was changed and the file was not.
        m_seen.reset();
        return written.error();
    }
    m_seen->held = std::move(written.value());
    return Success{};
}

Status PlistDomain::trySet(std::string_view key, const Value& value)
{
    bool exact = true;
    auto status = change([&](PlistDocument& document) {
        exact = document.set(key, value);
        return true;
    });
    if (status && !exact)
        warn("setting " + std::string(key)
            + " holds characters that no settings file can; each is stored as U+FFFD");
    return status;
}

Status PlistDomain::tryRemove(std::string_view key)
{
    if (!current().contains(key) && m_readFailure.empty())
        return Success{};
    return change([&](PlistDocument& document) {
        if (!document.contains(key))
            return false;
        document.remove(key);
        return true;
    });
}

void PlistDomain::set(std::string_view key, const Value& value)
{
    report("setting " + std::string(key) + " was not saved", trySet(key, value));
}

void PlistDomain::remove(std::string_view key)
{
    report("setting " + std::string(key) + " was not removed", tryRemove(key));
}

void PlistDomain::report(const std::string& what, const Status& status) const
{
    if (status)
        return;
    warn(what + ": " + status.error().message);
    if (m_observer && *m_observer)
        (*m_observer)(status.error().message);
}

class PlistSettings::StandardDomain final : public SettingsDomain {
public:
    StandardDomain(
        PlistDomain& own, Value::Dictionary launchArguments, const GlobalValues* globalValues)
        : m_own(own)
        , m_launchArguments(std::move(launchArguments))
        , m_globalValues(globalValues)
    {
    }

    std::optional<Value> object(std::string_view key) const override
    {
        if (const auto it = m_launchArguments.find(std::string(key)); it != m_launchArguments.end())
            return it->second;
        if (auto value = m_own.object(key))
            return value;
        return m_globalValues ? m_globalValues->object(key) : std::nullopt;
    }
    void set(std::string_view key, const Value& value) override { m_own.set(key, value); }
    void remove(std::string_view key) override { m_own.remove(key); }

private:
    PlistDomain& m_own;
    Value::Dictionary m_launchArguments;
    const GlobalValues* m_globalValues;
};

PlistSettings::PlistSettings(
    std::string folder, Value::Dictionary launchArguments, const GlobalValues* globalValues)
    : m_folder(std::move(folder))
    , m_standard(std::make_unique<StandardDomain>(
          *domain(standardIdentifier), std::move(launchArguments), globalValues))
{
}

PlistSettings::~PlistSettings() = default;

SettingsDomain& PlistSettings::standard()
{
    return *m_standard;
}

PlistDomain* PlistSettings::domain(std::string_view name)
{
    if (!isPlainName(name))
        return nullptr;
    auto it = m_domains.find(name);
    if (it == m_domains.end()) {
        auto path = m_folder + "/" + std::string(name) + ".plist";
        it = m_domains
                 .emplace(
                     std::string(name), std::make_unique<PlistDomain>(std::move(path), &m_observer))
                 .first;
    }
    return it->second.get();
}

SettingsDomain* PlistSettings::suite(std::string_view name)
{
    auto* found = domain(name);
    if (!found)
        return nullptr;
    if (const auto made = makeOwnFolder(m_folder); !made) {
        warn(made.error().message);
        return nullptr;
    }
    return found;
}

Value::Dictionary launchArgumentsOf(const std::vector<std::string>& arguments)
{
    Value::Dictionary result;
    for (std::size_t i = 0; i + 1 < arguments.size(); ++i) {
        const auto& key = arguments[i];
        if (key.size() < 2 || key[0] != '-' || key[1] == '-')
            continue;
        result[key.substr(1)] = arguments[i + 1];
        ++i;
    }
    return result;
}

} // namespace zarn::linux_backend
