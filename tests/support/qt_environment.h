// SPDX-License-Identifier: MIT
#pragma once

#include <QEventLoop>
#include <QGuiApplication>
#include <QTimer>

#include <gtest/gtest.h>

#include <functional>
#include <memory>

namespace zarn::linux_backend {

/// The toolkit's application object.
class TestGuiApplication {
private:
    char m_name[13] = "desktop_test";
    int m_count = 1;
    char* m_values[2] = {m_name, nullptr};
    QGuiApplication m_application{m_count, m_values};
};

/// The same around all tests of a program.
class QtEnvironment final : public testing::Environment {
public:
    void SetUp() override { m_application = std::make_unique<TestGuiApplication>(); }
    void TearDown() override { m_application.reset(); }

private:
    std::unique_ptr<TestGuiApplication> m_application;
};

/// Handles events until `done` answers true, at most 10 s. Answers what `done` last did.
inline bool runEventsUntil(const std::function<bool()>& done)
{
    QTimer limit;
    limit.setSingleShot(true);
    limit.start(10000);
    QTimer tick;
    tick.start(5);
    while (!done() && limit.isActive())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    return done();
}

} // namespace zarn::linux_backend
