// SPDX-License-Identifier: MIT
// The process entry of zarn-profile, of whatever backend the build has chosen.
#include "platform/terminal_backend.h"
#include "terminal/command_line.h"
#include "terminal/terminal_app.h"

#include <cstdio>
#include <cstdlib>

namespace {

using zarn::ExitCode;
using zarn::TerminalBackend;

int fail(ExitCode code, const char* text)
{
    std::fprintf(stderr, "zarn-profile: %s\n", text);
    return static_cast<int>(code);
}

int print(const std::string& text)
{
    std::fwrite(text.data(), 1, text.size(), stdout);
    if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0)
        return EXIT_SUCCESS;
    return fail(ExitCode::NotWritten, "standard output cannot be written");
}

bool asksServer(zarn::Command::Verb verb)
{
    using Verb = zarn::Command::Verb;
    return verb == Verb::Add || verb == Verb::Set || verb == Verb::Check || verb == Verb::Token
        || verb == Verb::Api;
}

int run(const zarn::Command& command)
{
    TerminalBackend platform(command.keychain);
    if (!platform.hasHome())
        return fail(ExitCode::NotWritten, "there is no home directory: set HOME");
    if (asksServer(command.verb))
        platform.expectServer();
    zarn::TerminalApp app(platform.services(), platform.productTexts());
    const auto code = app.run(command);
    platform.announceEnding();
    const auto last = app.finish(code);
    if (!last)
        std::_Exit(static_cast<int>(ExitCode::Keyring));
    return static_cast<int>(*last);
}

} // namespace

int main(int argc, char** argv)
{
    TerminalBackend::prepareProcess();
    const auto line = zarn::parseCommandLine({argv + (argc > 0 ? 1 : 0), argv + argc},
        TerminalBackend::keychainKinds(), TerminalBackend::versionText());
    if (line.command) {
        const int code = run(*line.command);
        // The caller sees the signal; what had begun to be stored is stored by now.
        if (code == static_cast<int>(ExitCode::Interrupted))
            TerminalBackend::endBySignal();
        return code;
    }
    return line.exitCode == ExitCode::Done ? print(line.text)
                                           : fail(line.exitCode, line.text.c_str());
}
