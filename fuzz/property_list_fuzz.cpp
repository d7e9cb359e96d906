// SPDX-License-Identifier: MIT
// Settings files. Whatever is read can be changed, written and read again without losing a value.
#include "base/utf8.h"
#include "platform/linux/settings/plist_document.h"

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

using zarn::Value;
using zarn::linux_backend::PlistDocument;

namespace {

/// Not a number equals nothing, and texts that are not UTF-8 or XML are repaired when written.
bool isComparable(const Value& value)
{
    if (const auto* real = value.real())
        return !std::isnan(*real);
    if (const auto* text = value.string())
        return zarn::isUtf8(*text);
    if (const auto* array = value.array()) {
        for (const auto& member : *array) {
            if (!isComparable(member))
                return false;
        }
    }
    if (const auto* dictionary = value.dictionary()) {
        for (const auto& [key, member] : *dictionary) {
            if (!zarn::isUtf8(key) || !isComparable(member))
                return false;
        }
    }
    return true;
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
    const std::string xml(reinterpret_cast<const char*>(data), size);
    auto parsed = PlistDocument::parse(xml);
    if (!parsed)
        return 0;
    auto& document = parsed.value();
    auto before = document.dictionary();
    document.set("added", 7);
    before["added"] = 7;
    const auto again = PlistDocument::parse(document.xml());
    if (!isComparable(Value(before)))
        return 0;
    expect(again.ok(), "what was written does not parse");
    expect(again.value().object("added") == Value(7), "the change is not there");
    expect(again.value().dictionary().size() == before.size(), "a key came or went");
    return 0;
}
