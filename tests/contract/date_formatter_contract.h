// SPDX-License-Identifier: MIT
#pragma once

#include "platform/clock.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace zarn {

/// Lends a date formatter in English.
class DateFormatterFixture {
public:
    virtual ~DateFormatterFixture() = default;
    virtual DateFormatter& formatter() = 0;
    /// The user's time zone becomes UTC plus so many hours, while the formatter is in use.
    virtual void setHoursFromUtc(int hours) = 0;
};

/// Made by the backend that this is linked with.
std::unique_ptr<DateFormatterFixture> makeDateFormatterFixture();

/// What every date formatter has to do.
class DateFormatterContract : public testing::Test {
protected:
    DateFormatterContract() { m_fixture->setHoursFromUtc(0); }

    std::string text(double seconds, const std::string& pattern) const
    {
        return m_fixture->formatter().string(Date{seconds}, pattern);
    }
    void setHoursFromUtc(int hours) { m_fixture->setHoursFromUtc(hours); }

    static constexpr auto file = "yyyyMMdd_HHmmss";
    static constexpr auto entry = "E MMM dd HH:mm:ss";
    /// 2025-03-01 10:15:00 UTC.
    static constexpr double saturday = 1740824100;

private:
    const std::unique_ptr<DateFormatterFixture> m_fixture = makeDateFormatterFixture();
};

} // namespace zarn
