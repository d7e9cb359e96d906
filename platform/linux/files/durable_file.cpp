// SPDX-License-Identifier: MIT
#include "platform/linux/files/durable_file.h"

#include "base/warn.h"

#include <array>
#include <cstring>
#include <ctime>
#include <optional>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zarn::linux_backend {

namespace {

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

// The number of bytes read; nothing on failure.
std::optional<std::size_t> readAll(int descriptor, std::string& buffer)
{
    std::size_t filled = 0;
    while (filled < buffer.size()) {
        const auto count = retrying(
            [&] { return ::read(descriptor, buffer.data() + filled, buffer.size() - filled); });
        if (count < 0)
            return std::nullopt;
        if (count == 0)
            break;
        filled += static_cast<std::size_t>(count);
    }
    return filled;
}

FileStamp stampFrom(const struct stat& status)
{
    return {status.st_dev, status.st_ino,
        status.st_mtim.tv_sec * 1'000'000'000 + status.st_mtim.tv_nsec, status.st_size};
}

// The umask may have removed rights.
bool makeFolder(const std::string& path)
{
    return retrying([&] { return ::mkdir(path.c_str(), 0700); }) == 0
        && ::chmod(path.c_str(), 0700) == 0;
}

Result<HeldFile> writeTemporary(const std::string& temporary, std::string_view contents)
{
    if (retrying([&] { return ::unlink(temporary.c_str()); }) != 0 && errno != ENOENT)
        return failure("cannot remove", temporary);
    auto file = Descriptor::open(temporary, O_WRONLY | O_CREAT | O_EXCL, 0600);
    if (!file.ok())
        return failure("cannot create", temporary);
    struct stat status { };
    if (retrying([&] { return ::fchmod(file.get(), 0600); }) != 0 || !writeAll(file.get(), contents)
        || retrying([&] { return ::fsync(file.get()); }) != 0
        || ::fstat(file.get(), &status) != 0) {
        const int number = errno;
        ::unlink(temporary.c_str());
        return failure("cannot write", temporary, number);
    }
    return HeldFile{std::move(file), stampFrom(status)};
}

std::string utcNow()
{
    const std::time_t now = std::time(nullptr);
    std::tm parts{};
    ::gmtime_r(&now, &parts);
    std::array<char, 32> text{};
    std::strftime(text.data(), text.size(), "%Y%m%dT%H%M%SZ", &parts);
    return text.data();
}

Status syncFolder(const std::string& folder)
{
    // The user may have made the folder itself a link.
    const auto file = Descriptor::open(folder + "/.", O_RDONLY | O_DIRECTORY);
    if (!file.ok() || retrying([&] { return ::fsync(file.get()); }) != 0)
        return failure("cannot flush", folder);
    return Success{};
}

} // namespace

Error failure(const std::string& what, const std::string& path, int number)
{
    const auto code = number == ENOENT ? ErrorCode::NotFound : ErrorCode::Io;
    // ELOOP comes only from opening without following links, where the system's text is misleading.
    const char* reason = number == ELOOP ? "it is a symbolic link" : std::strerror(number);
    return {code, what + " " + path + ": " + reason};
}

std::string folderOf(const std::string& path)
{
    const auto slash = path.rfind('/');
    return slash == std::string::npos ? "." : path.substr(0, slash);
}

FileStamp stampOf(const std::string& path)
{
    struct stat status { };
    return ::lstat(path.c_str(), &status) == 0 ? stampFrom(status) : FileStamp{};
}

Status makePrivateFolder(const std::string& path)
{
    if (path.empty() || makeFolder(path))
        return Success{};
    if (errno == ENOENT && path != ".") {
        if (auto above = makePrivateFolder(folderOf(path)); !above)
            return above;
        if (makeFolder(path))
            return Success{};
    }
    const int number = errno;
    struct stat status { };
    if (number == EEXIST && ::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode))
        return Success{};
    return failure("cannot make the folder", path, number == EEXIST ? ENOTDIR : number);
}

Status makeOwnFolder(const std::string& path)
{
    if (auto made = makePrivateFolder(path); !made)
        return made;
    struct stat status { };
    if (::stat(path.c_str(), &status) != 0)
        return failure("cannot look at the folder", path);
    if ((status.st_mode & 0077U) != 0 && status.st_uid == ::geteuid()
        && ::chmod(path.c_str(), 0700) == 0)
        warn("others could look into " + path + "; made it private");
    return Success{};
}

Result<PrivateFile> openPrivateFile(const std::string& path, std::size_t limit)
{
    auto file = Descriptor::open(path, O_RDONLY | O_NONBLOCK);
    struct stat status { };
    if (!file.ok() || ::fstat(file.get(), &status) != 0)
        return failure("cannot read", path);
    if (!S_ISREG(status.st_mode))
        return Error{ErrorCode::Io, "cannot read " + path + ": it is not a regular file"};
    if (status.st_size > static_cast<off_t>(limit))
        return Error{ErrorCode::TooLarge, "cannot read " + path + ": it is too large"};
    if ((status.st_mode & 0077U) != 0 && ::fchmod(file.get(), 0600) == 0)
        warn("others could read " + path + "; made it private");
    std::string contents(static_cast<std::size_t>(status.st_size), '\0');
    const auto filled = readAll(file.get(), contents);
    if (!filled)
        return failure("cannot read", path);
    contents.resize(*filled);
    return PrivateFile{{std::move(file), stampFrom(status)}, std::move(contents)};
}

Result<std::string> readPrivateFile(const std::string& path, std::size_t limit)
{
    auto file = openPrivateFile(path, limit);
    if (!file)
        return file.error();
    return std::move(file.value().contents);
}

Result<HeldFile> replacePrivateFile(const std::string& path, std::string_view contents)
{
    const auto temporary = path + ".tmp";
    auto written = writeTemporary(temporary, contents);
    if (!written)
        return written;
    if (retrying([&] { return ::rename(temporary.c_str(), path.c_str()); }) != 0) {
        const int number = errno;
        ::unlink(temporary.c_str());
        return failure("cannot replace", path, number);
    }
    if (auto flushed = syncFolder(folderOf(path)); !flushed)
        return flushed.error();
    return written;
}

Status removePrivateFile(const std::string& path)
{
    if (retrying([&] { return ::unlink(path.c_str()); }) == 0)
        return syncFolder(folderOf(path));
    if (errno == ENOENT)
        return Success{};
    return failure("cannot remove", path);
}

Result<std::string> setDamagedFileAside(const std::string& path)
{
    const auto base = path + ".damaged-" + utcNow();
    auto name = base;
    // Two damaged files within a second get a number each.
    for (int i = 1; stampOf(name) != FileStamp{}; ++i)
        name = base + "-" + std::to_string(i);
    if (retrying([&] { return ::rename(path.c_str(), name.c_str()); }) != 0)
        return failure("cannot rename the damaged", path);
    if (auto flushed = syncFolder(folderOf(path)); !flushed)
        return flushed.error();
    return name;
}

} // namespace zarn::linux_backend
