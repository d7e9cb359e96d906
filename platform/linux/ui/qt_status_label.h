// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QWidget>

/// One line of plain text whose place stays free while it is empty. A text too long for it is
/// elided, with the whole in the tooltip. Assistive technology meets a notification and has each
/// new text announced. Main thread only.
class StatusLabel : public QWidget {
    Q_OBJECT

public:
    explicit StatusLabel(QWidget* parent = nullptr);
    void setText(const QString& text);
    QString text() const { return m_text; }
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    QString m_text;
};
