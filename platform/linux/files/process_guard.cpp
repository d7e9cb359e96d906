// SPDX-License-Identifier: MIT
#include "platform/linux/files/process_guard.h"

#include <csignal>
#include <cstdlib>

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>

namespace zarn::linux_backend {

void hardenProcess()
{
    // Closed streams would give their numbers to files of ours.
    for (int descriptor = 0; descriptor <= 2; ++descriptor) {
        if (::fcntl(descriptor, F_GETFD) == -1 && ::open("/dev/null", O_RDWR) != descriptor)
            std::abort();
    }
    const rlimit none{0, 0};
    ::setrlimit(RLIMIT_CORE, &none);
    ::umask(077);
    std::signal(SIGPIPE, SIG_IGN);
}

void forbidTracing()
{
    ::prctl(PR_SET_DUMPABLE, 0, 0, 0, 0);
}

} // namespace zarn::linux_backend
