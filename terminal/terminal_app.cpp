// SPDX-License-Identifier: MIT
#include "terminal/terminal_app.h"

#include "app/notice_text.h"
#include "base/utf8.h"
#include "platform/run_loop.h"
#include "platform/serial_queue.h"
#include "platform/settings.h"
#include "profiles/credentials.h"

#include <algorithm>

namespace zarn {

namespace {

/// A text that the fields of the window could hold and the settings can keep.
bool isTypeable(const std::string& text)
{
    return isUtf8(text) && std::ranges::none_of(text, [](char letter) {
        return static_cast<unsigned char>(letter) < 0x20 || letter == 0x7f;
    });
}

} // namespace

TerminalApp::TerminalApp(const TerminalServices& services, ProductTexts texts)
    : m_services(services)
    , m_texts(std::move(texts))
    , m_bundleTexts(services.bundle)
    , m_domains(services.settings)
    , m_status(services.terminal)
    , m_alerts(services.terminal)
    , m_keychain(services.keychain)
    , m_context{m_services, m_bundleTexts, m_domains, m_status, m_alerts, m_keychain,
          [this]() -> SerialQueue& { return keychainQueue(); }}
    , m_reading(m_context)
    , m_changing(m_context)
{
    services.keychain.setWaitObserver([this](bool isWaiting) {
        if (isWaiting)
            m_status.showProgress(Wait::Keyring, "Waiting for the keyring to be unlocked");
    });
}

TerminalApp::~TerminalApp()
{
    m_services.keychain.setWaitObserver(nullptr);
}

SerialQueue& TerminalApp::keychainQueue()
{
    if (!m_keychainQueue)
        m_keychainQueue = m_services.serialQueues.make(keychainQueueLabel);
    return *m_keychainQueue;
}

ExitCode TerminalApp::run(const Command& command)
{
    using Verb = Command::Verb;
    for (const auto name : {sharedProfileSuite, actionsSuite}) {
        if (!m_services.settings.suite(name))
            return m_status.fail(ExitCode::NotWritten, "the folder of the settings cannot be used");
    }
    for (const auto* text : {&command.name, &command.url, &command.user, &command.clientId}) {
        if (!isTypeable(*text))
            return m_status.fail(
                ExitCode::Usage, "a name or URL holds a control character or is not UTF-8");
    }
    const bool needsTerms
        = command.verb != Verb::List && command.verb != Verb::Show && command.verb != Verb::Terms;
    if (needsTerms && !m_domains.standardDefaults().boolean(agreedToTermsKey))
        return m_status.fail(ExitCode::Terms,
            "the terms of use are not accepted: read them with 'zarn-profile terms', then accept "
            "them with 'zarn-profile terms --accept'");
    return dispatch(command);
}

ExitCode TerminalApp::dispatch(const Command& command)
{
    switch (command.verb) {
    case Command::Verb::Add:
        return m_changing.add(command);
    case Command::Verb::Set:
        return m_changing.set(command);
    case Command::Verb::List:
        return m_reading.list(command);
    case Command::Verb::Use:
        return m_changing.use(command);
    case Command::Verb::Remove:
        return m_changing.remove(command);
    case Command::Verb::Check:
        return m_reading.check(command);
    case Command::Verb::Show:
        return m_reading.show(command);
    case Command::Verb::Token:
        return m_reading.token(command);
    case Command::Verb::Api:
        return m_reading.api(command);
    case Command::Verb::Terms:
        break;
    }
    return terms(command);
}

ExitCode TerminalApp::terms(const Command& command)
{
    auto& settings = m_domains.standardDefaults();
    if (command.accept) {
        settings.set(agreedToTermsKey, true);
        if (!settings.boolean(agreedToTermsKey))
            return m_status.fail(ExitCode::NotWritten, "the acceptance was not stored");
    }
    const bool areAccepted = settings.boolean(agreedToTermsKey);
    const auto notice = noticeText(m_texts, TextColor::Black);
    if (command.json)
        return m_status.print(termsJson(notice, areAccepted));
    const auto* state
        = areAccepted ? "The terms of use are accepted.\n" : "The terms of use are not accepted.\n";
    return m_status.print(command.accept ? state : termsText(notice) + "\n" + state);
}

std::optional<ExitCode> TerminalApp::finish(ExitCode code)
{
    if (m_keychainQueue && !finishKeychainWrites(*m_keychainQueue, m_services.keychain, [this] {
            m_services.runLoop.runSubmitted();
        })) {
        m_status.fail(ExitCode::Keyring, "the keyring did not take the secret in time");
        return std::nullopt;
    }
    return code == ExitCode::Done ? m_changing.report() : code;
}

} // namespace zarn
