// SPDX-License-Identifier: MIT
#pragma once

#include "base/result.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

/// Private files that are replaced as a whole: after a crash at any moment the old or the new
/// contents are there. Files are 0600 in 0700 folders whatever the umask; links are never followed.
/// Any thread.
namespace zarn::linux_backend {

/// Tells two states of a file apart. All zero: there is no file.
struct FileStamp {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::int64_t modified = 0;
    std::int64_t size = 0;
    bool operator==(const FileStamp&) const = default;
};

FileStamp stampOf(const std::string& path);

/// Makes a folder (0700) and those above it.
Status makePrivateFolder(const std::string& path);

/// The same, and an existing folder that others could look into is made private, with one line on
/// standard error. For folders that only this program uses.
Status makeOwnFolder(const std::string& path);

/// A file that stays open. While it is held, the system gives its inode to no other file, so that
/// an equal stamp means the same file.
class HeldFile {
public:
    HeldFile() = default;
    explicit HeldFile(int descriptor)
        : m_descriptor(descriptor)
    {
    }
    ~HeldFile();
    HeldFile(HeldFile&& other) noexcept
        : m_descriptor(std::exchange(other.m_descriptor, -1))
    {
    }
    HeldFile& operator=(HeldFile&& other) noexcept
    {
        std::swap(m_descriptor, other.m_descriptor);
        return *this;
    }
    HeldFile(const HeldFile&) = delete;
    HeldFile& operator=(const HeldFile&) = delete;
    int descriptor() const { return m_descriptor; }

private:
    int m_descriptor = -1;
};

struct PrivateFile {
    HeldFile held;
    FileStamp stamp;
    std::string contents;
};

/// A regular file with its contents. NotFound: there is none. Links are refused. A file that others
/// could read is made private, and one line on standard error says so.
Result<PrivateFile> openPrivateFile(const std::string& path, std::size_t limit);
/// The file at `path` with its stamp, without its contents; an empty stamp when it cannot be
/// opened.
std::pair<HeldFile, FileStamp> holdFile(const std::string& path);
Result<std::string> readPrivateFile(const std::string& path, std::size_t limit);

/// Writes a temporary file beside `path`, flushes it, renames it over `path` and flushes the
/// folder. Call with the lock held: the temporary file has one name, so that one a killed writer
/// left behind is gone after the next write.
Status replacePrivateFile(const std::string& path, std::string_view contents);

/// Removes a file for good (the folder is flushed). Success when there is none.
Status removePrivateFile(const std::string& path);

/// Keeps the file at `path` under the name `<path>.damaged-<time>` too; answers that name, or the
/// name of an equal copy that is there already.
Result<std::string> keepDamagedCopy(const std::string& path);

/// What an error number of the system means for one of these files.
std::string reasonOf(int number);

/// One line on standard error, in the program's name.
void warn(const std::string& line);

} // namespace zarn::linux_backend
