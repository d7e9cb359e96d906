// SPDX-License-Identifier: MIT
#include "tests/contract/linux/qt_alerts.h"

#include "tests/support/qt_environment.h"

#include <QAccessible>
#include <QApplication>
#include <QDialog>
#include <QLabel>
#include <QPushButton>
#include <QTest>
#include <QWindow>

#include <algorithm>

namespace zarn::linux_backend {

namespace {

constexpr const char* wasSeen = "wasSeen";

template <typename Widget> std::vector<Widget*> shownWidgets()
{
    std::vector<Widget*> result;
    if (const auto* alert = openAlert()) {
        for (auto* widget : alert->findChildren<Widget*>()) {
            if (widget->isVisible())
                result.push_back(widget);
        }
    }
    return result;
}

std::string accessibleName(QWidget& widget)
{
    return QAccessible::queryAccessibleInterface(&widget)->text(QAccessible::Name).toStdString();
}

/// Waits for the next alert that has the keyboard, does `act` and sees to it that the alert ends.
class OpenAlertWatch final : public QObject {
public:
    explicit OpenAlertWatch(std::function<void()> act)
        : QObject(qApp)
        , m_act(std::move(act))
    {
        startTimer(5);
    }

protected:
    void timerEvent(QTimerEvent* event) override
    {
        auto* alert = openAlert();
        if (!alert || alert->property(wasSeen).isValid())
            return;
        if (!alert->isActiveWindow()) {
            // On a busy machine the display may take the focus for one that is not there yet.
            alert->activateWindow();
            return;
        }
        killTimer(event->timerId());
        alert->setProperty(wasSeen, true);
        QTimer::singleShot(10000, alert, [alert] {
            ADD_FAILURE() << "nothing ended the alert";
            alert->done(-1);
        });
        m_act();
        deleteLater();
    }

private:
    std::function<void()> m_act;
};

} // namespace

QDialog* openAlert()
{
    return qobject_cast<QDialog*>(QApplication::activeModalWidget());
}

void QtAlertFixture::whenOpen(std::function<void()> act)
{
    new OpenAlertWatch(std::move(act));
}

bool QtAlertFixture::isOpen() const
{
    const auto* alert = openAlert();
    return alert && alert->isVisible();
}

bool QtAlertFixture::press(std::string_view title)
{
    for (auto* button : shownWidgets<QPushButton>()) {
        if (accessibleName(*button) != title)
            continue;
        QTest::mouseClick(button, Qt::LeftButton);
        return true;
    }
    return false;
}

void QtAlertFixture::pressKey(std::string_view key)
{
    auto* window = openAlert()->windowHandle();
    if (key == "\r")
        QTest::keyClick(window, Qt::Key_Return);
    else
        QTest::keyClick(window, key.front());
}

void QtAlertFixture::pressEscape()
{
    QTest::keyClick(openAlert()->windowHandle(), Qt::Key_Escape);
}

void QtAlertFixture::closeWindow()
{
    openAlert()->windowHandle()->close();
}

std::vector<std::string> QtAlertFixture::texts() const
{
    auto labels = shownWidgets<QLabel>();
    std::erase_if(labels, [](const QLabel* label) { return label->text().isEmpty(); });
    std::sort(labels.begin(), labels.end(), [](const QLabel* one, const QLabel* other) {
        return one->geometry().top() < other->geometry().top();
    });
    std::vector<std::string> result;
    for (auto* label : labels)
        result.push_back(accessibleName(*label));
    return result;
}

// The first button stands outermost.
std::vector<std::string> QtAlertFixture::buttons() const
{
    auto found = shownWidgets<QPushButton>();
    std::sort(found.begin(), found.end(), [](const QPushButton* one, const QPushButton* other) {
        return one->geometry().left() > other->geometry().left();
    });
    std::vector<std::string> titles;
    for (auto* button : found)
        titles.push_back(accessibleName(*button));
    return titles;
}

} // namespace zarn::linux_backend
