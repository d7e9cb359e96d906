// SPDX-License-Identifier: MIT
#include "platform/linux/single_instance.h"

#include "platform/linux/durable_file.h"

#include <csignal>

#include <fcntl.h>
#include <unistd.h>

namespace zarn::linux_backend {

SingleInstance::~SingleInstance()
{
    if (m_descriptor >= 0)
        ::close(m_descriptor);
}

SingleInstance::Outcome SingleInstance::claim(const std::string& path)
{
    if (!makePrivateFolder(path.substr(0, path.rfind('/'))))
        return Outcome::Failed;
    m_descriptor = ::open(path.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600);
    if (m_descriptor < 0)
        return Outcome::Failed;
    // The other may be ending: then the lock is free at the next try.
    for (int attempt = 0; attempt < 3; ++attempt) {
        struct flock lock { };
        lock.l_type = F_WRLCK;
        lock.l_whence = SEEK_SET;
        if (::fcntl(m_descriptor, F_SETLK, &lock) == 0)
            return Outcome::First;
        if (::fcntl(m_descriptor, F_GETLK, &lock) != 0)
            return Outcome::Failed;
        if (lock.l_type != F_UNLCK && lock.l_pid > 0 && ::kill(lock.l_pid, SIGUSR1) == 0)
            return Outcome::RaisedOther;
    }
    return Outcome::Failed;
}

} // namespace zarn::linux_backend
