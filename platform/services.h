// SPDX-License-Identifier: MIT
#pragma once

namespace zarn {

class AlertRunner;
class Application;
class Bundle;
class Clock;
class Console;
class DateFormatter;
class DistributedNotificationCenter;
class FileManager;
class Keychain;
class SerialQueues;
class Settings;
class Storyboards;
class TextServices;
class UrlSessions;
class WindowList;
class Workspace;

/// Every platform service, lent by a backend to the process entry, which hands each class the few
/// that it needs. All outlive the application's own objects.
struct Services {
    AlertRunner& alertRunner;
    Application& application;
    Bundle& bundle;
    Clock& clock;
    Console& console;
    DateFormatter& dateFormatter;
    DistributedNotificationCenter& notificationCenter;
    FileManager& fileManager;
    Keychain& keychain;
    SerialQueues& serialQueues;
    Settings& settings;
    Storyboards& storyboards;
    TextServices& textServices;
    UrlSessions& urlSessions;
    WindowList& windowList;
    Workspace& workspace;
};

} // namespace zarn
