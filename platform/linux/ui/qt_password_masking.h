// SPDX-License-Identifier: MIT
#pragma once

#include <QApplication>
#include <QElapsedTimer>
#include <QKeyEvent>

#include <map>
#include <memory>
#include <set>

/// The toolkit's application, which keeps the text of password fields from assistive technology.
/// The toolkit itself sends it the letters of each change of a field, and each key press. Here both
/// become asterisks where the field hides its text. The keys that command a screen reader, Insert
/// or Caps Lock with another key, are passed on as they are. Main thread only.
class PasswordMaskingApplication final : public QApplication {
    Q_OBJECT

public:
    PasswordMaskingApplication(int& argc, char** argv);
    ~PasswordMaskingApplication() override;
    PasswordMaskingApplication(const PasswordMaskingApplication&) = delete;
    PasswordMaskingApplication& operator=(const PasswordMaskingApplication&) = delete;

    bool notify(QObject* receiver, QEvent* event) override;

private:
    bool mustHide(const QKeyEvent& key);
    bool isTypedIntoSecretField(const QKeyEvent& key) const;
    bool sendHidden(QObject* window, QKeyEvent& key);
    bool sendAsTyped(QObject* widget, QKeyEvent& hidden);

    /// The keys that are on their way under a number, as they were typed.
    std::map<quint32, std::unique_ptr<QKeyEvent>> m_hidden;
    quint32 m_lastNumber;
    /// The keys that are held down, by scan code.
    std::set<quint32> m_heldHidden;
    std::set<quint32> m_heldCommands;
    /// Since a Tab that has not moved the focus yet.
    QElapsedTimer m_sinceTab;
};
