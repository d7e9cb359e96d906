// SPDX-License-Identifier: MIT
// Names found in the log folder, one a line, beside forty of our own. Pruning keeps the last 42 in
// byte order and removes the others in that order.
#include "log/write_to_log.h"
#include "platform/memory/memory_clock.h"
#include "platform/memory/memory_file_manager.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace {

constexpr std::size_t kept = 42;
const std::string folder = "/home/test/Library/Logs/";

void expect(bool condition, const char* what)
{
    if (condition)
        return;
    std::fprintf(stderr, "%s\n", what);
    std::abort();
}

void addOwn(std::set<std::string>& names)
{
    for (int i = 10; i < 50; ++i)
        names.insert("202503" + std::to_string(i) + "_101500_zarn-shortcuts.log");
}

void addFound(std::set<std::string>& names, std::string_view text)
{
    while (!text.empty()) {
        const auto end = std::min(text.find('\n'), text.size());
        std::string name(text.substr(0, end));
        for (char& c : name)
            c = c == '/' || c == '\0' ? '_' : c;
        if (!name.empty() && name != "." && name != "..")
            names.insert(name);
        text.remove_prefix(std::min(end + 1, text.size()));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::set<std::string> names;
    addOwn(names);
    addFound(names, {reinterpret_cast<const char*>(data), size});
    std::vector<std::string> events;
    zarn::memory::MemoryFileManager files(events);
    for (const auto& name : names)
        files.files[folder + name] = "";
    const zarn::memory::MemoryClock clock;
    const zarn::memory::MemoryDateFormatter dates;
    zarn::LogFile({files, clock, dates}).pruneLogFiles();

    std::vector<std::string> expected{"list " + folder};
    while (names.size() > kept) {
        expected.push_back("remove " + folder + *names.begin());
        names.erase(names.begin());
    }
    expect(events == expected, "other files went, or in another order");
    expect(files.files.size() == names.size(), "not as many stayed");
    for (const auto& name : names)
        expect(files.files.contains(folder + name), "a file is missing");
    return 0;
}
