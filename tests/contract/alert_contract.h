// SPDX-License-Identifier: MIT
#pragma once

#include "platform/alert.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace zarn {

/// Lends an alert runner, and does and sees what a user does and sees of the alert that is open.
class AlertFixture {
public:
    virtual ~AlertFixture() = default;
    virtual AlertRunner& runner() = 0;
    /// `act` is done once, when the next alert is on screen.
    virtual void whenOpen(std::function<void()> act) = 0;
    virtual bool isOpen() const = 0;

    /// False when there is no such button.
    virtual bool press(std::string_view title) = 0;
    /// "\r" is Return.
    virtual void pressKey(std::string_view key) = 0;
    virtual void pressEscape() = 0;
    virtual void closeWindow() = 0;

    /// What stands in the alert, from top to bottom.
    virtual std::vector<std::string> texts() const = 0;
    /// The titles, the one of the first response first.
    virtual std::vector<std::string> buttons() const = 0;
};

/// Made by the backend that this is linked with.
std::unique_ptr<AlertFixture> makeAlertFixture();

/// What every runner of alerts has to do.
class AlertContract : public testing::Test {
protected:
    /// Runs the alert, does `act` while it is open, and returns the response.
    int runAnd(const Alert& alert, const std::function<void()>& act);

    std::unique_ptr<AlertFixture> fixture = makeAlertFixture();
};

} // namespace zarn
