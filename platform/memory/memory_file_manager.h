// SPDX-License-Identifier: MIT
#pragma once

#include "platform/file_manager.h"

#include <map>
#include <mutex>
#include <set>
#include <string>
#include <vector>

namespace zarn::memory {

/// Files in memory, by full path. Records "create", "list" and "remove" with the path.
/// The interface may be used from any thread, the public members only while no thread does.
class MemoryFileManager final : public FileManager {
public:
    explicit MemoryFileManager(std::vector<std::string>& events)
        : m_events(events)
    {
    }

    std::string homeDirectory() const override { return home; }
    bool fileExists(const std::string& path) const override;
    bool createFile(const std::string& path) override;
    std::unique_ptr<FileHandle> openForUpdating(const std::string& path) override;
    Result<std::vector<std::string>> contentsOfDirectory(const std::string& path) const override;
    Status removeItem(const std::string& path) override;

    std::string home = "/home/test";
    std::map<std::string, std::string> files;
    /// Folders that exist without a file in them.
    std::set<std::string> folders;
    bool listingFails = false;
    bool creatingFails = false;
    bool openingFails = false;
    /// Paths that cannot be removed, with the error's description.
    std::map<std::string, std::string> stuck;

private:
    friend class MemoryFileHandle;
    bool exists(const std::string& path) const;

    std::vector<std::string>& m_events;
    mutable std::mutex m_mutex;
};

} // namespace zarn::memory
