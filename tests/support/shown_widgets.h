// SPDX-License-Identifier: MIT
#pragma once

#include <QApplication>
#include <QHBoxLayout>
#include <QHelpEvent>
#include <QTest>
#include <QTextDocument>
#include <QToolTip>
#include <QWidget>

#include <gtest/gtest.h>

namespace zarn::linux_backend {

/// A window that shows single widgets.
class WidgetsTest : public testing::Test {
protected:
    void add(QWidget& widget) { m_layout.addWidget(&widget); }
    void show()
    {
        m_window.show();
        m_window.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&m_window));
    }
    /// As a user reads it, or "".
    static QString toolTipOf(QWidget& widget)
    {
        // Hiding one takes the toolkit a moment.
        for (auto* shown : QApplication::topLevelWidgets()) {
            if (shown->inherits("QTipLabel"))
                delete shown;
        }
        const auto middle = widget.rect().center();
        QHelpEvent request(QEvent::ToolTip, middle, widget.mapToGlobal(middle));
        QCoreApplication::sendEvent(&widget, &request);
        QTextDocument shown;
        shown.setHtml(QToolTip::text());
        return shown.toPlainText().remove(QChar(0x200b));
    }

private:
    char m_name[13] = "widgets_test";
    char* m_values[2] = {m_name, nullptr};
    int m_count = 1;
    QApplication m_application{m_count, m_values};
    QWidget m_window;
    QHBoxLayout m_layout{&m_window};
};

} // namespace zarn::linux_backend
