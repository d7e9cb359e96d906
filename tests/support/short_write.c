/* SPDX-License-Identifier: MIT */
/* Preloaded by tests: every write to a file takes one byte at a time. */
#define _GNU_SOURCE
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

ssize_t write(int descriptor, const void* bytes, size_t size)
{
    struct stat status;
    if (size > 1 && fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode))
        size = 1;
    return syscall(SYS_write, descriptor, bytes, size);
}
