// SPDX-License-Identifier: MIT
#pragma once

#include "tests/support/qt_environment.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zarn::linux_backend {

/// The desktop's opener, first in the search path while this object lives. Remembers what it was
/// asked to open.
class FakeOpener {
public:
    FakeOpener()
        : m_oldPath(std::getenv("PATH"))
    {
        std::string name = std::filesystem::temp_directory_path() / "opener-XXXXXX";
        m_folder = ::mkdtemp(name.data());
        const auto pipe = m_folder / "opened";
        ::mkfifo(pipe.c_str(), 0600);
        m_pipe = ::open(pipe.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
        const auto script = m_folder / "xdg-open";
        std::ofstream(script) << "#!/bin/sh\nprintf '%s %s\\n' \"$#\" \"$*\" >'" << pipe.string()
                              << "'\n";
        std::filesystem::permissions(script, std::filesystem::perms::owner_all);
        ::setenv("PATH", (m_folder.string() + ":" + m_oldPath).c_str(), 1);
    }
    ~FakeOpener()
    {
        ::setenv("PATH", m_oldPath.c_str(), 1);
        ::close(m_pipe);
        std::filesystem::remove_all(m_folder);
    }
    FakeOpener(const FakeOpener&) = delete;
    FakeOpener& operator=(const FakeOpener&) = delete;

    /// "<number of arguments> <arguments>" of each call so far.
    std::vector<std::string> calls()
    {
        char bytes[4096];
        for (ssize_t count; (count = ::read(m_pipe, bytes, sizeof bytes)) > 0;)
            m_text.append(bytes, static_cast<std::size_t>(count));
        std::vector<std::string> result;
        for (std::size_t at = 0, end; (end = m_text.find('\n', at)) != std::string::npos;
             at = end + 1)
            result.push_back(m_text.substr(at, end - at));
        return result;
    }
    std::vector<std::string> waitForCalls(std::size_t count)
    {
        runEventsUntil([&] { return calls().size() >= count; });
        return calls();
    }

private:
    std::string m_oldPath;
    std::filesystem::path m_folder;
    int m_pipe = -1;
    std::string m_text;
};

} // namespace zarn::linux_backend
