// SPDX-License-Identifier: MIT
#include "platform/memory/memory_file_manager.h"

namespace zarn::memory {

namespace {

std::string withSlash(std::string path)
{
    if (path.empty() || path.back() != '/')
        path += '/';
    return path;
}

} // namespace

/// Writes to the file of its path; what is written after the file's removal is lost.
class MemoryFileHandle final : public FileHandle {
public:
    MemoryFileHandle(MemoryFileManager& owner, std::string path)
        : m_owner(owner)
        , m_path(std::move(path))
    {
    }
    void seekToEndOfFile() override { m_atEnd = true; }
    void writeData(std::string_view bytes) override
    {
        const std::lock_guard lock(m_owner.m_mutex);
        const auto it = m_owner.files.find(m_path);
        if (it == m_owner.files.end())
            return;
        auto& contents = it->second;
        // Appends where the file ends at this moment: lines of several writers stay whole.
        const auto at = m_atEnd ? contents.size() : std::min(m_offset, contents.size());
        contents.replace(at, std::min(bytes.size(), contents.size() - at), bytes);
        m_offset = at + bytes.size();
    }

private:
    MemoryFileManager& m_owner;
    std::string m_path;
    std::size_t m_offset = 0;
    bool m_atEnd = false;
};

bool MemoryFileManager::exists(const std::string& path) const
{
    if (files.contains(path) || folders.contains(withSlash(path)))
        return true;
    const auto inside = files.lower_bound(withSlash(path));
    return inside != files.end() && inside->first.starts_with(withSlash(path));
}

bool MemoryFileManager::fileExists(const std::string& path) const
{
    const std::lock_guard lock(m_mutex);
    return exists(path);
}

bool MemoryFileManager::createFile(const std::string& path)
{
    const std::lock_guard lock(m_mutex);
    m_events.push_back("create " + path);
    if (creatingFails)
        return false;
    files[path] = "";
    return true;
}

std::unique_ptr<FileHandle> MemoryFileManager::openForUpdating(const std::string& path)
{
    const std::lock_guard lock(m_mutex);
    if (openingFails || !files.contains(path))
        return nullptr;
    return std::make_unique<MemoryFileHandle>(*this, path);
}

Result<std::vector<std::string>> MemoryFileManager::contentsOfDirectory(
    const std::string& path) const
{
    const std::lock_guard lock(m_mutex);
    m_events.push_back("list " + path);
    if (listingFails || !exists(path))
        return Error{ErrorCode::Io, "The folder cannot be listed."};
    const auto prefix = withSlash(path);
    std::set<std::string> names;
    for (const auto& folder : folders) {
        if (folder.starts_with(prefix) && folder.size() > prefix.size())
            names.insert(
                folder.substr(prefix.size(), folder.find('/', prefix.size()) - prefix.size()));
    }
    for (auto it = files.lower_bound(prefix); it != files.end() && it->first.starts_with(prefix);
         ++it)
        names.insert(
            it->first.substr(prefix.size(), it->first.find('/', prefix.size()) - prefix.size()));
    // Backwards: callers must not count on an order.
    return std::vector<std::string>(names.rbegin(), names.rend());
}

Status MemoryFileManager::removeItem(const std::string& path)
{
    const std::lock_guard lock(m_mutex);
    m_events.push_back("remove " + path);
    if (const auto it = stuck.find(path); it != stuck.end())
        return Error{ErrorCode::Io, it->second};
    if (!exists(path))
        return Error{ErrorCode::NotFound, "There is no such file."};
    const auto prefix = withSlash(path);
    const auto eraseUnder = [&](auto& container, const auto& nameOf) {
        auto it = container.lower_bound(prefix);
        while (it != container.end() && nameOf(*it).starts_with(prefix))
            it = container.erase(it);
    };
    files.erase(path);
    eraseUnder(files, [](const auto& entry) -> const std::string& { return entry.first; });
    eraseUnder(folders, [](const auto& folder) -> const std::string& { return folder; });
    return Success{};
}

} // namespace zarn::memory
