// SPDX-License-Identifier: MIT
#include "platform/linux/durable_file.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <thread>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zarn::linux_backend {

namespace {

Error failure(const std::string& what, const std::string& path, int number = errno)
{
    const auto code = number == ENOENT ? ErrorCode::NotFound : ErrorCode::Io;
    return {code, what + " " + path + ": " + std::strerror(number)};
}

template <typename Call> auto retrying(Call call)
{
    auto result = call();
    while (result < 0 && errno == EINTR)
        result = call();
    return result;
}

class Descriptor {
public:
    explicit Descriptor(int value)
        : m_value(value)
    {
    }
    ~Descriptor()
    {
        if (m_value >= 0)
            ::close(m_value);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int get() const { return m_value; }
    bool ok() const { return m_value >= 0; }
    /// A failed close may be the only word of a failed write.
    bool close()
    {
        const int result = ::close(m_value);
        m_value = -1;
        return result == 0 || errno == EINTR;
    }

private:
    int m_value;
};

std::string folderOf(const std::string& path)
{
    return path.substr(0, path.rfind('/'));
}

bool writeAll(int descriptor, std::string_view bytes)
{
    while (!bytes.empty()) {
        const auto written
            = retrying([&] { return ::write(descriptor, bytes.data(), bytes.size()); });
        if (written <= 0)
            return false;
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

Status writeTemporary(const std::string& temporary, std::string_view contents)
{
    if (::unlink(temporary.c_str()) != 0 && errno != ENOENT)
        return failure("cannot remove", temporary);
    Descriptor file(retrying([&] {
        return ::open(
            temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
    }));
    if (!file.ok())
        return failure("cannot create", temporary);
    if (::fchmod(file.get(), 0600) != 0 || !writeAll(file.get(), contents)
        || retrying([&] { return ::fsync(file.get()); }) != 0 || !file.close()) {
        const int number = errno;
        ::unlink(temporary.c_str());
        return failure("cannot write", temporary, number);
    }
    return Success{};
}

Status syncFolder(const std::string& folder)
{
    const Descriptor descriptor(
        retrying([&] { return ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
    if (!descriptor.ok() || retrying([&] { return ::fsync(descriptor.get()); }) != 0)
        return failure("cannot flush", folder);
    return Success{};
}

} // namespace

void warn(const std::string& line)
{
    const auto text = "zarn-actions: " + line + "\n";
    std::fwrite(text.data(), 1, text.size(), stderr);
}

Result<FileLock> FileLock::acquire(const std::string& path, std::chrono::milliseconds limit)
{
    if (auto made = makePrivateFolder(folderOf(path)); !made)
        return made.error();
    const auto lockPath = path + ".lock";
    const int descriptor = retrying(
        [&] { return ::open(lockPath.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600); });
    if (descriptor < 0)
        return failure("cannot open", lockPath);
    FileLock lock(descriptor);
    const auto deadline = std::chrono::steady_clock::now() + limit;
    auto pause = std::chrono::microseconds(200);
    while (::flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK && errno != EINTR)
            return failure("cannot lock", lockPath);
        if (std::chrono::steady_clock::now() >= deadline)
            return Error{ErrorCode::Unavailable, "another program keeps " + lockPath + " locked"};
        std::this_thread::sleep_for(pause);
        pause = std::min(pause * 2, std::chrono::microseconds(5000));
    }
    return lock;
}

FileLock::~FileLock()
{
    if (m_descriptor >= 0)
        ::close(m_descriptor);
}

FileStamp stampOf(const std::string& path)
{
    struct stat status { };
    if (::lstat(path.c_str(), &status) != 0)
        return {};
    return {status.st_ino, status.st_mtim.tv_sec * 1'000'000'000 + status.st_mtim.tv_nsec,
        status.st_size};
}

Status makePrivateFolder(const std::string& path)
{
    // The umask may take away more than it should.
    const auto make
        = [&] { return ::mkdir(path.c_str(), 0700) == 0 && ::chmod(path.c_str(), 0700) == 0; };
    if (path.empty() || make())
        return Success{};
    if (errno == ENOENT) {
        if (auto above = makePrivateFolder(folderOf(path)); !above)
            return above;
        if (make())
            return Success{};
    }
    struct stat status { };
    if (errno == EEXIST && ::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode))
        return Success{};
    return failure("cannot make the folder", path, errno == EEXIST ? ENOTDIR : errno);
}

Result<std::string> readPrivateFile(const std::string& path, std::size_t limit)
{
    const Descriptor file(retrying(
        [&] { return ::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK); }));
    struct stat status { };
    if (!file.ok() || ::fstat(file.get(), &status) != 0)
        return failure("cannot read", path);
    if (!S_ISREG(status.st_mode))
        return Error{ErrorCode::Io, path + " is not a regular file"};
    if (status.st_size > static_cast<off_t>(limit))
        return Error{ErrorCode::TooLarge, path + " is too large"};
    if ((status.st_mode & 0077U) != 0 && ::fchmod(file.get(), 0600) == 0)
        warn("others could read " + path + "; made it private");
    std::string contents(static_cast<std::size_t>(status.st_size), '\0');
    std::size_t filled = 0;
    while (filled < contents.size()) {
        const auto count = retrying(
            [&] { return ::read(file.get(), contents.data() + filled, contents.size() - filled); });
        if (count < 0)
            return failure("cannot read", path);
        if (count == 0)
            break;
        filled += static_cast<std::size_t>(count);
    }
    contents.resize(filled);
    return contents;
}

Status replacePrivateFile(const std::string& path, std::string_view contents)
{
    const auto temporary = path + ".tmp";
    if (auto written = writeTemporary(temporary, contents); !written)
        return written;
    if (::rename(temporary.c_str(), path.c_str()) != 0) {
        const int number = errno;
        ::unlink(temporary.c_str());
        return failure("cannot replace", path, number);
    }
    return syncFolder(folderOf(path));
}

Status removePrivateFile(const std::string& path)
{
    if (::unlink(path.c_str()) == 0)
        return syncFolder(folderOf(path));
    if (errno == ENOENT)
        return Success{};
    return failure("cannot remove", path);
}

Result<std::string> keepDamagedCopy(const std::string& path)
{
    const std::time_t now = std::time(nullptr);
    std::tm parts{};
    ::gmtime_r(&now, &parts);
    char stamp[32];
    std::strftime(stamp, sizeof stamp, "%Y%m%dT%H%M%SZ", &parts);
    const auto base = path + ".damaged-" + stamp;
    // Two damaged files within a second get a number each.
    for (int i = 0; i < 100; ++i) {
        const auto name = i == 0 ? base : base + "-" + std::to_string(i);
        if (::link(path.c_str(), name.c_str()) == 0)
            return name;
        if (errno != EEXIST)
            return failure("cannot keep a copy of", path);
    }
    return Error{ErrorCode::Io, "too many damaged copies of " + path};
}

} // namespace zarn::linux_backend
