// SPDX-License-Identifier: MIT
#include "platform/linux/files/descriptor.h"

#include <fcntl.h>
#include <unistd.h>

namespace zarn::linux_backend {

Descriptor Descriptor::open(const std::string& path, int flags, unsigned mode)
{
    Descriptor opened;
    opened.m_value
        = retrying([&] { return ::open(path.c_str(), flags | O_NOFOLLOW | O_CLOEXEC, mode); });
    return opened;
}

Descriptor Descriptor::openNamed(const std::string& path)
{
    Descriptor opened;
    opened.m_value = retrying([&] { return ::open(path.c_str(), O_RDONLY | O_CLOEXEC); });
    return opened;
}

Descriptor::~Descriptor()
{
    if (m_value >= 0)
        ::close(m_value);
}

} // namespace zarn::linux_backend
