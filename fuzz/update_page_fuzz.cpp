// SPDX-License-Identifier: MIT
// The update page and the versions on it. Input: a version, a line break, the page. Both backends
// find the same text in the page, and order it against the version alike.
#include "base/utf8.h"
#include "platform/linux/text/icu_text.h"
#include "platform/memory/memory_text_services.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace {

constexpr auto pattern = R"((?<=<tr><td>Current Version<\/td><td>)[^<\/td>]+)";

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
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    // A page that is not UTF-8 is never searched.
    if (!zarn::isUtf8(text))
        return 0;
    const auto version = text.substr(0, text.find('\n'));
    const auto page = text.substr(std::min(version.size() + 1, text.size()));
    const auto found = linuxTexts.firstMatch(pattern, page);
    expect(found == memoryTexts.firstMatch(pattern, page), "different matches");
    const auto latest = found.value_or(std::string(page.substr(0, 40)));
    const int order = sign(linuxTexts.numericCompare(latest, version));
    expect(order == sign(memoryTexts.numericCompare(latest, version)), "different orders");
    expect(order == -sign(linuxTexts.numericCompare(version, latest)), "no order");
    expect(linuxTexts.numericCompare(latest, latest) == 0, "unequal to itself");
    return 0;
}
