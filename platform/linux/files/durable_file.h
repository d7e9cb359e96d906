// SPDX-License-Identifier: MIT
#pragma once

#include "base/result.h"
#include "platform/linux/files/descriptor.h"

#include <cerrno>
#include <cstdint>
#include <string>
#include <string_view>

/// Private files that are replaced as a whole: after a crash at any moment either the old or the
/// new contents are there. Files are 0600 in 0700 folders whatever the umask; links are never
/// followed. Any thread.
namespace zarn::linux_backend {

/// Identifies one state of a file. All zero when the file does not exist.
struct FileStamp {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::int64_t modified = 0;
    std::int64_t size = 0;
    bool operator==(const FileStamp&) const = default;
};

FileStamp stampOf(const std::string& path);

/// A file that is kept open, so that the system cannot reuse its inode: an equal stamp then means
/// the same file.
struct HeldFile {
    Descriptor descriptor;
    FileStamp stamp;
};

struct PrivateFile {
    HeldFile held;
    std::string contents;
};

/// The folder that holds `path`.
std::string folderOf(const std::string& path);

/// Makes a folder (0700) and those above it.
Status makePrivateFolder(const std::string& path);

/// The same, and makes an existing folder private that others could look into, with one line on
/// standard error. For folders that only this program uses.
Status makeOwnFolder(const std::string& path);

/// A regular file with its contents. NotFound when it does not exist. Links are refused. A file
/// that others could read is made private, with one line on standard error.
Result<PrivateFile> openPrivateFile(const std::string& path, std::size_t limit);
Result<std::string> readPrivateFile(const std::string& path, std::size_t limit);

/// Writes a temporary file beside `path`, flushes it, renames it over `path` and flushes the
/// folder. Call with the lock held: the temporary file has one name, so that the next write removes
/// what a killed writer left behind.
Result<HeldFile> replacePrivateFile(const std::string& path, std::string_view contents);

/// Removes a file durably. Success when it does not exist.
Status removePrivateFile(const std::string& path);

/// Renames the damaged file at `path` to `<path>.damaged-YYYYMMDDTHHMMSSZ` (UTC) and returns that
/// name. Call with the lock held, after reading the damaged contents under that lock.
Result<std::string> setDamagedFileAside(const std::string& path);

/// "<what> <path>: <reason>", for an error number of the system.
Error failure(const std::string& what, const std::string& path, int number = errno);

} // namespace zarn::linux_backend
