// SPDX-License-Identifier: MIT
// The process entry, of whatever backend the build has chosen.
#include "app/connection_report.h"
#include "app/launch_options.h"
#include "app/zarn_actions_app.h"
#include "base/warn.h"
#include "platform/backend.h"

#include <cstdio>
#include <cstdlib>

namespace {

using zarn::Backend;
using zarn::LaunchOptions;

/// The exit code of something that printed: a failure when the text did not get out.
int afterPrinting(int result)
{
    if (std::fflush(stdout) == 0 && !std::ferror(stdout))
        return result;
    zarn::warn("standard output cannot be written");
    return EXIT_FAILURE;
}

int printed(std::string_view text)
{
    std::fwrite(text.data(), 1, text.size(), stdout);
    return afterPrinting(EXIT_SUCCESS);
}

int runWindow(const Backend::Options& options)
{
    const auto start = Backend::start(options);
    if (!start.backend) {
        if (start.exitCode == EXIT_SUCCESS)
            return printed(start.reason + "\n");
        zarn::warn(start.reason);
        return start.exitCode;
    }
    zarn::ZarnActionsApp app(start.backend->services(), start.backend->productTexts());
    const auto finish = [&] {
        start.backend->announceEnding();
        if (!app.finishKeychainWrites()) {
            zarn::warn("the keychain did not take what was saved last");
            std::_Exit(EXIT_FAILURE);
        }
    };
    start.backend->setDisplayLost([&finish] {
        finish();
        std::_Exit(EXIT_SUCCESS);
    });
    const int result = app.run();
    start.backend->setDisplayLost(nullptr);
    finish();
    return result;
}

} // namespace

int main(int argc, char** argv)
{
    Backend::prepareProcess();
    constexpr int usageError = 2;
    const auto parsed = zarn::parseLaunchOptions(
        {argv + (argc > 0 ? 1 : 0), argv + argc}, Backend::keychainKinds());
    if (!parsed) {
        zarn::warn(parsed.error().message);
        return usageError;
    }
    const auto& options = parsed.value();
    const Backend::Options backendOptions{options.keychain, options.settings};
    switch (options.task) {
    case LaunchOptions::Task::Help:
        return printed(zarn::launchHelp(Backend::keychainKinds()));
    case LaunchOptions::Task::Version:
        return printed(Backend::versionLine());
    case LaunchOptions::Task::Diagnose:
        return afterPrinting(Backend::diagnose(backendOptions));
    case LaunchOptions::Task::DiagnoseServer: {
        const auto report = zarn::reportConnection(options.server, Backend::probeConnection);
        const int result = printed(Backend::versionLine() + report.text);
        return report.isWell ? result : EXIT_FAILURE;
    }
    case LaunchOptions::Task::Run:
        break;
    }
    return runWindow(backendOptions);
}
