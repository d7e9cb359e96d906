// SPDX-License-Identifier: MIT
// Replies of servers. Both parsers agree on what JSON is and what it says, and read what they
// print.
#include "platform/linux/text/qt_json.h"
#include "platform/memory/memory_json.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>

using zarn::Value;

namespace {

void expect(bool condition, const char* what, const Value& value)
{
    if (condition)
        return;
    std::fprintf(stderr, "%s: %s\n", what, zarn::describe(value).c_str());
    std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const zarn::linux_backend::QtJson linuxJson;
    const zarn::memory::MemoryJson memoryJson;
    const auto a = linuxJson.parse(text);
    const auto b = memoryJson.parse(text);
    expect(a.ok() == b.ok(), "one parser accepts what the other refuses",
        a       ? a.value()
            : b ? b.value()
                : Value());
    if (!a)
        return 0;
    expect(a.value() == b.value(), "the parsers read different values", a.value());
    const auto printed = linuxJson.prettyPrinted(a.value());
    expect(printed.ok(), "cannot be printed", a.value());
    const auto again = linuxJson.parse(printed.value());
    expect(again && again.value() == a.value(), "is not what was printed", a.value());
    return 0;
}
