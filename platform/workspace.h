// SPDX-License-Identifier: MIT
#pragma once

#include "base/url.h"

#include <string>

namespace zarn {

/// Opens things in the user's other programs. Main thread only. Failures are not reported.
class Workspace {
public:
    virtual ~Workspace() = default;
    /// Opens a web address in the user's browser.
    virtual void openUrl(const Url& url) = 0;
    /// Shows a folder in the file browser.
    virtual void openFolder(const std::string& path) = 0;
};

} // namespace zarn
