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

class MemoryFileHandle final : public FileHandle {
public:
    explicit MemoryFileHandle(std::string& contents)
        : m_contents(contents)
    {
    }
    void seekToEndOfFile() override { m_offset = m_contents.size(); }
    void writeData(std::string_view bytes) override
    {
        m_contents.replace(m_offset, std::min(bytes.size(), m_contents.size() - m_offset), bytes);
        m_offset += bytes.size();
    }

private:
    std::string& m_contents;
    std::size_t m_offset = 0;
};

} // namespace

bool MemoryFileManager::fileExists(const std::string& path) const
{
    if (files.contains(path) || folders.contains(withSlash(path)))
        return true;
    const auto inside = files.lower_bound(withSlash(path));
    return inside != files.end() && inside->first.starts_with(withSlash(path));
}

bool MemoryFileManager::createFile(const std::string& path)
{
    m_events.push_back("create " + path);
    if (creatingFails)
        return false;
    files[path] = "";
    return true;
}

std::unique_ptr<FileHandle> MemoryFileManager::openForUpdating(const std::string& path)
{
    const auto it = files.find(path);
    if (it == files.end())
        return nullptr;
    return std::make_unique<MemoryFileHandle>(it->second);
}

Result<std::vector<std::string>> MemoryFileManager::contentsOfDirectory(
    const std::string& path) const
{
    m_events.push_back("list " + path);
    if (listingFails || !fileExists(path))
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
    m_events.push_back("remove " + path);
    if (const auto it = stuck.find(path); it != stuck.end())
        return Error{ErrorCode::Io, it->second};
    if (!fileExists(path))
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
