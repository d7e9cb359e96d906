// SPDX-License-Identifier: MIT
#include "platform/linux/ui/qt_status_label.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QHelpEvent>
#include <QPainter>
#include <QToolTip>

namespace {

QAccessibleInterface* accessibleStatus(const QString&, QObject* object)
{
    auto* label = qobject_cast<StatusLabel*>(object);
    return label ? new QAccessibleWidget(label, QAccessible::Notification) : nullptr;
}

} // namespace

StatusLabel::StatusLabel(QWidget* parent)
    : QWidget(parent)
{
    QAccessible::installFactory(accessibleStatus);
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
}

void StatusLabel::setText(const QString& text)
{
    m_text = text;
    update();
    // This alone is not spoken: screen readers speak the new name of what has the focus only.
    setAccessibleName(text);
    if (text.isEmpty())
        return;
    // A notification that shows is. The toolkit's own event for it, "Alert", reaches no bus.
    QAccessibleEvent shown(this, QAccessible::ObjectShow);
    QAccessible::updateAccessibility(&shown);
}

QSize StatusLabel::sizeHint() const
{
    return {0, fontMetrics().height()};
}

bool StatusLabel::event(QEvent* event)
{
    if (event->type() != QEvent::ToolTip)
        return QWidget::event(event);
    const bool isElided = fontMetrics().horizontalAdvance(m_text) > width();
    // A paragraph, so that a long text is wrapped, and nothing in it is taken for markup.
    QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(),
        isElided ? "<p>" + m_text.toHtmlEscaped() + "</p>" : QString(), this);
    return true;
}

void StatusLabel::paintEvent(QPaintEvent*)
{
    QPainter(this).drawText(rect(), Qt::AlignVCenter | Qt::TextSingleLine,
        fontMetrics().elidedText(m_text, Qt::ElideRight, width()));
}
