// SPDX-License-Identifier: MIT
#pragma once

namespace zarn {

class Bundle;
class Clock;
class DateFormatter;
class FileManager;
class InstanceLock;
class Keychain;
class RunLoop;
class SerialQueues;
class Settings;
class Terminal;
class TextServices;
class UrlSessions;

/// Every platform service of a program without a window, lent by a backend to the process entry.
/// All outlive the program's own objects.
struct TerminalServices {
    Bundle& bundle;
    Clock& clock;
    DateFormatter& dateFormatter;
    FileManager& fileManager;
    InstanceLock& instanceLock;
    Keychain& keychain;
    RunLoop& runLoop;
    SerialQueues& serialQueues;
    Settings& settings;
    Terminal& terminal;
    TextServices& textServices;
    UrlSessions& urlSessions;
};

} // namespace zarn
