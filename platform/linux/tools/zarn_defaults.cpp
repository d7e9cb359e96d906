// SPDX-License-Identifier: MIT
#include "base/utf8.h"
#include "platform/linux/files/paths.h"
#include "platform/linux/settings/plist_settings.h"

#include <array>
#include <charconv>
#include <cstdio>
#include <ctime>
#include <string>
#include <vector>

namespace zarn::linux_backend {
namespace {

constexpr auto help = R"(usage: zarn-defaults list DOMAIN
       zarn-defaults read DOMAIN [KEY]
       zarn-defaults write DOMAIN KEY -TYPE VALUE
       zarn-defaults delete DOMAIN KEY

Reads and writes the settings of Zarn Actions. DOMAIN is com.zarn.ZarnActions (its own),
group.R3V8N1P6WB.zarnie.SharedZPMA (profiles) or group.Q7X2M9K4TA.zarnactions (current server).

  list    prints the keys, one a line
  read    prints a value, or the whole domain, as a property list in XML; a single text, number,
          boolean or date as itself
  write   sets one key; TYPE is string, int, float, bool (true or false), date (such as
          2026-01-31T12:00:00Z) or data (hexadecimal digits)
  delete  removes one key; removing what is not there succeeds

exit status: 0 done, 1 there is no such key, 2 wrong usage, 3 the settings cannot be read or written
)";

enum ExitCode { Done, NotFound, Usage, Failed };

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
    return std::fflush(stdout) == 0 && isWritten ? Done : Failed;
}

int finish(const Status& status)
{
    if (status)
        return Done;
    std::fprintf(stderr, "zarn-defaults: %s\n", status.error().message.c_str());
    return Failed;
}

int list(const PlistDomain& domain)
{
    std::string text;
    for (const auto& [key, value] : domain.dictionary())
        text += key + "\n";
    return print(text);
}

int read(const PlistDomain& domain, const std::string& key)
{
    const auto value = domain.object(key);
    return value ? print(rendered(*value)) : NotFound;
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

int run(const std::vector<std::string>& words)
{
    const auto folder = Paths::fromEnvironment().config;
    if (folder.empty()) {
        std::fputs("zarn-defaults: there is no home directory\n", stderr);
        return Failed;
    }
    PlistSettings settings(folder, {}, nullptr);
    auto* domain = words.size() > 1 ? settings.domain(words[1]) : nullptr;
    const auto& verb = words.empty() ? std::string() : words[0];
    if (domain && verb == "list" && words.size() == 2)
        return list(*domain);
    if (domain && verb == "read" && words.size() == 2)
        return print(plistXmlOf(domain->dictionary()));
    if (domain && verb == "read" && words.size() == 3)
        return read(*domain, words[2]);
    if (domain && verb == "write" && words.size() == 5)
        return write(*domain, words);
    if (domain && verb == "delete" && words.size() == 3)
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
    return zarn::linux_backend::run(words);
}
