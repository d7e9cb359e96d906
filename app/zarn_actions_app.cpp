// SPDX-License-Identifier: MIT
#include "app/zarn_actions_app.h"

#include "api/token_delegate.h"
#include "app/about_vc.h"
#include "app/tou_vc.h"
#include "base/fatal.h"
#include "platform/application.h"
#include "platform/serial_queue.h"
#include "platform/settings.h"
#include "platform/storyboard.h"
#include "profiles/credentials.h"
#include "profiles/login_vc.h"

namespace zarn {

ZarnActionsApp::ZarnActionsApp(const Services& services, const ProductTexts& texts)
    : m_services(services)
    , m_bundleTexts(services.bundle)
    , m_domains(services.settings)
    , m_logFile({services.fileManager, services.clock, services.dateFormatter})
    , m_log(m_logFile)
    , m_appearance(services.settings.standard(), texts)
    , m_alert({services.alertRunner, services.application, services.workspace,
          texts.updateCheckPageURL})
    , m_status(services.console)
    , m_versionCheck(
          {services.urlSessions, services.bundle, services.textServices, texts.updateCheckPageURL})
    , m_delegate({.application = services.application,
          .bundle = services.bundle,
          .files = services.fileManager,
          .log = m_logFile,
          .alert = m_alert,
          .storyboards = services.storyboards,
          .versionCheck = m_versionCheck,
          .windowList = services.windowList,
          .workspace = services.workspace})
{
    services.keychain.setWaitObserver([this](bool isWaiting) {
        if (isWaiting)
            m_status.showProgress(Wait::Keyring, "Waiting for the keyring to be unlocked");
        else
            m_status.endProgress(Wait::Keyring);
    });
    services.settings.setFailureObserver([this](const std::string& reason) {
        m_status.showFailure("settings.save", "The settings did not take the change: " + reason);
    });
}

ZarnActionsApp::~ZarnActionsApp()
{
    m_services.keychain.setWaitObserver(nullptr);
    m_services.settings.setFailureObserver(nullptr);
}

int ZarnActionsApp::run()
{
    auto* storyboard = m_services.storyboards.storyboard("Main");
    if (!storyboard)
        fatalError("the bundle has no storyboard \"Main\"");
    storyboard->setViewControllerFactory(
        [this](std::string_view customClass) { return makeViewController(customClass); });
    return m_services.application.run(m_delegate);
}

bool ZarnActionsApp::finishKeychainWrites()
{
    return !m_keychainQueue
        || zarn::finishKeychainWrites(*m_keychainQueue, m_services.keychain, [] {});
}

std::unique_ptr<ViewController> ZarnActionsApp::makeViewController(std::string_view customClass)
{
    if (customClass == "LoginVC")
        return std::make_unique<LoginVC>(LoginVC::Deps{.connection = m_connection,
            .domains = m_domains,
            .clock = m_services.clock,
            .texts = m_services.textServices,
            .logFile = m_logFile,
            .log = m_log,
            .alerts = m_alert,
            .application = m_services.application,
            .console = m_services.console,
            .notificationCenter = m_services.notificationCenter,
            .credentials = [this] { return makeCredentials(); },
            .makeTokenDelegate = [this] { return makeTokenDelegate(); },
            .status = m_status});
    if (customClass == "AboutVC")
        return std::make_unique<AboutVC>(
            AboutVC::Deps{m_appearance, m_bundleTexts, m_services.notificationCenter});
    if (customClass == "ToUVC")
        return std::make_unique<FollowingToUVC>(
            ToUVC::Deps{m_appearance, m_domains.standardDefaults(), m_services.application},
            m_services.notificationCenter);
    return nullptr;
}

std::shared_ptr<TokenDelegate> ZarnActionsApp::makeTokenDelegate()
{
    return std::make_shared<TokenDelegate>(TokenDelegate::Deps{.connection = m_connection,
        .sessions = m_services.urlSessions,
        .standardDefaults = m_domains.standardDefaults(),
        .texts = m_bundleTexts,
        .clock = m_services.clock,
        .log = m_log,
        .alerts = m_alert,
        .console = m_services.console,
        .status = m_status});
}

std::shared_ptr<Credentials> ZarnActionsApp::makeCredentials()
{
    return std::make_shared<Credentials>(Credentials::Deps{m_services.keychain, keychainQueue(),
        m_logFile, m_connection, [this](const std::string& cause) {
            m_services.application.performOnMainThread(
                [this, cause] { m_status.showFailure("credentials.save", cause); });
        }});
}

SerialQueue& ZarnActionsApp::keychainQueue()
{
    if (!m_keychainQueue)
        m_keychainQueue = m_services.serialQueues.make(keychainQueueLabel);
    return *m_keychainQueue;
}

} // namespace zarn
