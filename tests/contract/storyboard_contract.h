// SPDX-License-Identifier: MIT
#pragma once

#include "tests/contract/screen_contract.h"

namespace zarn {

/// What every storyboard, its windows and its views have to do.
class StoryboardContract : public ScreenContract {
protected:
    std::unique_ptr<WindowController> instantiateAbout()
    {
        return storyboard().instantiateController("aboutWC");
    }
    void showAbout();
    /// Presents the terms over the initial window and forgets what was recorded meanwhile.
    void showTerms();
};

} // namespace zarn
