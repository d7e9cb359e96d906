// SPDX-License-Identifier: MIT
#pragma once

#include "platform/clock.h"
#include "platform/console.h"
#include "platform/file_manager.h"

#include <mutex>
#include <string>

/// Files, time and standard output of a POSIX system.
namespace zarn::linux_backend {

class PosixFileManager final : public FileManager {
public:
    explicit PosixFileManager(std::string home)
        : m_home(std::move(home))
    {
    }
    std::string homeDirectory() const override { return m_home; }
    bool fileExists(const std::string& path) const override;
    bool createFile(const std::string& path) override;
    std::unique_ptr<FileHandle> openForUpdating(const std::string& path) override;
    Result<std::vector<std::string>> contentsOfDirectory(const std::string& path) const override;
    Status removeItem(const std::string& path) override;

private:
    /// Takes others their rights to a file of ours, once: looking at it before each line would make
    /// every write as expensive again, since the file system then has to tell their times apart.
    void makePrivate(int descriptor, const std::string& path);

    std::string m_home;
    std::mutex m_mutex;
    std::string m_private;
};

class SystemClock final : public Clock {
public:
    Date now() const override;
};

class StandardOutput final : public Console {
public:
    void writeLine(std::string_view line) override;
};

} // namespace zarn::linux_backend
