// SPDX-License-Identifier: MIT
#include "terminal/profile_report.h"

#include "base/json.h"
#include "profiles/status_line.h"
#include "profiles/stored_login.h"

#include <chrono>
#include <iomanip>
#include <sstream>

namespace zarn {

namespace {

/// Texts, numbers, booleans and null always have a form in JSON.
std::string jsonOf(const Value& value)
{
    return prettyPrintedJson(value).value();
}

Value orNull(const std::optional<std::string>& text)
{
    return text ? Value(*text) : Value();
}

Value kindOf(const std::optional<bool>& usesApiClient)
{
    return usesApiClient ? Value(*usesApiClient ? "api-client" : "user") : Value();
}

Value::Dictionary objectOf(const ProfileFacts& profile)
{
    return {{"name", profile.name}, {"server", profile.server},
        {"added", profile.added ? Value(dateText(*profile.added)) : Value()},
        {"current", profile.isCurrent}};
}

std::string field(std::string_view name, std::string_view text)
{
    constexpr std::size_t column = 15;
    std::string line(name);
    line += ":";
    line.resize(column, ' ');
    return line.append(text) + "\n";
}

std::string whoText(const std::string& username, bool usesApiClient)
{
    return field(usesApiClient ? "Client ID" : "Username", plainLine(username));
}

} // namespace

std::string dateText(Date date)
{
    using namespace std::chrono;
    const sys_seconds moment{seconds{static_cast<std::int64_t>(date.secondsSince1970)}};
    const auto day = floor<days>(moment);
    const year_month_day calendar{day};
    const hh_mm_ss time{moment - day};
    std::ostringstream text;
    text << std::setfill('0') << std::setw(4) << static_cast<int>(calendar.year()) << '-'
         << std::setw(2) << static_cast<unsigned>(calendar.month()) << '-' << std::setw(2)
         << static_cast<unsigned>(calendar.day()) << 'T' << std::setw(2) << time.hours().count()
         << ':' << std::setw(2) << time.minutes().count() << ':' << std::setw(2)
         << time.seconds().count() << 'Z';
    return text.str();
}

std::string listText(const std::vector<ProfileFacts>& profiles)
{
    std::string text;
    for (const auto& profile : profiles)
        text += (profile.isCurrent ? "* " : "  ") + plainLine(profile.name) + "\t"
            + plainLine(profile.server) + "\n";
    return text;
}

std::string listJson(const std::vector<ProfileFacts>& profiles)
{
    Value::Array list;
    for (const auto& profile : profiles)
        list.emplace_back(objectOf(profile));
    return jsonOf(list);
}

std::string profileText(const ProfileFacts& profile, const StoredLogin* login)
{
    auto text = field("Name", plainLine(profile.name)) + field("Server", plainLine(profile.server))
        + field("Added", profile.added ? dateText(*profile.added) : "unknown")
        + field("Current", profile.isCurrent ? "yes" : "no");
    if (login)
        text += whoText(login->username, login->usesApiClient)
            + field(login->usesApiClient ? "Client secret" : "Password", login->secret);
    else if (profile.username)
        text += whoText(*profile.username, profile.usesApiClient.value_or(true));
    return text;
}

std::string profileJson(const ProfileFacts& profile, const StoredLogin* login)
{
    auto object = objectOf(profile);
    object["username"] = login ? Value(login->username) : orNull(profile.username);
    object["credentials"] = kindOf(login ? login->usesApiClient : profile.usesApiClient);
    if (login)
        object["secret"] = login->secret;
    return jsonOf(object);
}

std::string checkText(const CheckFacts& check)
{
    return plainLine(check.name) + ": " + (check.cause.empty() ? "works" : plainLine(check.cause))
        + "\n";
}

std::string checksJson(const std::vector<CheckFacts>& checks)
{
    Value::Array list;
    for (const auto& check : checks)
        list.emplace_back(Value::Dictionary{{"name", check.name}, {"server", check.server},
            {"works", check.cause.empty()},
            {"cause", check.cause.empty() ? Value() : Value(check.cause)},
            {"exitStatus", check.exitStatus}});
    return jsonOf(list);
}

std::string tokenJson(const std::string& server, const std::string& token)
{
    return jsonOf(Value::Dictionary{{"server", server}, {"token", token}});
}

std::string termsText(const AttributedText& terms)
{
    std::string text;
    for (const auto& run : terms) {
        text += run.text;
        if (run.link && *run.link != run.text)
            text += " <" + *run.link + ">";
    }
    return text + "\n";
}

std::string termsJson(const AttributedText& terms, bool areAccepted)
{
    return jsonOf(Value::Dictionary{{"text", termsText(terms)}, {"accepted", areAccepted}});
}

} // namespace zarn
