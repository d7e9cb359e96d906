// SPDX-License-Identifier: MIT
#include "platform/linux/ui/qt_appearance.h"
#include "platform/linux/ui/qt_controls.h"
#include "platform/linux/ui/qt_widgets.h"

#include <QApplication>
#include <QTextCharFormat>
#include <QTextCursor>

namespace zarn::linux_backend {

namespace {

QTextCharFormat formatOf(const TextRun& run, const QPalette& palette)
{
    QTextCharFormat format;
    QFont font = QApplication::font();
    font.setPointSizeF(userPoints(run.font.pointSize));
    font.setItalic(run.font.name.find("Italic") != std::string::npos);
    format.setFont(font);
    format.setForeground(run.color == TextColor::White ? Qt::white : Qt::black);
    if (run.link) {
        format.setAnchor(true);
        format.setAnchorHref(QString::fromStdString(*run.link));
        format.setForeground(palette.link());
        format.setFontUnderline(true);
    }
    return format;
}

} // namespace

QtTextView::QtTextView(NoticeBrowser* browser, std::function<void(const std::string&)> openLink)
    : QtControlOf(browser)
{
    browser->fontChanged = [this] { setAttributedText(AttributedText(m_text)); };
    browser->openLink = [openLink = std::move(openLink)](
                            const QString& address) { openLink(address.toStdString()); };
}

void QtTextView::setAttributedText(const AttributedText& text)
{
    m_text = text;
    widget().clear();
    QTextCursor cursor(widget().document());
    cursor.beginEditBlock();
    for (const auto& run : text)
        cursor.insertText(QString::fromStdString(run.text), formatOf(run, widget().palette()));
    cursor.endEditBlock();
    widget().moveCursor(QTextCursor::Start);
    // What the window is there to say.
    widget().window()->setAccessibleDescription(widget().toPlainText().simplified());
}

} // namespace zarn::linux_backend
