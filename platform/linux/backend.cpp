// SPDX-License-Identifier: MIT
#include "platform/backend.h"

#include "base/warn.h"
#include "platform/linux/desktop/desktop_preferences.h"
#include "platform/linux/desktop/desktop_workspace.h"
#include "platform/linux/desktop/process_signals.h"
#include "platform/linux/desktop/x11_window_list.h"
#include "platform/linux/diagnosis.h"
#include "platform/linux/files/module.h"
#include "platform/linux/files/paths.h"
#include "platform/linux/files/posix_services.h"
#include "platform/linux/files/process_guard.h"
#include "platform/linux/files/single_instance.h"
#include "platform/linux/http/http_module.h"
#include "platform/linux/http/lazy_url_sessions.h"
#include "platform/linux/keychain/keychain_thread.h"
#include "platform/linux/queues/thread_serial_queue.h"
#include "platform/linux/settings/compiled_bundle.h"
#include "platform/linux/settings/plist_settings.h"
#include "platform/linux/text/icu_text.h"
#include "platform/linux/ui/qt_alert.h"
#include "platform/linux/ui/qt_appearance.h"
#include "platform/linux/ui/qt_application.h"

#include <QApplication>

#include <array>
#include <cstdlib>
#include <mutex>
#include <string_view>
#include <thread>
#include <utility>

#include <unistd.h>

namespace zarn {

using namespace linux_backend;

namespace {

constexpr std::chrono::milliseconds portalPatience{60};
// How long a process may take to end.
constexpr std::chrono::seconds endingPatience{15};

/// `hasWayland` says whether the toolkit has a plugin for Wayland.
std::string displayProblem(bool hasWayland)
{
    for (const std::string name : {"QT_QPA_PLATFORM", "WAYLAND_DISPLAY", "DISPLAY"}) {
        const char* value = std::getenv(name.c_str());
        if (!value || !*value)
            continue;
        const bool isForWayland
            = name == "WAYLAND_DISPLAY" || std::string_view(value).starts_with("wayland");
        return "no display: " + name + "=" + value + " cannot be opened"
            + (isForWayland && !hasWayland ? ": install the package qt6-wayland" : "");
    }
    return "no display: neither DISPLAY nor WAYLAND_DISPLAY is set";
}

// While it starts, the toolkit aborts for one reason only: there is no display. Its message lists
// the plugins that it has.
void explainToolkitStart(QtMsgType type, const QMessageLogContext&, const QString& message)
{
    if (type != QtFatalMsg)
        return;
    const auto plugins = message.mid(message.indexOf("vailable platform plugins"));
    warn(displayProblem(plugins.contains("wayland")));
    ::_exit(EXIT_FAILURE);
}

std::function<void()>& displayLost()
{
    static std::function<void()> work;
    return work;
}

// The toolkit's warnings are for developers, who can ask for them. After a warning about a broken
// connection the toolkit exits at once.
void handleToolkitMessage(QtMsgType type, const QMessageLogContext&, const QString& message)
{
    const bool isLost
        = message.contains("connection broke") || message.contains("connection experienced");
    if (isLost && displayLost()) {
        // Another thread of the toolkit that notices the loss waits here instead of exiting.
        static std::mutex first;
        const std::lock_guard lock(first);
        displayLost()();
    }
    const bool isGrave = type == QtCriticalMsg || type == QtFatalMsg;
    if (isGrave || std::getenv("QT_LOGGING_RULES"))
        warn(message.toStdString());
}

/// The toolkit never sees our command line: it would interpret options of its own there.
class ToolkitArguments {
public:
    int& count() { return m_count; }
    char** values() { return m_values.data(); }

private:
    std::string m_name = "zarn-actions";
    int m_count = 1;
    std::array<char*, 2> m_values{m_name.data(), nullptr};
};

} // namespace

struct Backend::Adapters {
    explicit Adapters(Options options)
        : m_options(std::move(options))
    {
    }

    void loadHttp() const;
    void openLink(const std::string& address);
    std::vector<std::string> ownTitles() const;
    void followDesktop() const;
    KeychainOptions keychainOptions() const;

    Options m_options;
    ProductTexts texts = compiledProductTexts();
    Paths paths = Paths::fromEnvironment();
    SingleInstance instance;
    ToolkitArguments arguments;
    DesktopWorkspace workspace;
    CompiledBundle bundle;
    SystemClock clock;
    StandardOutput console;
    IcuDateFormatter dateFormatter;
    IcuTextServices textServices;
    ThreadSerialQueues serialQueues;
    PosixFileManager fileManager{paths.home};

    // From here on the display is open.
    struct WithDisplay;
    std::unique_ptr<WithDisplay> display;
};

struct Backend::Adapters::WithDisplay {
    explicit WithDisplay(Adapters& adapters);
    ~WithDisplay();
    WithDisplay(const WithDisplay&) = delete;
    WithDisplay& operator=(const WithDisplay&) = delete;

    QtApplication application;
    DesktopPreferences preferences;
    PlistSettings settings;
    QtAlertRunner alertRunner;
    X11WindowList windowList;
    KeychainThread keychain;
    LazyUrlSessions urlSessions;
    std::thread preloading;
};

Backend::Adapters::WithDisplay::WithDisplay(Adapters& adapters)
    : application(adapters.arguments.count(), adapters.arguments.values(),
        [&adapters](const std::string& address) { adapters.openLink(address); })
    , settings(adapters.paths.config, launchArgumentsOf(adapters.m_options.launchArguments),
          &preferences)
    , alertRunner(application)
    , windowList([&adapters] { return adapters.ownTitles(); })
    , keychain(application.mainQueue(), moduleStore(adapters.keychainOptions()))
    , urlSessions(application.mainQueue())
{
}

Backend::Adapters::WithDisplay::~WithDisplay()
{
    if (preloading.joinable())
        preloading.join();
}

// Before the user gets as far as asking a server, and not while the window is only open.
void Backend::Adapters::loadHttp() const
{
    display->preloading = std::thread([&sessions = display->urlSessions] { sessions.preload(); });
}

void Backend::Adapters::openLink(const std::string& address)
{
    if (const auto url = Url::fromText(address))
        workspace.openUrl(*url);
}

std::vector<std::string> Backend::Adapters::ownTitles() const
{
    std::vector<std::string> titles;
    for (auto* window : display->application.windows())
        titles.push_back(window->title());
    return titles;
}

void Backend::Adapters::followDesktop() const
{
    const auto& chosen = display->preferences.look();
    QtLook look;
    // A launch argument or a value of our own comes before the desktop's preference.
    look.dark = display->settings.standard().string("AppleInterfaceStyle") == "Dark";
    look.highContrast = chosen.highContrast.value_or(false);
    look.accent = chosen.accent;
    look.textScale = chosen.textScale.value_or(1);
    if (chosen.font)
        look.font = {chosen.font->family, chosen.font->points, chosen.font->usualPoints};
    applyLook(look);
}

KeychainOptions Backend::Adapters::keychainOptions() const
{
    return linux_backend::keychainOptions(
        keychainChoice(m_options.keychain).value_or(KeychainChoice::Automatic));
}

void Backend::prepareProcess()
{
    hardenProcess();
}

std::span<const KeychainKind> Backend::keychainKinds()
{
    return linux_backend::keychainKinds;
}

std::string Backend::versionLine()
{
    return programVersion() + "\n";
}

int Backend::diagnose(const Options& options)
{
    // The probe decrypts what the keychain file holds.
    forbidTracing();
    const auto choice = keychainChoice(options.keychain).value_or(KeychainChoice::Automatic);
    return printDiagnosis(Paths::fromEnvironment(), linux_backend::keychainOptions(choice))
        ? EXIT_SUCCESS
        : EXIT_FAILURE;
}

ConnectionFacts Backend::probeConnection(const Url& url)
{
    auto* probe
        = reinterpret_cast<ProbeConnection*>(moduleFunction(httpModuleFile, probeConnectionSymbol));
    ConnectionFacts facts;
    probe(&url, &facts);
    return facts;
}

Backend::Start Backend::start(const Options& options)
{
    auto adapters = std::make_unique<Adapters>(options);
    const auto& paths = adapters->paths;
    if (paths.home.empty() || paths.config.empty())
        return {nullptr, EXIT_FAILURE, "there is no home directory: set HOME"};
    catchSignals();
    const char* activationToken = std::getenv("XDG_ACTIVATION_TOKEN");
    switch (adapters->instance.claim(paths.config + "/zarn-actions.running", endingPatience,
        activationToken ? activationToken : "")) {
    case SingleInstance::Outcome::First:
        break;
    case SingleInstance::Outcome::WindowOpen:
        return {nullptr, EXIT_SUCCESS, "Zarn Actions is already running"};
    case SingleInstance::Outcome::Busy:
        return {nullptr, EXIT_FAILURE,
            "another copy is storing secrets (is the keyring's unlock prompt open?), or "
            "zarn-profile is changing the profiles: try again"};
    case SingleInstance::Outcome::Elsewhere:
        return {nullptr, EXIT_FAILURE, "a copy on another machine uses " + paths.config};
    case SingleInstance::Outcome::Failed:
        return {nullptr, EXIT_FAILURE, "the settings folder cannot be used: " + paths.config};
    }
    qInstallMessageHandler(explainToolkitStart);
    adapters->display = std::make_unique<Adapters::WithDisplay>(*adapters);
    qInstallMessageHandler(handleToolkitMessage);
    auto& display = *adapters->display;
    setSignalHandlers([&display] { display.application.terminate(); },
        [&adapters = *adapters] {
            adapters.display->application.activateForOtherStart(
                adapters.instance.takeActivationToken());
        });
    display.preferences.waitForFirstReply(portalPatience);
    forbidTracing();
    adapters->followDesktop();
    display.preferences.setBeforeObservers([&adapters = *adapters] { adapters.followDesktop(); });
    display.application.setAfterFirstPaint([&display] { display.keychain.preload(); });
    display.application.setAtFirstInput([&adapters = *adapters] { adapters.loadHttp(); });
    return {std::unique_ptr<Backend>(new Backend(std::move(adapters))), 0, ""};
}

Backend::Backend(std::unique_ptr<Adapters> adapters)
    : m_adapters(std::move(adapters))
{
}

Backend::~Backend() = default;

Services Backend::services()
{
    auto& all = *m_adapters;
    auto& display = *all.display;
    return {.alertRunner = display.alertRunner,
        .application = display.application,
        .bundle = all.bundle,
        .clock = all.clock,
        .console = all.console,
        .dateFormatter = all.dateFormatter,
        .notificationCenter = display.preferences,
        .fileManager = all.fileManager,
        .keychain = display.keychain,
        .serialQueues = all.serialQueues,
        .settings = display.settings,
        .storyboards = display.application.storyboards(),
        .textServices = all.textServices,
        .urlSessions = display.urlSessions,
        .windowList = display.windowList,
        .workspace = all.workspace};
}

const ProductTexts& Backend::productTexts() const
{
    return m_adapters->texts;
}

void Backend::setDisplayLost(std::function<void()> work)
{
    displayLost() = std::move(work);
}

void Backend::announceEnding()
{
    m_adapters->instance.announceEnding();
    m_adapters->display->keychain.announceEnding();
}

} // namespace zarn
