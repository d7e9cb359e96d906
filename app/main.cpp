// SPDX-License-Identifier: MIT
// The process entry: the one place that names a backend.
#include "app/launch_options.h"
#include "app/zarn_actions_app.h"
#include "base/warn.h"
#include "platform/linux/linux_platform.h"

#include <cstdio>
#include <cstdlib>

namespace {

using zarn::LaunchOptions;
using zarn::linux_backend::LinuxPlatform;

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

int runWindow(const LinuxPlatform::Options& options)
{
    const auto start = LinuxPlatform::start(options);
    if (!start.platform) {
        if (start.exitCode == EXIT_SUCCESS)
            return printed(start.reason + "\n");
        zarn::warn(start.reason);
        return start.exitCode;
    }
    zarn::ZarnActionsApp app(start.platform->services(), start.platform->productTexts());
    const auto finish = [&] {
        start.platform->announceEnding();
        if (!app.finishKeychainWrites()) {
            zarn::warn("the keychain did not take what was saved last");
            std::_Exit(EXIT_FAILURE);
        }
    };
    start.platform->setDisplayLost([&finish] {
        finish();
        std::_Exit(EXIT_SUCCESS);
    });
    const int result = app.run();
    start.platform->setDisplayLost(nullptr);
    finish();
    return result;
}

} // namespace

int main(int argc, char** argv)
{
    LinuxPlatform::prepareProcess();
    constexpr int usageError = 2;
    const auto parsed = zarn::parseLaunchOptions(
        {argv + (argc > 0 ? 1 : 0), argv + argc}, LinuxPlatform::keychainKinds());
    if (!parsed) {
        zarn::warn(parsed.error().message);
        return usageError;
    }
    const auto& options = parsed.value();
    const LinuxPlatform::Options platformOptions{options.keychain, options.settings};
    switch (options.task) {
    case LaunchOptions::Task::Help:
        return printed(zarn::launchHelp(LinuxPlatform::keychainKinds()));
    case LaunchOptions::Task::Version:
        return printed(LinuxPlatform::versionLine());
    case LaunchOptions::Task::Diagnose:
        return afterPrinting(LinuxPlatform::diagnose(platformOptions));
    case LaunchOptions::Task::Run:
        break;
    }
    return runWindow(platformOptions);
}
