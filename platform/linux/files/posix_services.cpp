// SPDX-License-Identifier: MIT
#include "platform/linux/files/posix_services.h"

#include "base/warn.h"
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
    explicit PosixFileHandle(Descriptor file)
        : m_file(std::move(file))
    {
    }

    void seekToEndOfFile() override { ::lseek(m_file.get(), 0, SEEK_END); }
    void writeData(std::string_view bytes) override
    {
        off_t written = 0;
        while (!bytes.empty()) {
            const auto count
                = retrying([&] { return ::write(m_file.get(), bytes.data(), bytes.size()); });
            if (count <= 0) {
                takeBack(written);
                return;
            }
            bytes.remove_prefix(static_cast<std::size_t>(count));
            written += count;
        }
    }

private:
    // On a full disk no partial write stays behind, unless another process has appended to it.
    void takeBack(off_t written) const
    {
        const auto end = ::lseek(m_file.get(), 0, SEEK_CUR);
        struct stat status { };
        if (written > 0 && ::fstat(m_file.get(), &status) == 0 && status.st_size == end)
            (void)!::ftruncate(m_file.get(), end - written);
    }

    Descriptor m_file;
};

} // namespace

bool PosixFileManager::fileExists(const std::string& path) const
{
    struct stat status { };
    return ::stat(path.c_str(), &status) == 0;
}

bool PosixFileManager::createFile(const std::string& path)
{
    if (!makePrivateFolder(folderOf(path)))
        return false;
    const auto file = Descriptor::open(path, O_WRONLY | O_CREAT | O_TRUNC | O_NONBLOCK, 0600);
    return file.ok() && ::fchmod(file.get(), 0600) == 0;
}

std::unique_ptr<FileHandle> PosixFileManager::openForUpdating(const std::string& path)
{
    // In append mode lines of several writers do not overwrite each other.
    auto file = Descriptor::open(path, O_RDWR | O_APPEND | O_NONBLOCK);
    if (!file.ok())
        return nullptr;
    makePrivate(file.get(), path);
    return std::make_unique<PosixFileHandle>(std::move(file));
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
