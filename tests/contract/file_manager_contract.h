// SPDX-License-Identifier: MIT
#pragma once

#include "platform/file_manager.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace zarn {

/// Lends a file manager whose home directory is empty.
class FileManagerFixture {
public:
    virtual ~FileManagerFixture() = default;
    virtual FileManager& fileManager() = 0;
    virtual std::string contentsOf(const std::string& path) = 0;
};

/// Made by the backend that this is linked with.
std::unique_ptr<FileManagerFixture> makeFileManagerFixture();

/// What every file manager has to do.
class FileManagerContract : public testing::Test {
protected:
    FileManagerContract()
        : m_fixture(makeFileManagerFixture())
        , files(m_fixture->fileManager())
        , home(files.homeDirectory())
    {
    }
    std::string contentsOf(const std::string& path) { return m_fixture->contentsOf(path); }
    void append(const std::string& path, std::string_view bytes)
    {
        const auto handle = files.openForUpdating(path);
        ASSERT_NE(handle, nullptr);
        handle->seekToEndOfFile();
        handle->writeData(bytes);
    }

private:
    const std::unique_ptr<FileManagerFixture> m_fixture;

protected:
    FileManager& files;
    const std::string home;
};

} // namespace zarn
