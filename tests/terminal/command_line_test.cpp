// SPDX-License-Identifier: MIT
#include "terminal/command_line.h"

#include <gtest/gtest.h>

#include <array>

namespace zarn {
namespace {

using Texts = std::vector<std::string>;

constexpr std::array<KeychainKind, 2> keychains{
    {{"secret-service", "the keyring service"}, {"file", "a file"}}};

CommandLine parsed(const Texts& words)
{
    return parseCommandLine(words, keychains, "1.2 (3)");
}

std::string refusal(const Texts& words)
{
    const auto line = parsed(words);
    EXPECT_FALSE(line.command);
    EXPECT_EQ(line.exitCode, ExitCode::Usage);
    return line.text;
}

TEST(CommandLine, HasACommandWithItsOptionsInAnyOrder)
{
    for (const auto& words : {Texts{"add", "Demo", "--url", "https://h", "--user", "u",
                                  "--if-missing", "--keychain=file"},
             Texts{"--keychain", "file", "add", "--if-missing", "--user=u", "--url=https://h",
                 "Demo"}}) {
        const auto line = parsed(words);
        ASSERT_TRUE(line.command) << line.text;
        const auto& command = *line.command;
        EXPECT_EQ(command.verb, Command::Verb::Add);
        EXPECT_EQ(command.name, "Demo");
        EXPECT_EQ(command.url, "https://h");
        EXPECT_EQ(command.user, "u");
        EXPECT_EQ(command.clientId, "");
        EXPECT_TRUE(command.ifMissing);
        EXPECT_EQ(command.keychain, "file");
    }
}

TEST(CommandLine, TakesNamesAsTheyAre)
{
    for (const auto* name : {"two words", "ü", "\"q\" \\", "a=b", "[1,2]", "'x'", "%s"}) {
        const auto line = parsed({"use", name});
        ASSERT_TRUE(line.command) << line.text;
        EXPECT_EQ(line.command->name, name);
    }
    const auto line = parsed({"use", "--", "-x"});
    ASSERT_TRUE(line.command) << line.text;
    EXPECT_EQ(line.command->name, "-x");
}

TEST(CommandLine, KnowsEveryCommand)
{
    using Verb = Command::Verb;
    const std::array<std::pair<Texts, Verb>, 10> all{{
        {{"add", "n", "--url", "u", "--client-id", "c"}, Verb::Add},
        {{"set", "n"}, Verb::Set},
        {{"list"}, Verb::List},
        {{"use", "n"}, Verb::Use},
        {{"remove", "n"}, Verb::Remove},
        {{"check"}, Verb::Check},
        {{"show"}, Verb::Show},
        {{"token"}, Verb::Token},
        {{"api", "GET", "p"}, Verb::Api},
        {{"terms"}, Verb::Terms},
    }};
    for (const auto& [words, verb] : all) {
        const auto line = parsed(words);
        ASSERT_TRUE(line.command) << words[0] << ": " << line.text;
        EXPECT_EQ(line.command->verb, verb) << words[0];
    }
}

TEST(CommandLine, RefusesWhatItDoesNotKnowInOneLine)
{
    const std::array<std::pair<Texts, const char*>, 14> all{{
        {{}, "no command (see zarn-profile --help)"},
        {{"bogus"}, "unexpected argument bogus (see zarn-profile --help)"},
        {{"list", "x"}, "unexpected argument x (see zarn-profile --help)"},
        {{"list", "--jso"}, "unknown option --jso (see zarn-profile --help)"},
        {{"--keychain=cloud", "list"},
            "--keychain: unknown keychain cloud (see zarn-profile --help)"},
        {{"use"}, "NAME is required (see zarn-profile --help)"},
        {{"use", ""}, "NAME is empty (see zarn-profile --help)"},
        {{"add", "n", "--user", "u"}, "--url is required (see zarn-profile --help)"},
        {{"add", "n", "--url", "u"}, "--user or --client-id is required (see zarn-profile --help)"},
        {{"add", "n", "--url", "u", "--user", "a", "--client-id", "b"},
            "--user and --client-id exclude each other (see zarn-profile --help)"},
        {{"check", "--all", "n"}, "--all and NAME exclude each other (see zarn-profile --help)"},
        {{"show", "--force"}, "--force goes with --reveal (see zarn-profile --help)"},
        {{"api", "DELETE", "x"}, "METHOD is GET, POST or PUT (see zarn-profile --help)"},
        {{"list", "a\nb"}, "unexpected argument a\uFFFDb (see zarn-profile --help)"},
    }};
    for (const auto& [words, text] : all)
        EXPECT_EQ(refusal(words), text);
}

TEST(CommandLine, NoOptionTakesASecretAndNoneIsRepeated)
{
    for (const std::string option : {"--secret", "--password", "--client-secret"}) {
        const auto expected = "unknown option " + option + " (see zarn-profile --help)";
        const Texts words{"add", "n", "--url", "u", "--user", "a"};
        for (const auto& rest : {Texts{option, "s3cret"}, Texts{option + "=s3cret"}}) {
            auto all = words;
            all.insert(all.end(), rest.begin(), rest.end());
            EXPECT_EQ(refusal(all), expected);
        }
    }
}

TEST(CommandLine, PrintsTheVersion)
{
    for (const auto& words : {Texts{"-V"}, Texts{"--version"}, Texts{"list", "-V"}}) {
        const auto line = parsed(words);
        EXPECT_FALSE(line.command);
        EXPECT_EQ(line.exitCode, ExitCode::Done);
        EXPECT_EQ(line.text, "zarn-profile 1.2 (3)\n");
    }
}

TEST(CommandLine, PrintsHelpForTheProgramAndForEachCommand)
{
    const auto help = parsed({"--help"}).text;
    for (const auto* name :
        {"add", "set", "list", "use", "remove", "check", "show", "token", "api", "terms"}) {
        EXPECT_NE(help.find("\n  " + std::string(name) + " "), std::string::npos) << name;
        for (const auto* option : {"-h", "--help"}) {
            const auto line = parsed({name, option});
            EXPECT_FALSE(line.command);
            EXPECT_EQ(line.exitCode, ExitCode::Done);
            EXPECT_NE(line.text.find("Usage: zarn-profile " + std::string(name)), std::string::npos)
                << line.text;
        }
    }
    EXPECT_NE(help.find("--keychain KIND"), std::string::npos);
    EXPECT_NE(help.find("secret-service or file"), std::string::npos);
}

} // namespace
} // namespace zarn
