// SPDX-License-Identifier: MIT
#pragma once

#include "platform/alert.h"

#include <functional>

namespace zarn::linux_backend {

/// Application-modal alerts. Main thread only.
class QtAlertRunner final : public AlertRunner {
public:
    /// `isEnding`: the program is ending; no alert is shown then, it answers as Esc would.
    explicit QtAlertRunner(std::function<bool()> isEnding)
        : m_isEnding(std::move(isEnding))
    {
    }
    int runModal(const Alert& alert) override;

private:
    std::function<bool()> m_isEnding;
};

} // namespace zarn::linux_backend
