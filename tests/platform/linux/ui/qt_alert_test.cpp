// SPDX-License-Identifier: MIT
#include "platform/linux/ui/qt_alert.h"

#include "platform/linux/ui/qt_application.h"
#include "tests/contract/linux/qt_alerts.h"

#include <QApplication>
#include <QClipboard>
#include <QDialog>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QTest>

namespace zarn::linux_backend {
namespace {

TEST(QtAlertTest, BothTextsCanBeSelectedAndCopied)
{
    const auto fixture = makeAlertFixture();
    const Alert alert{"The header", "The message", AlertStyle::Warning, {{"OK", ""}}};
    std::vector<std::string> copied;
    fixture->whenOpen([&] {
        for (auto* label : openAlert()->findChildren<QLabel*>()) {
            if (label->text().isEmpty())
                continue;
            QTest::mouseClick(label, Qt::LeftButton);
            QTest::keyClick(label, Qt::Key_A, Qt::ControlModifier);
            QTest::keyClick(label, Qt::Key_C, Qt::ControlModifier);
            copied.push_back(QApplication::clipboard()->text().toStdString());
        }
        fixture->press("OK");
    });
    fixture->runner().runModal(alert);
    EXPECT_EQ(copied, (std::vector<std::string>{"The header", "The message"}));
}

TEST(QtAlertTest, WhateverItSaysItStaysOnTheScreenWithItsButtons)
{
    constexpr int longest = 32767; // What a field holds.
    std::string emoji;
    std::string lines;
    std::string words;
    for (int i = 0; i < longest / 4; ++i) {
        emoji += "\xF0\x9F\x94\x91";
        lines += "x\n";
        words += "two ";
    }
    const auto fixture = makeAlertFixture();
    for (const auto& text : {std::string(longest, 'x'), std::string(300, 'W'), emoji, lines, words,
             std::string(longest, ' ')}) {
        const auto message = text + " was successfully set";
        const Alert alert{"", message, AlertStyle::Warning, {{"OK", "\r"}, {"Quit", "v"}}};
        bool isPressed = false;
        fixture->whenOpen([&] {
            const auto screen = openAlert()->screen()->availableGeometry();
            EXPECT_TRUE(screen.contains(openAlert()->frameGeometry()))
                << openAlert()->width() << " x " << openAlert()->height();
            EXPECT_EQ(fixture->texts(), std::vector<std::string>{message});
            EXPECT_EQ(fixture->buttons(), (std::vector<std::string>{"OK", "Quit"}));
            isPressed = fixture->press("Quit");
        });
        EXPECT_EQ(fixture->runner().runModal(alert), alertSecondButtonReturn);
        EXPECT_TRUE(isPressed);
    }
}

TEST(QtAlertTest, EachButtonHasALetterOfItsOwn)
{
    struct Case {
        std::vector<std::string> titles;
        std::vector<std::string> letters;
    };
    const auto fixture = makeAlertFixture();
    for (const auto& [titles, letters] : {Case{{"OK", "Quit"}, {"Alt+O", "Alt+Q"}},
             {{"OK", "Cancel"}, {"Alt+O", "Alt+C"}}, {{"View", "Ignore"}, {"Alt+V", "Alt+I"}},
             {{"Save & quit", "Stop"}, {"Alt+A", "Alt+S"}}, {{"&", "&&"}, {"", ""}}}) {
        Alert alert{"", "Well?", AlertStyle::Warning, {}};
        for (const auto& title : titles)
            alert.buttons.push_back({title, ""});
        std::vector<std::string> found;
        fixture->whenOpen([&] {
            EXPECT_EQ(fixture->buttons(), titles);
            for (const auto* button : openAlert()->findChildren<QPushButton*>())
                found.insert(found.begin(), button->shortcut().toString().toStdString());
            fixture->press(titles.front());
        });
        fixture->runner().runModal(alert);
        EXPECT_EQ(found, letters);
    }
}

TEST(QtAlertTest, AnAddressIsCopiedAsItIs)
{
    const auto address = "https://" + std::string(100, 'a') + ".example";
    const auto fixture = makeAlertFixture();
    std::string copied;
    fixture->whenOpen([&] {
        for (auto* label : openAlert()->findChildren<QLabel*>()) {
            if (label->text().isEmpty())
                continue;
            QTest::mouseClick(label, Qt::LeftButton);
            QTest::keyClick(label, Qt::Key_A, Qt::ControlModifier);
            QTest::keyClick(label, Qt::Key_C, Qt::ControlModifier);
            copied = QApplication::clipboard()->text().toStdString();
        }
        fixture->press("OK");
    });
    fixture->runner().runModal({"", address, AlertStyle::Warning, {{"OK", ""}}});
    EXPECT_EQ(copied, address);
}

TEST(QtAlertTest, AProgramThatIsEndingShowsNoAlertAndRespondsAsEscapeWould)
{
    char name[] = "contract_test";
    char* arguments[] = {name, nullptr};
    int count = 1;
    QtApplication application(count, arguments, [](const std::string&) {});
    application.terminate();
    QtAlertRunner alerts(application);
    const Alert question{"", "Remove it?", AlertStyle::Warning, {{"Remove", ""}, {"Cancel", ""}}};
    const Alert notice{"", "Done", AlertStyle::Warning, {{"OK", ""}, {"Quit", ""}}};
    const Alert offer{"", "Newer", AlertStyle::Warning, {{"View", ""}, {"Ignore", ""}}};
    EXPECT_EQ(alerts.runModal(question), 1001);
    EXPECT_EQ(alerts.runModal(offer), 1001);
    EXPECT_EQ(alerts.runModal(notice), 1000);
}

} // namespace
} // namespace zarn::linux_backend
