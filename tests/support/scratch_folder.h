// SPDX-License-Identifier: MIT
#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>

namespace zarn {

/// An empty folder of the test's own, removed with everything in it at the end.
class ScratchFolder {
public:
    ScratchFolder()
        : m_path((std::filesystem::temp_directory_path() / "zarn-test-XXXXXX").string())
    {
        if (!::mkdtemp(m_path.data()))
            std::abort();
    }
    ~ScratchFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    const std::string& path() const { return m_path; }

private:
    std::string m_path;
};

} // namespace zarn
