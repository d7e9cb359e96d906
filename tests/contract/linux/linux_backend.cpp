// SPDX-License-Identifier: MIT
// What the suites ask of the Linux backend where no display is needed, except for the keychain.
#include "platform/linux/files/posix_services.h"
#include "platform/linux/queues/thread_serial_queue.h"
#include "platform/linux/settings/compiled_bundle.h"
#include "platform/linux/settings/plist_settings.h"
#include "platform/linux/text/icu_text.h"
#include "tests/contract/bundle_contract.h"
#include "tests/contract/clock_contract.h"
#include "tests/contract/console_contract.h"
#include "tests/contract/date_formatter_contract.h"
#include "tests/contract/file_manager_contract.h"
#include "tests/contract/serial_queue_contract.h"
#include "tests/contract/settings_contract.h"
#include "tests/contract/text_services_contract.h"
#include "tests/support/scoped_variable.h"
#include "tests/support/scratch_folder.h"

#include <cstdio>
#include <fstream>
#include <map>
#include <sstream>

#include <fcntl.h>
#include <unistd.h>

namespace zarn {
namespace {

using namespace linux_backend;
using namespace std::chrono_literals;

std::string contentsOfFile(const std::string& path)
{
    std::stringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
}

/// Standard output is a file meanwhile.
class LinuxConsoleFixture final : public ConsoleFixture {
public:
    LinuxConsoleFixture()
        : m_path(m_scratch.path() + "/output")
    {
        std::fflush(stdout);
        m_before = ::dup(STDOUT_FILENO);
        const int file = ::open(m_path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
        ::dup2(file, STDOUT_FILENO);
        ::close(file);
    }
    ~LinuxConsoleFixture() override
    {
        std::fflush(stdout);
        ::dup2(m_before, STDOUT_FILENO);
        ::close(m_before);
    }
    LinuxConsoleFixture(const LinuxConsoleFixture&) = delete;
    LinuxConsoleFixture& operator=(const LinuxConsoleFixture&) = delete;

    Console& console() override { return m_console; }
    std::string written() override { return contentsOfFile(m_path); }

private:
    const ScratchFolder m_scratch;
    std::string m_path;
    int m_before = -1;
    StandardOutput m_console;
};

class LinuxDateFormatterFixture final : public DateFormatterFixture {
public:
    DateFormatter& formatter() override { return m_formatter; }
    void setHoursFromUtc(int hours) override
    {
        // The sign of POSIX: hours to add to reach UTC.
        m_zone.set("ZRN" + std::to_string(-hours));
    }

private:
    ScopedVariable m_locale{"LC_ALL", "C"};
    ScopedVariable m_zone{"TZ", "UTC"};
    IcuDateFormatter m_formatter;
};

class LinuxFileManagerFixture final : public FileManagerFixture {
public:
    FileManager& fileManager() override { return m_files; }
    std::string contentsOf(const std::string& path) override { return contentsOfFile(path); }

private:
    const ScratchFolder m_scratch;
    PosixFileManager m_files{m_scratch.path()};
};

class Desktop final : public GlobalValues {
public:
    std::optional<Value> object(std::string_view key) const override
    {
        const auto it = values.find(std::string(key));
        return it == values.end() ? std::nullopt : std::optional(it->second);
    }
    Value::Dictionary values;
};

/// Launch arguments are known from the start: the settings look at the ones of the moment.
class LinuxSettingsFixture final : public SettingsFixture {
public:
    Settings& settings() override { return m_proxy; }
    Settings& otherProcess() override { return m_other; }
    void setLaunchArgument(const std::string& key, const std::string& value) override
    {
        m_proxy.restart(launchArgumentsOf({"-" + key, value}));
    }
    void setGlobalValue(const std::string& key, const Value& value) override
    {
        m_desktop.values[key] = value;
    }
    void refuseWrites() override
    {
        // Also an administrator cannot make a file there.
        std::filesystem::create_directories(
            m_scratch.path() + "/config/zarn-actions/" + suiteName + ".plist.tmp");
    }

private:
    /// The domains outlive a restart with other launch arguments.
    class Restartable final : public Settings, public SettingsDomain {
    public:
        Restartable(std::string folder, const Desktop& desktop)
            : m_folder(std::move(folder))
            , m_desktop(desktop)
            , m_settings(std::make_unique<PlistSettings>(m_folder, Value::Dictionary{}, &desktop))
        {
        }
        void restart(Value::Dictionary arguments)
        {
            m_earlier.push_back(std::move(m_settings));
            m_settings
                = std::make_unique<PlistSettings>(m_folder, std::move(arguments), &m_desktop);
        }
        SettingsDomain& standard() override { return *this; }
        SettingsDomain* suite(std::string_view name) override { return m_settings->suite(name); }
        std::optional<Value> object(std::string_view key) const override
        {
            return m_settings->standard().object(key);
        }
        void set(std::string_view key, const Value& value) override
        {
            m_settings->standard().set(key, value);
        }
        void remove(std::string_view key) override { m_settings->standard().remove(key); }
        void setFailureObserver(FailureObserver observer) override
        {
            m_settings->setFailureObserver(std::move(observer));
        }

    private:
        std::string m_folder;
        const Desktop& m_desktop;
        std::unique_ptr<PlistSettings> m_settings;
        std::vector<std::unique_ptr<PlistSettings>> m_earlier;
    };

    const ScratchFolder m_scratch;
    Desktop m_desktop;
    Restartable m_proxy{m_scratch.path() + "/config/zarn-actions", m_desktop};
    PlistSettings m_other{m_scratch.path() + "/config/zarn-actions", {}, nullptr};
};

/// The locale counts when the order is first asked for.
std::unique_ptr<TextServices> inLocale(const char* name)
{
    const ScopedVariable locale("LC_ALL", name);
    auto texts = std::make_unique<IcuTextServices>();
    texts->localizedCompare("a", "b");
    return texts;
}

INSTANTIATE_TEST_SUITE_P(Plain, TextServicesContract,
    testing::Values(TextServicesBackend{"plain", [] { return inLocale("C"); }}));
INSTANTIATE_TEST_SUITE_P(English, TextServicesContract,
    testing::Values(TextServicesBackend{"english", [] { return inLocale("en_US.UTF-8"); }}));

} // namespace

std::unique_ptr<Bundle> makeBundle()
{
    return std::make_unique<CompiledBundle>();
}

std::unique_ptr<Clock> makeClock()
{
    return std::make_unique<SystemClock>();
}

std::unique_ptr<ConsoleFixture> makeConsoleFixture()
{
    return std::make_unique<LinuxConsoleFixture>();
}

std::unique_ptr<DateFormatterFixture> makeDateFormatterFixture()
{
    return std::make_unique<LinuxDateFormatterFixture>();
}

std::unique_ptr<FileManagerFixture> makeFileManagerFixture()
{
    return std::make_unique<LinuxFileManagerFixture>();
}

std::unique_ptr<SerialQueues> makeSerialQueues()
{
    return std::make_unique<ThreadSerialQueues>();
}

std::unique_ptr<SettingsFixture> makeSettingsFixture()
{
    return std::make_unique<LinuxSettingsFixture>();
}

} // namespace zarn
