// SPDX-License-Identifier: MIT
// Names found in the log folder, one a line, beside forty others. Pruning keeps the last 42 in byte
// order and removes the others in that order.
#include "log/write_to_log.h"
#include "platform/file_manager.h"
#include "platform/memory/memory_clock.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace {

constexpr std::size_t kept = 42;

/// A folder that only lists and removes. Names are short, so that a run costs next to nothing.
class Folder final : public zarn::FileManager {
public:
    explicit Folder(std::vector<std::string> names)
        : m_names(std::move(names))
    {
    }
    std::string homeDirectory() const override { return ""; }
    bool fileExists(const std::string&) const override { return false; }
    bool createFile(const std::string&) override { return false; }
    std::unique_ptr<zarn::FileHandle> openForUpdating(const std::string&) override
    {
        return nullptr;
    }
    zarn::Result<std::vector<std::string>> contentsOfDirectory(const std::string&) const override
    {
        return std::move(m_names);
    }
    zarn::Status removeItem(const std::string& path) override
    {
        removed.push_back(path);
        return zarn::Success{};
    }

    std::vector<std::string> removed;

private:
    mutable std::vector<std::string> m_names; // Listed once.
};

/// In order.
const std::vector<std::string>& others()
{
    static const auto names = [] {
        std::vector<std::string> made;
        for (int i = 10; i < 50; ++i)
            made.push_back("2025" + std::to_string(i));
        return made;
    }();
    return names;
}

std::vector<std::string> found(std::string_view text)
{
    // With the forty others, some on either side of the limit: more would be the same again.
    constexpr std::size_t most = 8;
    std::vector<std::string> names;
    while (!text.empty() && names.size() < most) {
        const auto end = std::min(text.find('\n'), text.size());
        std::string name(text.substr(0, end));
        for (char& c : name)
            c = c == '/' || c == '\0' ? '_' : c;
        const bool isThere = std::find(names.begin(), names.end(), name) != names.end()
            || std::binary_search(others().begin(), others().end(), name);
        if (!name.empty() && name != "." && name != ".." && !isThere)
            names.push_back(std::move(name));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return names;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    auto expected = found({reinterpret_cast<const char*>(data), size});
    auto names = others();
    names.insert(names.end(), expected.begin(), expected.end());
    Folder folder(std::move(names));
    static const zarn::memory::MemoryClock clock;
    static const zarn::memory::MemoryDateFormatter dates;
    zarn::LogFile({folder, clock, dates}).pruneLogFiles();

    // At most eight go, so that the first eight of the others are enough beside those found.
    const auto all = others().size() + expected.size();
    expected.insert(expected.end(), others().begin(), others().begin() + 8);
    std::sort(expected.begin(), expected.end());
    expected.resize(all - std::min(all, kept));
    for (auto& name : expected)
        name.insert(0, "/Library/Logs/");
    if (folder.removed == expected)
        return 0;
    std::fputs("other files went, or in another order\n", stderr);
    std::abort();
}
