// SPDX-License-Identifier: MIT
#pragma once

#include <QColor>
#include <QComboBox>
#include <QLineEdit>
#include <QTextBrowser>
#include <QWidget>

#include <functional>
#include <optional>

/// Widgets of our own that the forms name. Main thread only.

/// Shows a text that is cut off in a widget as the tool tip that the user asks for. It is no
/// property of the widget, which assistive technology would read out after the text itself.
void showWholeText(QWidget& widget, const QHelpEvent& request, const QString& text);

/// A view that may paint a translucent layer over the window's background.
class LayerView : public QWidget {
    Q_OBJECT

public:
    using QWidget::QWidget;
    void setLayerColor(const QColor& color);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    std::optional<QColor> m_layerColor;
};

/// A password field. Input methods, which are other programs, learn nothing of its text.
class SecretField : public QLineEdit {
    Q_OBJECT

public:
    using QLineEdit::QLineEdit;
    QVariant inputMethodQuery(Qt::InputMethodQuery query) const override;
};

/// A pop-up button: keys open its menu instead of changing the choice, the wheel does nothing, and
/// a title that is too long is elided, with the whole one as tool tip.
class ServerPopUp : public QComboBox {
    Q_OBJECT

public:
    explicit ServerPopUp(QWidget* parent = nullptr);
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void initStyleOption(QStyleOptionComboBox* option) const override;
};

/// A text for reading whose links are opened by `openLink`. Tab moves from link to link and on.
class NoticeBrowser : public QTextBrowser {
    Q_OBJECT

public:
    explicit NoticeBrowser(QWidget* parent = nullptr);
    std::function<void(const QString&)> openLink;
    /// The user has chosen another font: the text's own is out of date.
    std::function<void()> fontChanged;

protected:
    void changeEvent(QEvent* event) override;
    bool focusNextPrevChild(bool next) override;
};
