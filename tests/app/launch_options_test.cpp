// SPDX-License-Identifier: MIT
#include "app/launch_options.h"

#include <gtest/gtest.h>

#include <array>

namespace zarn {
namespace {

using Texts = std::vector<std::string>;
using Task = LaunchOptions::Task;

constexpr std::array<KeychainKind, 2> keychains{
    {{"secret-service", "only the service"}, {"file", "only the file"}}};

Result<LaunchOptions> parse(const Texts& arguments)
{
    return parseLaunchOptions(arguments, keychains);
}

std::string refusalOf(const Texts& arguments)
{
    const auto parsed = parse(arguments);
    return parsed ? "accepted" : parsed.error().message;
}

TEST(LaunchOptionsTest, WithoutArgumentsTheProgramRuns)
{
    const auto parsed = parse({});
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
        const auto parsed = parse({option});
        ASSERT_TRUE(parsed) << option;
        EXPECT_EQ(parsed.value().task, task) << option;
    }
}

TEST(LaunchOptionsTest, AServerToDiagnoseIsTakenAsItIsGiven)
{
    for (const std::string server : {"https://a.example:8443", " https://a b", "", "file"}) {
        const auto parsed = parse({"--diagnose", server, "--keychain=file"});
        ASSERT_TRUE(parsed) << server;
        EXPECT_EQ(parsed.value().task, Task::DiagnoseServer) << server;
        EXPECT_EQ(parsed.value().server, server);
        EXPECT_EQ(parsed.value().keychain, "file");
    }
    for (const auto& [option, task] : {std::pair("--keychain=file", Task::Diagnose),
             std::pair("--diagnose", Task::Diagnose), std::pair("-V", Task::Version)}) {
        const auto parsed = parse({"--diagnose", option});
        ASSERT_TRUE(parsed) << option;
        EXPECT_EQ(parsed.value().task, task) << option;
        EXPECT_EQ(parsed.value().server, "");
    }
    EXPECT_EQ(refusalOf({"--diagnose", "https://a", "https://b"}),
        "unknown option 'https://b' (see --help)");
}

TEST(LaunchOptionsTest, TheKeychainCanBeForced)
{
    for (const std::string name : {"secret-service", "file"}) {
        const auto parsed = parse({"--keychain=" + name, "--diagnose"});
        ASSERT_TRUE(parsed) << name;
        EXPECT_EQ(parsed.value().keychain, name);
        EXPECT_EQ(parsed.value().task, Task::Diagnose);
    }
}

TEST(LaunchOptionsTest, KeysAndValuesAreForTheSettings)
{
    const auto parsed
        = parse({"-forceBasicAuth", "1", "--keychain=file", "-AppleInterfaceStyle", "Dark"});
    ASSERT_TRUE(parsed);
    EXPECT_EQ(
        parsed.value().settings, (Texts{"-forceBasicAuth", "1", "-AppleInterfaceStyle", "Dark"}));
    EXPECT_EQ(parsed.value().keychain, "file");
}

TEST(LaunchOptionsTest, AValueMayLookLikeAnOption)
{
    const auto parsed = parse({"-number", "-5", "-text", "--help", "-short", "-V", "-empty", ""});
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
    EXPECT_EQ(message, "unknown option '--a?b?[31m" + std::string(90, 'x') + "' (see --help)");
    EXPECT_EQ(
        refusalOf({"--\x1f \x7e\x7f\xc3\xa9"}), "unknown option '--? ~?\xc3\xa9' (see --help)");
}

TEST(LaunchOptionsTest, AKeychainThatTheBackendDoesNotHaveIsRefused)
{
    EXPECT_EQ(parseLaunchOptions({"--keychain=file"}, {}).error().message,
        "unknown keychain 'file' (see --help)");
}

TEST(LaunchOptionsTest, TheHelpNamesEveryOptionAndTheChoiceOfKeychain)
{
    const auto help = launchHelp(keychains);
    for (const std::string_view text : {"-h, --help", "-V, --version", "--diagnose", "-KEY VALUE",
             "one line on standard error says so", "only if all is well\n  --diagnose URL ",
             "reached and trusted\n  --keychain=secret-service\n                      only the "
             "service\n  --keychain=file     only the file\n  -KEY VALUE"})
        EXPECT_NE(help.find(text), std::string::npos) << text;
    EXPECT_TRUE(help.starts_with("Usage: zarn-actions [OPTION]... [-KEY VALUE]...\n"));
    EXPECT_EQ(help.find("secure"), std::string::npos);
    EXPECT_TRUE(help.ends_with("\nA second start raises the window of the first and ends.\n"));
}

TEST(LaunchOptionsTest, AnExplanationBeginsInItsColumnAndOnTheNextLineWhereTheOptionReachesIt)
{
    const KeychainKind kinds[] = {{"eight888", "short"}, {"nine99999", "long"}};
    EXPECT_NE(launchHelp(kinds).find("\n  --keychain=eight888 short\n  --keychain=nine99999\n"
                                     "                      long\n"),
        std::string::npos);
}

} // namespace
} // namespace zarn
