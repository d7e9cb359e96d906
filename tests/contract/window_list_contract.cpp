// SPDX-License-Identifier: MIT
#include "tests/contract/window_list_contract.h"

namespace zarn {

using Texts = std::vector<std::string>;

std::vector<std::string> WindowListContract::listed()
{
    const auto records = fixture->windowList().onScreen();
    if (!records)
        return {"no list"};
    Texts result;
    for (const auto& record : *records)
        result.push_back(record.ownerName.value_or("-") + "/" + record.windowName.value_or("-"));
    return result;
}

TEST_F(WindowListContract, AScreenWithoutWindowsHasAnEmptyListAndNotNone)
{
    EXPECT_EQ(listed(), Texts{});
}

TEST_F(WindowListContract, AWindowIsListedWithItsOwnerAndItsName)
{
    fixture->open("Zarn Print Desk", "About");
    EXPECT_EQ(listed(), Texts{"Zarn Print Desk/About"});
}

TEST_F(WindowListContract, TheFrontWindowComesFirst)
{
    fixture->open("Editor", "First");
    fixture->open("Terminal", "Second");
    fixture->open("Editor", "Third");
    EXPECT_EQ(listed(), (Texts{"Editor/Third", "Terminal/Second", "Editor/First"}));
}

TEST_F(WindowListContract, AClosedWindowIsNotListedAnyMore)
{
    fixture->open("Editor", "Stays");
    fixture->open("Editor", "Goes");
    fixture->close("Goes");
    EXPECT_EQ(listed(), Texts{"Editor/Stays"});
}

TEST_F(WindowListContract, NamesBeyondAsciiAreUtf8)
{
    fixture->open("Sch\xc3\xb6n", "\xe6\x97\xa5\xe6\x9c\xac");
    EXPECT_EQ(listed(), Texts{"Sch\xc3\xb6n/\xe6\x97\xa5\xe6\x9c\xac"});
}

} // namespace zarn
