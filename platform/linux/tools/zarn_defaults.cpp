// SPDX-License-Identifier: MIT
#include "base/base64.h"
#include "base/json.h"
#include "base/utf8.h"
#include "platform/linux/files/paths.h"
#include "platform/linux/settings/plist_settings.h"
#include "zarn/product_constants.h"

#include <array>
#include <charconv>
#include <cstdio>
#include <ctime>
#include <string>
#include <vector>

namespace zarn::linux_backend {
namespace {

constexpr auto help = R"(usage: zarn-defaults [--json] list DOMAIN
       zarn-defaults [--json] read DOMAIN [KEY]
       zarn-defaults write DOMAIN KEY -TYPE VALUE
       zarn-defaults delete DOMAIN KEY
       zarn-defaults -h | --help | -V | --version

Reads and writes the settings of Zarn Actions. DOMAIN is com.zarn.ZarnActions (its own),
group.R3V8N1P6WB.zarnie.SharedZPMA (profiles) or group.Q7X2M9K4TA.zarnactions (current server).

  list    prints the keys, one a line
  read    prints a value, or the whole domain, as a property list in XML; a single text, number,
          boolean or date as itself
  write   sets one key; TYPE is string, int, float, bool (true or false), date (such as
          2026-01-31T12:00:00Z) or data (hexadecimal digits)
  delete  removes one key; removing what is not there succeeds

  --json         prints JSON: a date as a text such as "2026-01-31T12:00:00Z", data in Base64
  -h, --help     prints this text
  -V, --version  prints the version

exit status: 0 done, 1 there is no such key, 2 wrong usage, 3 the settings cannot be read or written,
or standard output cannot be written
)";

enum ExitCode { Done, NotFound, Usage, Failed };
enum class Form { Text, Json };

std::optional<Value> integerOf(const std::string& text)
{
    std::int64_t number = 0;
    const auto* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && stop == end ? std::optional(Value(number)) : std::nullopt;
}

std::optional<Value> realOf(const std::string& text)
{
    double number = 0;
    const auto* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && stop == end ? std::optional(Value(number)) : std::nullopt;
}

std::optional<Value> dateOf(const std::string& text)
{
    std::tm parts{};
    const char* stop = ::strptime(text.c_str(), "%Y-%m-%dT%H:%M:%SZ", &parts);
    if (!stop || *stop)
        return std::nullopt;
    return Date{static_cast<double>(::timegm(&parts))};
}

std::optional<Value> dataOf(const std::string& text)
{
    Data data;
    for (std::size_t i = 0; i < text.size(); i += 2) {
        std::uint8_t byte = 0;
        const auto piece = text.substr(i, 2);
        const auto [stop, error]
            = std::from_chars(piece.data(), piece.data() + piece.size(), byte, 16);
        if (piece.size() != 2 || error != std::errc() || stop != piece.data() + 2)
            return std::nullopt;
        data.push_back(byte);
    }
    return Value(std::move(data));
}

std::optional<Value> valueOf(const std::string& type, const std::string& text)
{
    if (type == "-string" && isUtf8(text))
        return Value(text);
    if (type == "-int")
        return integerOf(text);
    if (type == "-float")
        return realOf(text);
    if (type == "-bool" && (text == "true" || text == "false"))
        return Value(text == "true");
    if (type == "-date")
        return dateOf(text);
    if (type == "-data")
        return dataOf(text);
    return std::nullopt;
}

std::string dateText(Date date)
{
    const auto seconds = static_cast<std::time_t>(date.secondsSince1970);
    std::tm parts{};
    ::gmtime_r(&seconds, &parts);
    std::array<char, 32> text{};
    std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%SZ", &parts);
    return text.data();
}

std::string rendered(const Value& value)
{
    if (value.string())
        return *value.string() + "\n";
    if (value.integer() || value.boolean() || value.real())
        return describe(value) + "\n";
    if (value.date())
        return dateText(*value.date()) + "\n";
    return plistXmlOf(value);
}

int print(const std::string& text)
{
    const bool isWritten = std::fwrite(text.data(), 1, text.size(), stdout) == text.size();
    if (std::fflush(stdout) == 0 && isWritten)
        return Done;
    std::fputs("zarn-defaults: standard output cannot be written\n", stderr);
    return Failed;
}

std::string versionLine()
{
    return std::string("zarn-defaults ") + product::shortVersion + " (" + product::buildNumber
        + ")\n";
}

int finish(const Status& status)
{
    if (status)
        return Done;
    std::fprintf(stderr, "zarn-defaults: %s\n", status.error().message.c_str());
    return Failed;
}

/// The value with what JSON has no type for as texts.
Value withoutDatesAndData(const Value& value)
{
    if (value.date())
        return dateText(*value.date());
    if (value.data())
        return base64Encoded(
            {reinterpret_cast<const char*>(value.data()->data()), value.data()->size()});
    if (value.array()) {
        Value::Array result;
        for (const auto& element : *value.array())
            result.push_back(withoutDatesAndData(element));
        return result;
    }
    if (value.dictionary()) {
        Value::Dictionary result;
        for (const auto& [key, element] : *value.dictionary())
            result.emplace(key, withoutDatesAndData(element));
        return result;
    }
    return value;
}

int printJson(const Value& value)
{
    const auto text = prettyPrintedJson(withoutDatesAndData(value));
    if (!text) {
        std::fprintf(stderr, "zarn-defaults: %s\n", text.error().message.c_str());
        return Failed;
    }
    const bool isLine = text.value().ends_with('\n');
    return print(isLine ? text.value() : text.value() + "\n");
}

int list(const PlistDomain& domain, Form form)
{
    if (form == Form::Json) {
        Value::Array keys;
        for (const auto& [key, value] : domain.dictionary())
            keys.emplace_back(key);
        return printJson(keys);
    }
    std::string text;
    for (const auto& [key, value] : domain.dictionary())
        text += key + "\n";
    return print(text);
}

int readAll(const PlistDomain& domain, Form form)
{
    const auto all = domain.dictionary();
    return form == Form::Json ? printJson(all) : print(plistXmlOf(all));
}

int read(const PlistDomain& domain, const std::string& key, Form form)
{
    const auto value = domain.object(key);
    if (!value)
        return NotFound;
    return form == Form::Json ? printJson(*value) : print(rendered(*value));
}

int write(PlistDomain& domain, const std::vector<std::string>& words)
{
    const auto value = valueOf(words[3], words[4]);
    if (!value) {
        std::fprintf(
            stderr, "zarn-defaults: %s does not fit %s\n", words[4].c_str(), words[3].c_str());
        return Usage;
    }
    return finish(domain.trySet(words[2], *value));
}

/// Takes "--json" off, which stands in front of what it is for: behind it might be a value.
Form takeForm(std::vector<std::string>& words)
{
    const auto isJson = [&](std::size_t at) { return words.size() > at && words[at] == "--json"; };
    const bool isBehindVerb = isJson(1) && (words[0] == "list" || words[0] == "read");
    if (!isJson(0) && !isBehindVerb)
        return Form::Text;
    words.erase(words.begin() + (isJson(0) ? 0 : 1));
    return Form::Json;
}

int run(std::vector<std::string> words)
{
    const auto form = takeForm(words);
    const auto folder = Paths::fromEnvironment().config;
    if (folder.empty()) {
        std::fputs("zarn-defaults: there is no home directory\n", stderr);
        return Failed;
    }
    PlistSettings settings(folder, {}, nullptr);
    auto* domain = words.size() > 1 ? settings.domain(words[1]) : nullptr;
    const auto& verb = words.empty() ? std::string() : words[0];
    if (domain && verb == "list" && words.size() == 2)
        return list(*domain, form);
    if (domain && verb == "read" && words.size() == 2)
        return readAll(*domain, form);
    if (domain && verb == "read" && words.size() == 3)
        return read(*domain, words[2], form);
    if (domain && form == Form::Text && verb == "write" && words.size() == 5)
        return write(*domain, words);
    if (domain && form == Form::Text && verb == "delete" && words.size() == 3)
        return finish(domain->tryRemove(words[2]));
    std::fputs("zarn-defaults: wrong usage; see zarn-defaults --help\n", stderr);
    return Usage;
}

} // namespace
} // namespace zarn::linux_backend

int main(int argc, char** argv)
{
    const std::vector<std::string> words(argv + (argc > 0 ? 1 : 0), argv + argc);
    if (words.size() == 1 && (words[0] == "--help" || words[0] == "-h"))
        return zarn::linux_backend::print(zarn::linux_backend::help);
    if (words.size() == 1 && (words[0] == "--version" || words[0] == "-V"))
        return zarn::linux_backend::print(zarn::linux_backend::versionLine());
    return zarn::linux_backend::run(words);
}
