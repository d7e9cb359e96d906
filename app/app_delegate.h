// SPDX-License-Identifier: MIT
#pragma once

#include "platform/application.h"

#include <string_view>

namespace zarn {

class Bundle;
class FileManager;
class LogFile;
class MyAlert;
class Storyboards;
class VersionCheck;
class WindowList;
class Workspace;

/// Carries out the menu commands and replies to the application's callbacks. Holds no state. Main
/// thread only.
class AppDelegate final : public ApplicationDelegate {
public:
    struct Deps {
        Application& application;
        const Bundle& bundle;
        const FileManager& files;
        const LogFile& log;
        MyAlert& alert;
        Storyboards& storyboards;
        VersionCheck& versionCheck;
        const WindowList& windowList;
        Workspace& workspace;
    };
    explicit AppDelegate(const Deps& deps)
        : m_deps(deps)
    {
    }

    void applicationDidFinishLaunching() override { }
    void applicationWillTerminate() override { }
    bool applicationSupportsSecureRestorableState() override { return true; }
    bool applicationShouldTerminateAfterLastWindowClosed() override { return true; }
    bool performMenuAction(std::string_view action) override;

private:
    void checkForUpdates();
    void showAbout();
    void showLogFolder();
    bool isWindowOnScreen(std::string_view title) const;

    Deps m_deps;
};

} // namespace zarn
