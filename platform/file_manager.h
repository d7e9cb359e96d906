// SPDX-License-Identifier: MIT
#pragma once

#include "base/result.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace zarn {

/// An open file. Closed when destroyed. One thread at a time.
class FileHandle {
public:
    virtual ~FileHandle() = default;
    virtual void seekToEndOfFile() = 0;
    /// Writes all of `bytes`, in one piece where the system allows it. A failure is not reported.
    virtual void writeData(std::string_view bytes) = 0;
};

/// Files by path. Any thread.
class FileManager {
public:
    virtual ~FileManager() = default;

    /// The user's home directory, without a trailing "/".
    virtual std::string homeDirectory() const = 0;
    virtual bool fileExists(const std::string& path) const = 0;
    /// Creates or empties a file (mode 0600), and creates its folder (0700) where necessary. False
    /// on failure.
    virtual bool createFile(const std::string& path) = 0;
    /// Opens an existing file for reading and writing, or nullptr.
    virtual std::unique_ptr<FileHandle> openForUpdating(const std::string& path) = 0;
    /// The names in a folder, in no particular order, without "." and "..".
    virtual Result<std::vector<std::string>> contentsOfDirectory(const std::string& path) const = 0;
    /// Removes a file, or a folder with its contents. Does not follow links.
    virtual Status removeItem(const std::string& path) = 0;
};

} // namespace zarn
