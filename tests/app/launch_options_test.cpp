// SPDX-License-Identifier: MIT
#include "app/launch_options.h"

#include <gtest/gtest.h>

namespace zarn {
namespace {

using Texts = std::vector<std::string>;
using Task = LaunchOptions::Task;

std::string refusalOf(const Texts& arguments)
{
    const auto parsed = parseLaunchOptions(arguments);
    return parsed ? "accepted" : parsed.error().message;
}

TEST(LaunchOptionsTest, WithoutArgumentsTheProgramRuns)
{
    const auto parsed = parseLaunchOptions({});
    ASSERT_TRUE(parsed);
    EXPECT_EQ(parsed.value().task, Task::Run);
    EXPECT_EQ(parsed.value().keychain, "");
    EXPECT_EQ(parsed.value().settings, Texts{});
}

TEST(LaunchOptionsTest, EachOptionNamesItsTask)
{
    const std::pair<const char*, Task> table[] = {{"--help", Task::Help}, {"-h", Task::Help},
        {"--version", Task::Version}, {"-V", Task::Version}, {"--diagnose", Task::Diagnose}};
    for (const auto& [option, task] : table) {
        const auto parsed = parseLaunchOptions({option});
        ASSERT_TRUE(parsed) << option;
        EXPECT_EQ(parsed.value().task, task) << option;
    }
}

TEST(LaunchOptionsTest, TheKeychainCanBeForced)
{
    for (const std::string name : {"secret-service", "file"}) {
        const auto parsed = parseLaunchOptions({"--keychain=" + name, "--diagnose"});
        ASSERT_TRUE(parsed) << name;
        EXPECT_EQ(parsed.value().keychain, name);
        EXPECT_EQ(parsed.value().task, Task::Diagnose);
    }
}

TEST(LaunchOptionsTest, KeysAndValuesAreForTheSettings)
{
    const auto parsed = parseLaunchOptions(
        {"-forceBasicAuth", "1", "--keychain=file", "-AppleInterfaceStyle", "Dark"});
    ASSERT_TRUE(parsed);
    EXPECT_EQ(
        parsed.value().settings, (Texts{"-forceBasicAuth", "1", "-AppleInterfaceStyle", "Dark"}));
    EXPECT_EQ(parsed.value().keychain, "file");
}

TEST(LaunchOptionsTest, AValueMayLookLikeAnOption)
{
    const auto parsed
        = parseLaunchOptions({"-number", "-5", "-text", "--help", "-short", "-V", "-empty", ""});
    ASSERT_TRUE(parsed);
    EXPECT_EQ(parsed.value().task, Task::Run);
    EXPECT_EQ(parsed.value().settings,
        (Texts{"-number", "-5", "-text", "--help", "-short", "-V", "-empty", ""}));
}

TEST(LaunchOptionsTest, WhatIsUnknownIsRefusedByName)
{
    const std::pair<Texts, const char*> table[] = {
        {{"--foo"}, "unknown option '--foo' (see --help)"},
        {{"--help", "--foo"}, "unknown option '--foo' (see --help)"},
        {{"file.txt"}, "unknown option 'file.txt' (see --help)"},
        {{"--a b~\x7f"}, "unknown option '--a b~?' (see --help)"},
        {{""}, "unknown option '' (see --help)"},
        {{"-"}, "unknown option '-' (see --help)"},
        {{"--"}, "unknown option '--' (see --help)"},
        {{"--help=yes"}, "unknown option '--help=yes' (see --help)"},
        {{"--keychain"}, "unknown option '--keychain' (see --help)"},
        {{"--keychain="}, "unknown keychain '' (see --help)"},
        {{"--keychain=File"}, "unknown keychain 'File' (see --help)"},
        {{"-key"}, "no value after '-key' (see --help)"},
        {{"-a", "1", "-b"}, "no value after '-b' (see --help)"},
    };
    for (const auto& [arguments, message] : table)
        EXPECT_EQ(refusalOf(arguments), message);
}

TEST(LaunchOptionsTest, ARefusalIsOneShortLine)
{
    const auto message = refusalOf({"--a\nb\x1b[31m" + std::string(100000, 'x')});
    EXPECT_EQ(message.find_first_of("\n\x1b"), std::string::npos);
    EXPECT_LT(message.size(), 200U);
    EXPECT_EQ(message.substr(0, 26), "unknown option '--a?b?[31m");
}

TEST(LaunchOptionsTest, TheHelpNamesEveryOptionAndTheChoiceOfKeychain)
{
    for (const std::string_view text : {"-h, --help", "-V, --version", "--diagnose",
             "--keychain=secret-service", "--keychain=file", "-KEY VALUE",
             "one line on standard error says so", "protected by file permissions"})
        EXPECT_NE(launchHelp.find(text), std::string_view::npos) << text;
    EXPECT_TRUE(launchHelp.starts_with("Usage: zarn-actions [OPTION]... [-KEY VALUE]...\n"));
    EXPECT_EQ(launchHelp.find("secure"), std::string_view::npos);
    EXPECT_EQ(launchHelp.back(), '\n');
}

} // namespace
} // namespace zarn
