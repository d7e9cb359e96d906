// SPDX-License-Identifier: MIT
#pragma once

#include "platform/file_manager.h"

namespace zarn {

/// Files that are never emptied by being created again. A log has the second of its start in its
/// name: of two commands in one second, the later continues the log of the earlier. Any thread.
class KeptFiles final : public FileManager {
public:
    explicit KeptFiles(FileManager& files)
        : m_files(files)
    {
    }
    std::string homeDirectory() const override { return m_files.homeDirectory(); }
    bool fileExists(const std::string& path) const override { return m_files.fileExists(path); }
    bool createFile(const std::string& path) override
    {
        return m_files.fileExists(path) || m_files.createFile(path);
    }
    std::unique_ptr<FileHandle> openForUpdating(const std::string& path) override
    {
        return m_files.openForUpdating(path);
    }
    Result<std::vector<std::string>> contentsOfDirectory(const std::string& path) const override
    {
        return m_files.contentsOfDirectory(path);
    }
    Status removeItem(const std::string& path) override { return m_files.removeItem(path); }

private:
    FileManager& m_files;
};

} // namespace zarn
