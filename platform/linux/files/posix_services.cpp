// SPDX-License-Identifier: MIT
#include "platform/linux/files/posix_services.h"

#include "platform/linux/files/durable_file.h"

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zarn::linux_backend {

namespace {

class PosixFileHandle final : public FileHandle {
public:
    explicit PosixFileHandle(int descriptor)
        : m_descriptor(descriptor)
    {
    }
    ~PosixFileHandle() override { ::close(m_descriptor); }
    PosixFileHandle(const PosixFileHandle&) = delete;
    PosixFileHandle& operator=(const PosixFileHandle&) = delete;

    void seekToEndOfFile() override { ::lseek(m_descriptor, 0, SEEK_END); }
    void writeData(std::string_view bytes) override
    {
        off_t written = 0;
        while (!bytes.empty()) {
            const auto count = ::write(m_descriptor, bytes.data(), bytes.size());
            if (count < 0 && errno == EINTR)
                continue;
            if (count <= 0) {
                takeBack(written);
                return;
            }
            bytes.remove_prefix(static_cast<std::size_t>(count));
            written += count;
        }
    }

private:
    // A full disk must not leave half of what was to be written, unless somebody has written behind
    // it meanwhile.
    void takeBack(off_t written) const
    {
        const auto end = ::lseek(m_descriptor, 0, SEEK_CUR);
        struct stat status { };
        if (written > 0 && ::fstat(m_descriptor, &status) == 0 && status.st_size == end)
            (void)!::ftruncate(m_descriptor, end - written);
    }

    int m_descriptor;
};

} // namespace

bool PosixFileManager::fileExists(const std::string& path) const
{
    struct stat status { };
    return ::stat(path.c_str(), &status) == 0;
}

bool PosixFileManager::createFile(const std::string& path)
{
    if (!makePrivateFolder(path.substr(0, path.rfind('/'))))
        return false;
    const int descriptor = ::open(
        path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK, 0600);
    if (descriptor < 0)
        return false;
    const bool isPrivate = ::fchmod(descriptor, 0600) == 0;
    ::close(descriptor);
    return isPrivate;
}

std::unique_ptr<FileHandle> PosixFileManager::openForUpdating(const std::string& path)
{
    // Appending makes lines of several writers land whole and behind each other.
    const int descriptor
        = ::open(path.c_str(), O_RDWR | O_APPEND | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0)
        return nullptr;
    makePrivate(descriptor, path);
    return std::make_unique<PosixFileHandle>(descriptor);
}

void PosixFileManager::makePrivate(int descriptor, const std::string& path)
{
    const std::lock_guard lock(m_mutex);
    if (path == m_private)
        return;
    struct stat status { };
    if (::fstat(descriptor, &status) != 0)
        return;
    if ((status.st_mode & 0077U) != 0 && ::fchmod(descriptor, 0600) == 0)
        warn("others could read " + path + "; made it private");
    m_private = path;
}

Result<std::vector<std::string>> PosixFileManager::contentsOfDirectory(
    const std::string& path) const
{
    std::error_code error;
    std::vector<std::string> names;
    std::filesystem::directory_iterator it(path, error);
    for (; !error && it != std::filesystem::directory_iterator(); it.increment(error))
        names.push_back(it->path().filename().string());
    if (error)
        return Error{ErrorCode::Io, error.message()};
    return names;
}

Status PosixFileManager::removeItem(const std::string& path)
{
    std::error_code error;
    const auto removed = std::filesystem::remove_all(path, error);
    if (error)
        return Error{ErrorCode::Io, error.message()};
    if (removed == 0)
        return Error{ErrorCode::NotFound, std::strerror(ENOENT)};
    return Success{};
}

Date SystemClock::now() const
{
    const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
    return {std::chrono::duration<double>(sinceEpoch).count()};
}

void StandardOutput::writeLine(std::string_view line)
{
    const auto text = std::string(line) + "\n";
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fflush(stdout);
}

} // namespace zarn::linux_backend
