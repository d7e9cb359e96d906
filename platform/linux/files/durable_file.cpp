// SPDX-License-Identifier: MIT
#include "platform/linux/files/durable_file.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <optional>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zarn::linux_backend {

namespace {

Error failure(const std::string& what, const std::string& path, int number = errno)
{
    const auto code = number == ENOENT ? ErrorCode::NotFound : ErrorCode::Io;
    return {code, what + " " + path + ": " + reasonOf(number)};
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
    const auto slash = path.rfind('/');
    return slash == std::string::npos ? "." : path.substr(0, slash);
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

// How many bytes of the file there were; nothing on failure.
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

// The mode is set apart, whatever the umask takes away.
bool makeFolder(const std::string& path)
{
    return retrying([&] { return ::mkdir(path.c_str(), 0700); }) == 0
        && ::chmod(path.c_str(), 0700) == 0;
}

Status writeTemporary(const std::string& temporary, std::string_view contents)
{
    if (retrying([&] { return ::unlink(temporary.c_str()); }) != 0 && errno != ENOENT)
        return failure("cannot remove", temporary);
    Descriptor file(retrying([&] {
        return ::open(
            temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
    }));
    if (!file.ok())
        return failure("cannot create", temporary);
    if (retrying([&] { return ::fchmod(file.get(), 0600); }) != 0 || !writeAll(file.get(), contents)
        || retrying([&] { return ::fsync(file.get()); }) != 0 || !file.close()) {
        const int number = errno;
        ::unlink(temporary.c_str());
        return failure("cannot write", temporary, number);
    }
    return Success{};
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

// A name beginning with `prefix` under which that very file is kept already.
std::optional<std::string> linkTo(const FileStamp& stamp, const std::string& prefix)
{
    std::error_code error;
    std::filesystem::directory_iterator it(folderOf(prefix), error);
    for (; !error && it != std::filesystem::directory_iterator(); it.increment(error)) {
        const auto name = it->path().string();
        if (name.starts_with(prefix) && stampOf(name) == stamp)
            return name;
    }
    return std::nullopt;
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

std::string reasonOf(int number)
{
    // Only opening without following links ends so, and the system's own words mislead.
    return number == ELOOP ? "it is a symbolic link" : std::strerror(number);
}

void warn(const std::string& line)
{
    const auto text = "zarn-actions: " + line + "\n";
    std::fwrite(text.data(), 1, text.size(), stderr);
}

HeldFile::~HeldFile()
{
    if (m_descriptor >= 0)
        ::close(m_descriptor);
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
    PrivateFile file;
    file.held = HeldFile(retrying(
        [&] { return ::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK); }));
    const int descriptor = file.held.descriptor();
    struct stat status { };
    if (descriptor < 0 || ::fstat(descriptor, &status) != 0)
        return failure("cannot read", path);
    if (!S_ISREG(status.st_mode))
        return Error{ErrorCode::Io, "cannot read " + path + ": it is not a regular file"};
    if (status.st_size > static_cast<off_t>(limit))
        return Error{ErrorCode::TooLarge, "cannot read " + path + ": it is too large"};
    if ((status.st_mode & 0077U) != 0 && ::fchmod(descriptor, 0600) == 0)
        warn("others could read " + path + "; made it private");
    file.stamp = stampFrom(status);
    file.contents.resize(static_cast<std::size_t>(status.st_size));
    const auto filled = readAll(descriptor, file.contents);
    if (!filled)
        return failure("cannot read", path);
    file.contents.resize(*filled);
    return file;
}

std::pair<HeldFile, FileStamp> holdFile(const std::string& path)
{
    HeldFile held(
        retrying([&] { return ::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC); }));
    struct stat status { };
    if (held.descriptor() < 0 || ::fstat(held.descriptor(), &status) != 0)
        return {};
    return {std::move(held), stampFrom(status)};
}

Result<std::string> readPrivateFile(const std::string& path, std::size_t limit)
{
    auto file = openPrivateFile(path, limit);
    if (!file)
        return file.error();
    return std::move(file.value().contents);
}

Status replacePrivateFile(const std::string& path, std::string_view contents)
{
    const auto temporary = path + ".tmp";
    if (auto written = writeTemporary(temporary, contents); !written)
        return written;
    if (retrying([&] { return ::rename(temporary.c_str(), path.c_str()); }) != 0) {
        const int number = errno;
        ::unlink(temporary.c_str());
        return failure("cannot replace", path, number);
    }
    return syncFolder(folderOf(path));
}

Status removePrivateFile(const std::string& path)
{
    if (retrying([&] { return ::unlink(path.c_str()); }) == 0)
        return syncFolder(folderOf(path));
    if (errno == ENOENT)
        return Success{};
    return failure("cannot remove", path);
}

namespace {

constexpr std::size_t largestCopy = std::size_t{1} << 30;

// A name beginning with `prefix` under which the same contents are kept already.
std::optional<std::string> copyOf(const std::string& contents, const std::string& prefix)
{
    std::error_code error;
    std::filesystem::directory_iterator it(folderOf(prefix), error);
    for (; !error && it != std::filesystem::directory_iterator(); it.increment(error)) {
        const auto name = it->path().string();
        if (!name.starts_with(prefix)
            || stampOf(name).size != static_cast<std::int64_t>(contents.size()))
            continue;
        if (const auto kept = readPrivateFile(name, largestCopy); kept && kept.value() == contents)
            return name;
    }
    return std::nullopt;
}

Result<std::string> copyTo(
    const std::string& name, const std::string& path, const std::string& prefix)
{
    const auto contents = readPrivateFile(path, largestCopy);
    if (!contents)
        return contents.error();
    if (auto earlier = copyOf(contents.value(), prefix))
        return *earlier;
    if (const auto written = writeTemporary(name, contents.value()); !written)
        return written.error();
    return name;
}

} // namespace

Result<std::string> keepDamagedCopy(const std::string& path)
{
    const auto stamp = stampOf(path);
    const auto prefix = path + ".damaged-";
    if (auto earlier = linkTo(stamp, prefix))
        return *earlier;
    const auto base = prefix + utcNow();
    // Two damaged files within a second get a number each.
    for (int i = 0; i < 100; ++i) {
        const auto name = i == 0 ? base : base + "-" + std::to_string(i);
        if (::link(path.c_str(), name.c_str()) == 0)
            return name;
        // Some file systems have no links.
        if (errno == EPERM || errno == EOPNOTSUPP || errno == ENOSYS)
            return copyTo(name, path, prefix);
        if (errno != EEXIST)
            return failure("cannot keep a copy of", path);
    }
    return Error{ErrorCode::Io, "too many damaged copies of " + path};
}

} // namespace zarn::linux_backend
