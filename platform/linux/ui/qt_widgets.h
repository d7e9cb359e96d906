// SPDX-License-Identifier: MIT
#pragma once

#include <QColor>
#include <QComboBox>
#include <QTextBrowser>
#include <QWidget>

#include <functional>
#include <optional>

/// Widgets of our own that the forms name. Main thread only.

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

/// A pop-up button: keys open its menu instead of changing the choice, the wheel does nothing, and
/// a title that is too long is elided.
class ServerPopUp : public QComboBox {
    Q_OBJECT

public:
    explicit ServerPopUp(QWidget* parent = nullptr);
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
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
};
