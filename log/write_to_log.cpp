// SPDX-License-Identifier: MIT
#include "log/write_to_log.h"

#include "platform/clock.h"
#include "platform/file_manager.h"

#include <algorithm>
#include <vector>

namespace zarn {

namespace {
constexpr std::size_t keptLogFiles = 42;
}

const std::string& LogFile::logFolderPath() const
{
    std::call_once(
        m_folderOnce, [this] { m_folderPath = m_deps.files.homeDirectory() + "/Library/Logs/"; });
    return m_folderPath;
}

std::string LogFile::logFileName() const
{
    const std::lock_guard lock(m_nameMutex);
    return m_fileName;
}

std::string LogFile::logTimestamp(std::string_view kind) const
{
    return m_deps.dates.string(
        m_deps.clock.now(), kind == "file" ? "yyyyMMdd_HHmmss" : "E MMM dd HH:mm:ss");
}

void LogFile::startNewLogFile()
{
    const auto stamp = logTimestamp("file");
    auto path = logFolderPath();
    {
        // The stamps stack on purpose: the name shows how often the file had to be started in this
        // run.
        const std::lock_guard lock(m_nameMutex);
        m_fileName.insert(0, stamp + "_");
        // Creating empties: another thread's file, started meanwhile, must not be hit.
        path += m_fileName;
    }
    m_deps.files.createFile(path);
    pruneLogFiles();
}

void LogFile::pruneLogFiles()
{
    auto listing = m_deps.files.contentsOfDirectory(logFolderPath());
    // A failure is written only into a file that is there: starting one here would come back to
    // this place without end on a folder that cannot be written.
    const auto note = [this](const std::string& message) {
        if (m_deps.files.fileExists(currentPath()))
            WriteToLog(*this).writeEntry(message);
    };
    if (!listing) {
        note("no log files found");
        return;
    }
    auto& names = listing.value();
    if (names.size() <= keptLogFiles)
        return;
    // Only what goes has to be in order; mostly that is one name.
    const auto kept = names.end() - static_cast<std::ptrdiff_t>(keptLogFiles);
    std::nth_element(names.begin(), kept, names.end());
    std::sort(names.begin(), kept);
    for (auto it = names.begin(); it != kept; ++it) {
        const auto path = logFolderPath() + *it;
        if (const auto removed = m_deps.files.removeItem(path); !removed)
            note("Error deleting log file:\n    " + path + "\n    " + removed.error().message);
    }
}

WriteToLog::WriteToLog(LogFile& file)
    : m_file(file)
{
}

WriteToLog::~WriteToLog() = default;

void WriteToLog::writeEntry(std::string_view message)
{
    auto& files = m_file.files();
    // Asking first whether the file is there would cost as much again as opening it.
    auto opened = files.openForUpdating(m_file.currentPath());
    if (!opened && !files.fileExists(m_file.currentPath())) {
        m_file.startNewLogFile();
        opened = files.openForUpdating(m_file.currentPath());
    }
    m_logFileW = std::move(opened);
    if (!m_logFileW)
        return;
    const auto line = m_file.logTimestamp("entry") + ' ' + std::string(message) + '\n';
    m_logFileW->seekToEndOfFile();
    m_logFileW->writeData(line);
}

} // namespace zarn
