// SPDX-License-Identifier: MIT
#pragma once

#include "platform/memory/memory_application.h"
#include "tests/contract/alert_contract.h"

#include <utility>

namespace zarn {

/// The user of alerts in memory.
class MemoryAlertFixture : public AlertFixture {
public:
    explicit MemoryAlertFixture(memory::MemoryAlertRunner& runner)
        : m_runner(runner)
    {
    }
    AlertRunner& runner() override { return m_runner; }
    void whenOpen(std::function<void()> act) override
    {
        m_runner.whileOpen = [this, act = std::move(act)] {
            const auto once = act;
            m_runner.whileOpen = nullptr;
            once();
        };
    }
    bool isOpen() const override { return m_runner.isOpen(); }
    bool press(std::string_view title) override { return m_runner.press(title); }
    void pressKey(std::string_view key) override { (void)m_runner.pressKey(key); }
    void pressEscape() override { m_runner.leave(); }
    void closeWindow() override { m_runner.leave(); }
    std::vector<std::string> texts() const override
    {
        const auto& alert = m_runner.shown.back();
        if (alert.messageText.empty())
            return {alert.informativeText};
        return {alert.messageText, alert.informativeText};
    }
    std::vector<std::string> buttons() const override
    {
        std::vector<std::string> titles;
        for (const auto& button : m_runner.shown.back().buttons)
            titles.push_back(button.title);
        return titles;
    }

private:
    memory::MemoryAlertRunner& m_runner;
};

} // namespace zarn
