// SPDX-License-Identifier: MIT
#include "platform/linux/ui/kept_focus.h"

#include <QApplication>
#include <QVariant>
#include <QWidget>
#include <QWindow>

#include <utility>

namespace zarn::linux_backend {

namespace {
/// A property of the window: the control that gave up the focus last.
constexpr const char* owner = "focusGivenUpBy";

QWidget* nextByTab(const QWidget& widget)
{
    const auto* window = widget.window();
    for (auto* next = widget.nextInFocusChain(); next != &widget; next = next->nextInFocusChain()) {
        const bool isByTab = (next->focusPolicy() & Qt::TabFocus) == Qt::TabFocus;
        if (next != window && isByTab && next->isEnabled() && next->isVisibleTo(window))
            return next;
    }
    return nullptr;
}
} // namespace

void KeptFocus::park()
{
    auto& window = *m_widget.window();
    if (window.focusWidget() != &m_widget)
        return;
    window.setProperty(owner, QVariant::fromValue(&m_widget));
    window.setFocus(focusMovedByCode);
}

void KeptFocus::handOn()
{
    park();
    if (isOwner())
        QMetaObject::invokeMethod(
            &m_life, [this] { giveToNext(); }, Qt::QueuedConnection);
}

void KeptFocus::giveToNext()
{
    if (!isOwner() || !isParked())
        return;
    // Under an alert. On Wayland the toolkit may take this window for the active one a moment
    // longer, and would take the keyboard from the alert.
    if (QApplication::activeWindow() != m_widget.window()) {
        QObject::connect(
            qApp, &QGuiApplication::focusWindowChanged, &m_widget, [this] { giveToNext(); },
            static_cast<Qt::ConnectionType>(Qt::QueuedConnection | Qt::SingleShotConnection));
        return;
    }
    // A window that gets a focus asks for the keyboard, which on Wayland takes it from the alert.
    if (const auto* modal = QApplication::activeModalWidget();
        modal && modal != m_widget.window()) {
        QObject::connect(
            modal, &QObject::destroyed, &m_life, [this] { giveToNext(); }, Qt::QueuedConnection);
        return;
    }
    auto* next = nextByTab(m_widget);
    m_heir = next;
    if (next)
        next->setFocus(focusMovedByCode);
}

void KeptFocus::restore()
{
    if (!isOwner() || m_widget.isHidden() || !m_widget.isEnabled())
        return;
    const auto* heir = std::exchange(m_heir, nullptr);
    if (isParked() || (heir && heir == m_widget.window()->focusWidget()))
        m_widget.setFocus(focusMovedByCode);
    m_widget.window()->setProperty(owner, {});
}

bool KeptFocus::isOwner() const
{
    return m_widget.window()->property(owner).value<QWidget*>() == &m_widget;
}

bool KeptFocus::isParked() const
{
    return m_widget.window()->focusWidget() == m_widget.window();
}

} // namespace zarn::linux_backend
