// SPDX-License-Identifier: MIT
#include "platform/linux/plist_settings.h"

#include "platform/linux/durable_file.h"

namespace zarn::linux_backend {

namespace {

constexpr std::size_t largestFile = std::size_t{256} << 20;
constexpr std::chrono::seconds longestLock{5};

bool isPlainName(std::string_view name)
{
    return !name.empty() && name.size() <= 200 && name.front() != '.'
        && name.find_first_not_of(
               "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789.-_")
        == std::string_view::npos;
}

} // namespace

struct PlistDomain::Seen {
    FileStamp stamp;
    PlistDocument document;
};

const PlistDocument& PlistDomain::current() const
{
    const auto stamp = stampOf(m_path);
    if (m_seen && m_seen->stamp == stamp)
        return m_seen->document;
    auto seen = std::make_shared<Seen>();
    seen->stamp = stamp;
    if (stamp != FileStamp{}) {
        const auto contents = readPrivateFile(m_path, largestFile);
        // Making it private changed nothing that the stamp tells.
        auto parsed = contents ? PlistDocument::parse(contents.value()) : contents.error();
        if (parsed)
            seen->document = std::move(parsed.value());
        else
            warn("settings in " + m_path + " cannot be used: " + parsed.error().message);
    }
    m_seen = std::move(seen);
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
    const auto lock = FileLock::acquire(m_path, longestLock);
    if (!lock)
        return lock.error();
    PlistDocument document;
    const auto contents = readPrivateFile(m_path, largestFile);
    if (contents) {
        auto parsed = PlistDocument::parse(contents.value());
        if (parsed) {
            document = std::move(parsed.value());
        } else {
            const auto kept = keepDamagedCopy(m_path);
            if (!kept)
                return kept.error();
            warn("damaged settings kept as " + kept.value());
        }
    } else if (contents.error().code != ErrorCode::NotFound) {
        return contents.error();
    }
    if (!apply(document))
        return Success{};
    if (auto written = replacePrivateFile(m_path, document.xml()); !written)
        return written;
    // Read at once, before another writer can come: the next look needs no parsing.
    m_seen = std::make_shared<Seen>(Seen{stampOf(m_path), std::move(document)});
    return Success{};
}

Status PlistDomain::trySet(std::string_view key, const Value& value)
{
    return change([&](PlistDocument& document) {
        document.set(key, value);
        return true;
    });
}

Status PlistDomain::tryRemove(std::string_view key)
{
    if (!current().contains(key))
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
    if (const auto status = trySet(key, value); !status)
        warn("setting " + std::string(key) + " was not saved: " + status.error().message);
}

void PlistDomain::remove(std::string_view key)
{
    if (const auto status = tryRemove(key); !status)
        warn("setting " + std::string(key) + " was not removed: " + status.error().message);
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
        it = m_domains.emplace(std::string(name), std::make_unique<PlistDomain>(std::move(path)))
                 .first;
    }
    return it->second.get();
}

SettingsDomain* PlistSettings::suite(std::string_view name)
{
    auto* found = domain(name);
    if (!found)
        return nullptr;
    if (const auto made = makePrivateFolder(m_folder); !made) {
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
