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
    /// Makes a file private once. Checking it before each line would double the cost of a write,
    /// because the file system then has to keep more precise times.
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
