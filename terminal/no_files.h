// SPDX-License-Identifier: MIT
#pragma once

#include "platform/file_manager.h"

namespace zarn {

/// No files: a log on them keeps nothing. For commands that only read: actions run them often, and
/// each run would push an older one of the window out of the log folder. Any thread.
class NoFiles final : public FileManager {
public:
    std::string homeDirectory() const override { return {}; }
    bool fileExists(const std::string&) const override { return false; }
    bool createFile(const std::string&) override { return false; }
    std::unique_ptr<FileHandle> openForUpdating(const std::string&) override { return nullptr; }
    Result<std::vector<std::string>> contentsOfDirectory(const std::string&) const override
    {
        return std::vector<std::string>();
    }
    Status removeItem(const std::string& path) override { return Error{ErrorCode::NotFound, path}; }
};

} // namespace zarn
