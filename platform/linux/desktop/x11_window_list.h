// SPDX-License-Identifier: MIT
#pragma once

#include "platform/window_list.h"

#include <functional>

namespace zarn::linux_backend {

/// The windows on an X11 screen; on other display systems the program's own. Main thread only.
class X11WindowList final : public WindowList {
public:
    /// `ownTitles` answers the titles of the program's own windows on screen.
    explicit X11WindowList(std::function<std::vector<std::string>()> ownTitles)
        : m_ownTitles(std::move(ownTitles))
    {
    }
    std::optional<std::vector<WindowRecord>> onScreen() const override;

private:
    std::function<std::vector<std::string>()> m_ownTitles;
};

} // namespace zarn::linux_backend
