// SPDX-License-Identifier: MIT
#include "tests/contract/workspace_contract.h"

namespace zarn {

using Texts = std::vector<std::string>;

TEST_F(WorkspaceContract, AWebAddressIsOpenedAsItIs)
{
    openUrl("https://zarn-actions.example/releases?page=1&all=%20yes#latest");
    EXPECT_EQ(fixture->opened(1),
        Texts{"url https://zarn-actions.example/releases?page=1&all=%20yes#latest"});
}

TEST_F(WorkspaceContract, AFolderIsShownUnderItsPath)
{
    fixture->workspace().openFolder("/home/a user/Library/Logs");
    EXPECT_EQ(fixture->opened(1), Texts{"folder /home/a user/Library/Logs"});
}

TEST_F(WorkspaceContract, APathBeyondAsciiAndWithPercentSignsIsKept)
{
    fixture->workspace().openFolder("/home/J\xc3\xb6rg/100%25/#1?");
    EXPECT_EQ(fixture->opened(1), Texts{"folder /home/J\xc3\xb6rg/100%25/#1?"});
}

} // namespace zarn
