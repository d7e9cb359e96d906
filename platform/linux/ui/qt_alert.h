// SPDX-License-Identifier: MIT
#pragma once

#include "platform/alert.h"

namespace zarn::linux_backend {

class QtApplication;

/// Application-modal alerts. Main thread only.
class QtAlertRunner final : public AlertRunner {
public:
    /// An alert belongs to the application's window in front. None is shown while the application
    /// is ending; it responds as Esc would.
    explicit QtAlertRunner(const QtApplication& application)
        : m_application(application)
    {
    }
    int runModal(const Alert& alert) override;

private:
    const QtApplication& m_application;
};

} // namespace zarn::linux_backend
