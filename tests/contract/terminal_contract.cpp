// SPDX-License-Identifier: MIT
#include "tests/contract/terminal_contract.h"

namespace zarn {
namespace {

TEST_F(TerminalContract, StreamsThatAreNoTerminalAreKnown)
{
    auto& terminal = fixture->terminal("");
    EXPECT_FALSE(terminal.isInputTerminal());
    EXPECT_FALSE(terminal.isOutputTerminal());
    EXPECT_FALSE(terminal.isErrorTerminal());
}

TEST_F(TerminalContract, InputIsReadLineByLineWithoutAPrompt)
{
    auto& terminal = fixture->terminal("s3cret \" \\ \xc3\xbc\t\n\nlast");
    EXPECT_EQ(terminal.readLine("Secret: ", Echo::Off), "s3cret \" \\ \xc3\xbc\t");
    EXPECT_EQ(terminal.readLine("Again: ", Echo::On), "");
    EXPECT_EQ(terminal.readLine("", Echo::On), "last");
    EXPECT_EQ(terminal.readLine("", Echo::On), std::nullopt);
    EXPECT_EQ(fixture->output(), "");
    EXPECT_EQ(fixture->errors(), "");
}

TEST_F(TerminalContract, AllOfStandardInputIsRead)
{
    const std::string text = "{\n\"a\": 1}\n" + std::string(200000, ' ');
    EXPECT_EQ(fixture->terminal(text).readAll("-").value(), text);
}

TEST_F(TerminalContract, AFileThatIsNotThereIsAnErrorWithItsName)
{
    const auto read = fixture->terminal("").readAll("/nowhere/at all");
    ASSERT_FALSE(read);
    EXPECT_NE(read.error().message.find("/nowhere/at all"), std::string::npos);
}

TEST_F(TerminalContract, WhatIsWrittenIsThereAtOnce)
{
    auto& terminal = fixture->terminal("");
    EXPECT_TRUE(terminal.write("no line break"));
    EXPECT_TRUE(terminal.write(" \xc3\xbc\n"));
    terminal.writeErrorLine("one");
    terminal.writeErrorLine("two");
    EXPECT_EQ(fixture->output(), "no line break \xc3\xbc\n");
    EXPECT_EQ(fixture->errors(), "one\ntwo\n");
}

} // namespace
} // namespace zarn
