// SPDX-License-Identifier: MIT
// Replies of servers. The program's parser and an independent one agree on what JSON is and what it
// says, and what is printed reads back equal.
#include "base/json.h"
#include "fuzz/independent_json.h"

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
    const auto parsed = zarn::parseJson(text);
    const auto other = zarn::fuzz::independentlyParsedJson(text);
    expect(parsed.ok() == other.has_value(), "one parser accepts what the other refuses",
        parsed ? parsed.value() : other.value_or(Value()));
    if (!parsed)
        return 0;
    expect(parsed.value() == *other, "the parsers read different values", parsed.value());
    const auto printed = zarn::prettyPrintedJson(parsed.value());
    expect(printed.ok(), "cannot be printed", parsed.value());
    const auto again = zarn::parseJson(printed.value());
    expect(again && again.value() == parsed.value(), "is not what was printed", parsed.value());
    return 0;
}
