// SPDX-License-Identifier: MIT
#pragma once

#include "tests/contract/alert_contract.h"

class QDialog;

namespace zarn::linux_backend {

/// The user of alerts on the screen.
class QtAlertFixture : public AlertFixture {
public:
    explicit QtAlertFixture(AlertRunner& runner)
        : m_runner(runner)
    {
    }
    AlertRunner& runner() override { return m_runner; }
    void whenOpen(std::function<void()> act) override;
    bool isOpen() const override;
    bool press(std::string_view title) override;
    void pressKey(std::string_view key) override;
    void pressEscape() override;
    void closeWindow() override;
    std::vector<std::string> texts() const override;
    std::vector<std::string> buttons() const override;

private:
    AlertRunner& m_runner;
};

/// The alert in front, or nullptr.
QDialog* openAlert();

} // namespace zarn::linux_backend
