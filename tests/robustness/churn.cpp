// SPDX-License-Identifier: MIT
#include "tests/robustness/churn.h"

#include "app/zarn_actions_app.h"
#include "platform/linux/files/posix_services.h"
#include "platform/linux/keychain/file_keychain.h"
#include "platform/linux/keychain/keychain_thread.h"
#include "platform/linux/queues/thread_serial_queue.h"
#include "platform/linux/settings/plist_settings.h"
#include "platform/linux/text/icu_text.h"
#include "platform/memory/memory_platform.h"
#include "tests/support/test_main_queue.h"

#include <algorithm>
#include <cstdio>
#include <random>

#include <unistd.h>

namespace zarn {

namespace {

using namespace linux_backend;

class Churn {
public:
    Churn(const ChurnFolders& folders, std::uint32_t seed, int journal)
        : m_settings(folders.settings, {{"agreedToTermsOfUse", true}}, nullptr)
        , m_files(folders.home)
        , m_keychain(m_mainQueue,
              [folders](CallContext& call) {
                  return std::make_unique<FileKeychain>(folders.data, folders.state, call);
              })
        , m_random(seed)
        , m_journal(journal)
    {
        m_memory.storyboards.main.setViewControllerFactory(
            [this](std::string_view name) { return m_app.makeViewController(name); });
        m_memory.storyboards.main.showWindow(
            m_memory.storyboards.main.instantiateInitialController());
    }

    void act()
    {
        const auto names = profileNames();
        const auto action = below(10);
        if (names.empty() || action < 5)
            add();
        else if (action < 8)
            select(names.at(below(names.size())));
        else
            remove(names.at(below(names.size())));
        // Only what is written is done.
        const bool isWritten = m_app.finishKeychainWrites();
        if (!isWritten)
            fail("the keychain writes do not end");
        say("done");
    }

private:
    std::size_t below(std::size_t limit)
    {
        return std::uniform_int_distribution<std::size_t>(0, limit - 1)(m_random);
    }
    memory::MemoryWindowController& window() { return *m_memory.storyboards.main.shown.at(0); }

    std::vector<std::string> profileNames()
    {
        auto names = window().outlets.popUp.shownItems();
        std::erase_if(names, [](const std::string& name) { return !name.starts_with("server "); });
        return names;
    }

    void say(const std::string& text)
    {
        const auto line = text + '\n';
        if (::write(m_journal, line.data(), line.size()) != static_cast<ssize_t>(line.size()))
            ::_exit(2);
    }
    [[noreturn]] void fail(const char* what)
    {
        std::fprintf(stderr, "churn: %s\n", what);
        ::_exit(1);
    }
    void require(bool isDone, const char* what)
    {
        if (!isDone)
            fail(what);
    }
    void choose(const std::string& title)
    {
        require(window().choose(title), "the item cannot be chosen");
    }

    void add()
    {
        const auto number = static_cast<int>(below(churnedProfiles));
        const auto secret = "secret-" + std::to_string(m_random());
        say("add " + std::to_string(number) + " " + secret);
        if (!window().outlets.popUp.isHidden())
            choose("Add Server...");
        const auto type = [this](std::string_view field, std::string_view text) {
            window().outlets.fieldNamed(field).type(std::string(text));
        };
        type("displayName_TextField", churnedName(number));
        type("zarnProServer_textfield", churnedServer(number));
        type("zarnProUsername_textfield", churnedAccount);
        type("zarnProPassword_textfield", secret);
        m_memory.urlSessions.reply(200, R"({"access_token":"t"})");
        if (m_app.connection().serverVersion.empty())
            m_memory.urlSessions.reply(200, R"({"version":"10.40.0"})");
        require(window().click("updateServerInfo_Button"), "\"Add\" cannot be pressed");
        m_memory.urlSessions.deliverAll();
        require(!window().outlets.popUp.isHidden(), "the profile was not added");
    }

    void select(const std::string& name)
    {
        say("select " + name.substr(7));
        choose(name);
    }

    void remove(const std::string& name)
    {
        say("remove " + name.substr(7));
        m_memory.application.modifierFlags = modifierFlagOption;
        m_memory.alertRunner.answers = {alertFirstButtonReturn};
        choose(name);
        m_memory.application.modifierFlags = 0;
    }

    Services services()
    {
        const auto memory = m_memory.services();
        return {.alertRunner = memory.alertRunner,
            .application = memory.application,
            .bundle = memory.bundle,
            .clock = m_clock,
            .console = memory.console,
            .dateFormatter = m_dates,
            .notificationCenter = memory.notificationCenter,
            .fileManager = m_files,
            .keychain = m_keychain,
            .serialQueues = m_queues,
            .settings = m_settings,
            .storyboards = memory.storyboards,
            .textServices = m_texts,
            .urlSessions = memory.urlSessions,
            .windowList = memory.windowList,
            .workspace = memory.workspace};
    }

    memory::MemoryPlatform m_memory;
    PlistSettings m_settings;
    PosixFileManager m_files;
    SystemClock m_clock;
    IcuDateFormatter m_dates;
    IcuTextServices m_texts;
    ThreadSerialQueues m_queues;
    TestMainQueue m_mainQueue;
    KeychainThread m_keychain;
    std::mt19937 m_random;
    const int m_journal;
    ZarnActionsApp m_app{services(),
        {"https://publisher.example/releases", "publisher.example/feedback", "Licence Agreement",
            "https://publisher.example/agreement.pdf", "Example Software"}};
};

} // namespace

std::string churnedName(int number)
{
    return "server " + std::to_string(number);
}

std::string churnedServer(int number)
{
    return "https://host" + std::to_string(number) + ".example:8443";
}

void churnUntilKilled(const ChurnFolders& folders, std::uint32_t seed, int journal)
{
    Churn churn(folders, seed, journal);
    for (;;)
        churn.act();
}

} // namespace zarn
