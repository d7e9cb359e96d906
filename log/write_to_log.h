// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <string_view>

namespace zarn {

class Clock;
class DateFormatter;
class FileHandle;
class FileManager;

/// Where the log of this run is: one object per process. Any thread.
class LogFile {
public:
    struct Deps {
        FileManager& files;
        const Clock& clock;
        const DateFormatter& dates;
    };
    explicit LogFile(const Deps& deps)
        : m_deps(deps)
    {
    }

    /// The home directory followed by "/Library/Logs/", taken once.
    const std::string& logFolderPath() const;
    /// The name of the current file in that folder.
    std::string logFileName() const;
    /// The current file's full path.
    std::string currentPath() const { return logFolderPath() + logFileName(); }
    /// The time now: "yyyyMMdd_HHmmss" for the kind "file", "E MMM dd HH:mm:ss" for any other.
    std::string logTimestamp(std::string_view kind) const;

    /// Begins a new file, its stamp in front of the name the last one had, and prunes old ones.
    void startNewLogFile();
    /// Removes the first entries of the folder in name order, so that 42 stay.
    void pruneLogFiles();

    FileManager& files() const { return m_deps.files; }

private:
    Deps m_deps;
    mutable std::once_flag m_folderOnce;
    mutable std::string m_folderPath;
    mutable std::mutex m_nameMutex;
    std::string m_fileName = "zarn-shortcuts.log";
};

/// Writes log lines. One thread at a time; several instances may write to one LogFile from several
/// threads.
class WriteToLog {
public:
    explicit WriteToLog(LogFile& file);
    ~WriteToLog();
    WriteToLog(const WriteToLog&) = delete;
    WriteToLog& operator=(const WriteToLog&) = delete;

    /// Appends one line: timestamp, blank, message, line break. Starts a new file when the current
    /// one is missing. Never fails towards the caller: a line that cannot be written is lost.
    void writeEntry(std::string_view message);

private:
    LogFile& m_file;
    std::unique_ptr<FileHandle> m_logFileW;
};

} // namespace zarn
