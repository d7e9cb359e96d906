// SPDX-License-Identifier: MIT
#include "terminal/profile_editor.h"

#include "api/token_delegate.h"
#include "platform/run_loop.h"
#include "platform/settings.h"
#include "profiles/settings_domains.h"

#include <algorithm>

namespace zarn {

ExitCode exitCodeOf(const UpdateOutcome& outcome)
{
    if (outcome.result == "success")
        return ExitCode::Done;
    if (outcome.result == "failedToConnect")
        return ExitCode::NotReachable;
    // Only a URL that cannot be formed ends so: what a server sends otherwise has its own status.
    const bool isMalformedUrl = outcome.result == "failed" && outcome.statusCode == 500;
    return isMalformedUrl ? ExitCode::Usage : ExitCode::Refused;
}

ProfileEditor::ProfileEditor(const CommandContext& context, Keychain& keychain)
    : m_context(context)
    , m_keychain(keychain)
    , m_files(context.services.fileManager)
    , m_logFile({m_files, context.services.clock, context.services.dateFormatter})
    , m_log(m_logFile)
    , m_application(context.services.runLoop)
    , m_login(std::make_unique<LoginVC>(LoginVC::Deps{.connection = m_connection,
          .domains = context.domains,
          .clock = context.services.clock,
          .texts = context.services.textServices,
          .logFile = m_logFile,
          .log = m_log,
          .alerts = context.alerts,
          .application = m_application,
          .console = m_console,
          .notificationCenter = m_notificationCenter,
          .credentials = [this] { return makeCredentials(); },
          .makeTokenDelegate = [this] { return makeTokenDelegate(); },
          .status = m_statusLine}))
{
    m_login->setView(&m_screen);
    m_login->connectOutlets(m_screen);
    m_login->viewDidLoad();
}

ProfileEditor::~ProfileEditor() = default;

std::shared_ptr<Credentials> ProfileEditor::makeCredentials()
{
    return std::make_shared<Credentials>(
        Credentials::Deps{m_keychain, m_context.keychainQueue(), m_logFile, m_connection});
}

std::shared_ptr<TokenDelegate> ProfileEditor::makeTokenDelegate()
{
    return std::make_shared<TokenDelegate>(TokenDelegate::Deps{.connection = m_connection,
        .sessions = m_context.services.urlSessions,
        .standardDefaults = m_context.domains.standardDefaults(),
        .texts = m_context.texts,
        .clock = m_context.services.clock,
        .log = m_log,
        .alerts = m_context.alerts,
        .console = m_console,
        .status = m_context.status});
}

bool ProfileEditor::has(const std::string& name) const
{
    const auto& names = m_login->model().sortedDisplayNames;
    return std::ranges::find(names, name) != names.end();
}

void ProfileEditor::choose(const std::string& title)
{
    m_screen.popUpButton("selectServer_Button")->selectItem(title);
    m_login->performAction("selectServer_Action", nullptr);
}

void ProfileEditor::use(const std::string& name)
{
    choose(name);
}

void ProfileEditor::remove(const std::string& name)
{
    m_application.setModifierFlags(modifierFlagOption);
    choose(name);
    m_application.setModifierFlags(0);
}

ExitCode ProfileEditor::add(const Registration& registration)
{
    if (updateButton().title() != "Add")
        choose(ServerMenu::addServerTitle);
    type(registration);
    return prove();
}

// The server is not chosen first, as in the window: that would make it the current one even if it
// refuses the secret. Success makes it the current one, too.
ExitCode ProfileEditor::set(const Registration& registration)
{
    m_screen.popUpButton("selectServer_Button")->selectItem(registration.name);
    type(registration);
    const auto result = prove();
    const bool usedUsername = m_context.domains.actionsDefaults().integer("useUsername") != 0;
    if (result == ExitCode::Done && usedUsername == registration.usesApiClient)
        m_login->performAction("useUsername_action", nullptr);
    return result;
}

void ProfileEditor::type(const Registration& registration)
{
    m_screen.textField("displayName_TextField")->setStringValue(registration.name);
    m_screen.textField("zarnProServer_textfield")->setStringValue(registration.url);
    m_screen.textField("zarnProUsername_textfield")->setStringValue(registration.username);
    m_screen.textField("zarnProPassword_textfield")->setStringValue(registration.secret.get());
    // Ticking the check box would store the kind of credentials at once. Success stores it, too.
    const int usesUsername = registration.usesApiClient ? 0 : 1;
    m_screen.button("useUsername_button")->setState(usesUsername);
    m_connection.useUsernameState = usesUsername;
    m_connection.useApiClient = registration.usesApiClient ? 1 : 0;
}

ExitCode ProfileEditor::prove()
{
    m_context.status.forgetFailure();
    m_login->performAction("updateServerInfo_Action", &updateButton());
    // A version that is not understood ends without an outcome.
    const bool isOver = m_context.services.runLoop.runUntil(
        [this] { return m_login->updateOutcome() || !m_context.status.failure().empty(); });
    if (!isOver)
        return ExitCode::Interrupted;
    const auto& outcome = m_login->updateOutcome();
    return outcome ? exitCodeOf(*outcome) : ExitCode::Refused;
}

} // namespace zarn
