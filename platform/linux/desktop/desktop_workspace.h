// SPDX-License-Identifier: MIT
#pragma once

#include "platform/workspace.h"

namespace zarn::linux_backend {

/// Opens addresses with the desktop's opener and folders with its file manager. Main thread only.
class DesktopWorkspace final : public Workspace {
public:
    /// Only http and https.
    void openUrl(const Url& url) override;
    void openFolder(const std::string& path) override;
};

} // namespace zarn::linux_backend
