// SPDX-License-Identifier: MIT
#pragma once

#include "base/value.h"
#include "log/write_to_log.h"
#include "profiles/stored_login.h"
#include "terminal/command_context.h"
#include "terminal/exit_code.h"
#include "terminal/no_files.h"
#include "terminal/terminal_status.h"
#include "terminal/watched_keychain.h"
#include "terminal/wiped_connection.h"

#include <memory>
#include <optional>
#include <string>

namespace zarn {

class TokenDelegate;

/// A registered server.
struct Server {
    std::string name;
    std::string url;
};

/// How a call ended, and why if it failed.
struct AccessResult {
    ExitCode code = ExitCode::Done;
    std::string cause;
};

/// Asks one server with what is stored for it, as a process of its own would. Stores and logs
/// nothing. Main thread only.
class ServerAccess {
public:
    ServerAccess(const CommandContext& context, Server server);
    ~ServerAccess();
    ServerAccess(const ServerAccess&) = delete;
    ServerAccess& operator=(const ServerAccess&) = delete;

    /// What is stored; its absence is the result of a failure.
    Result<StoredLogin, AccessResult> login();
    /// Whether the server accepts what is stored, asked like the window asks.
    AccessResult check();
    /// A new access token.
    Result<std::string, AccessResult> token();
    /// One call of the API with a new token: the object that the server sends, empty for none.
    Result<Value::Dictionary, AccessResult> call(
        const std::string& method, const std::string& endpoint, const Value::Dictionary& data);

private:
    enum class Proof { LikeTheWindow, TokenAlone };
    AccessResult logIn(Proof proof);

    CommandContext m_context;
    Server m_server;
    WipedConnection m_connection;
    NoFiles m_noFiles;
    LogFile m_logFile;
    WriteToLog m_log;
    SilentConsole m_console;
    std::shared_ptr<TokenDelegate> m_delegate;
};

/// Why the keychain cannot be used, and what to do.
std::string keyringProblem(const Keychain& keychain, KeychainStatus status);

} // namespace zarn
