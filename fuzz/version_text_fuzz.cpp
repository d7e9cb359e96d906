// SPDX-License-Identifier: MIT
// Three versions, one a line. Both backends order them alike, and it is an order.
#include "base/utf8.h"
#include "platform/linux/text/icu_text.h"
#include "platform/memory/memory_text_services.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace {

int sign(int value)
{
    return value < 0 ? -1 : value > 0 ? 1 : 0;
}

void expect(bool condition, const char* what)
{
    if (condition)
        return;
    std::fprintf(stderr, "%s\n", what);
    std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const zarn::linux_backend::IcuTextServices linuxTexts;
    static const zarn::memory::MemoryTextServices memoryTexts;
    std::string_view rest(reinterpret_cast<const char*>(data), size);
    if (!zarn::isUtf8(rest))
        return 0;
    std::array<std::string_view, 3> versions;
    for (auto& version : versions) {
        version = rest.substr(0, rest.find('\n'));
        rest.remove_prefix(std::min(version.size() + 1, rest.size()));
    }
    const auto compare = [&](std::size_t a, std::size_t b) {
        const int order = sign(linuxTexts.numericCompare(versions[a], versions[b]));
        expect(order == sign(memoryTexts.numericCompare(versions[a], versions[b])),
            "different orders");
        return order;
    };
    const int ab = compare(0, 1);
    const int bc = compare(1, 2);
    expect(ab == -compare(1, 0), "the order depends on the side");
    expect(compare(2, 2) == 0, "unequal to itself");
    if (ab == bc)
        expect(compare(0, 2) == ab, "not transitive");
    return 0;
}
