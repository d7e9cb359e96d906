// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include <sys/wait.h>
#include <unistd.h>

namespace zarn {

/// Who has no rights beyond those of any user.
constexpr uid_t nobody = 65534;

/// Gives a file or folder to the user that `asOrdinaryUser` becomes.
inline void giveToOrdinaryUser(const std::string& path)
{
    if (::geteuid() == 0) {
        EXPECT_EQ(::lchown(path.c_str(), nobody, nobody), 0) << path;
    }
}

/// Does `work` in a process of its own, without the rights of an administrator. True when `work`
/// answers true and no expectation in it failed.
template <typename Work> bool asOrdinaryUser(Work work)
{
    std::fflush(nullptr);
    const pid_t child = ::fork();
    if (child == 0) {
        if (::geteuid() == 0 && (::setgid(nobody) != 0 || ::setuid(nobody) != 0))
            ::_exit(2);
        const bool result = work();
        std::fflush(nullptr);
        ::_exit(result && !testing::Test::HasFailure() ? 0 : 1);
    }
    int status = 0;
    return ::waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

} // namespace zarn
