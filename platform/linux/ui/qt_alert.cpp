// SPDX-License-Identifier: MIT
#include "platform/linux/ui/qt_alert.h"

#include "platform/linux/ui/qt_appearance.h"
#include "platform/linux/ui/qt_application.h"

#include <QApplication>
#include <QDialog>
#include <QHBoxLayout>
#include <QIcon>
#include <QKeyEvent>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QShortcut>
#include <QStyle>
#include <QVBoxLayout>

#include <algorithm>

namespace zarn::linux_backend {

namespace {

int responseOf(std::size_t button)
{
    return alertFirstButtonReturn + static_cast<int>(button);
}

int responseWithoutPress(const Alert& alert)
{
    for (std::size_t i = 0; i < alert.buttons.size(); ++i) {
        const auto& title = alert.buttons[i].title;
        if (title == "Cancel" || title == "Ignore")
            return responseOf(i);
    }
    return alertFirstButtonReturn;
}

// Lines break at blanks only, and a name without one would make the alert wider than the screen.
// What is copied has these invisible breaks too, so only a word that is too wide gets any.
QString withBreaks(const QString& text, const QFontMetrics& metrics, int widest)
{
    QString result;
    int width = 0;
    for (qsizetype at = 0; at < text.size();) {
        const bool isPair = text[at].isHighSurrogate() && at + 1 < text.size();
        const auto letter = text.mid(at, isPair ? 2 : 1);
        at += letter.size();
        const int advance = metrics.horizontalAdvance(letter);
        width = letter[0].isSpace() ? 0 : width + advance;
        if (width > widest) {
            result += QChar(0x200B);
            width = advance;
        }
        result += letter;
    }
    return result;
}

QLabel* makeText(const std::string& text, QWidget* parent)
{
    auto* label = new QLabel(parent);
    const auto whole = QString::fromStdString(text);
    label->setTextFormat(Qt::PlainText);
    // The icon, the margins and a scroll bar stand beside it.
    const int widest = std::max(280, parent->screen()->availableSize().width() - 220);
    label->setText(withBreaks(whole, label->fontMetrics(), widest));
    label->setAccessibleName(whole);
    label->setWordWrap(true);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    label->setFocusPolicy(Qt::ClickFocus);
    label->setMinimumWidth(280);
    return label;
}

/// The text itself, or, where it would not leave room for the buttons, a window on it.
QWidget* fitted(QLabel* text, QWidget* parent)
{
    const int most = parent->screen()->availableSize().height() / 2;
    const auto size = text->sizeHint();
    if (size.height() <= most)
        return text;
    auto* area = new QScrollArea(parent);
    area->setFrameShape(QFrame::NoFrame);
    area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    area->setWidgetResizable(true);
    area->setWidget(text);
    const int width = std::max(size.width(), text->minimumSizeHint().width());
    area->setFixedSize(width + area->verticalScrollBar()->sizeHint().width(), most);
    return area;
}

QLabel* makeIcon(QWidget* parent)
{
    const int size = userPixels(56);
    auto* label = new QLabel(parent);
    label->setPixmap(
        QIcon(":/icons/AppIcon.png").pixmap(QSize(size, size), parent->devicePixelRatioF()));
    label->setFixedSize(size, size);
    return label;
}

// Return presses the first button unless another claims it.
std::size_t returnButton(const Alert& alert)
{
    for (std::size_t i = 0; i < alert.buttons.size(); ++i) {
        if (alert.buttons[i].keyEquivalent == "\r")
            return i;
    }
    return 0;
}

// The key that presses it with Alt is the first letter that no button before it has.
QString withMnemonic(const std::string& title, QString& taken)
{
    const auto text = QString::fromStdString(title);
    for (qsizetype at = 0; at < text.size(); ++at) {
        const auto letter = text[at].toUpper();
        if (!letter.isLetter() || taken.contains(letter))
            continue;
        taken += letter;
        return text.left(at).replace('&', "&&") + '&' + text.mid(at).replace('&', "&&");
    }
    return QString(text).replace('&', "&&");
}

void addButtons(const Alert& alert, QDialog& dialog, QHBoxLayout& row)
{
    row.addStretch();
    QString taken;
    // The first button stands outermost, where the eye ends.
    for (std::size_t i = alert.buttons.size(); i-- > 0;) {
        const auto& description = alert.buttons[i];
        auto* button = new QPushButton(withMnemonic(description.title, taken), &dialog);
        // Return presses its button wherever the focus is; Space presses the focused one.
        button->setAutoDefault(false);
        button->setDefault(i == returnButton(alert));
        QObject::connect(
            button, &QPushButton::clicked, &dialog, [&dialog, i] { dialog.done(responseOf(i)); });
        row.addWidget(button);
        if (description.keyEquivalent.size() == 1 && description.keyEquivalent != "\r") {
            auto* key = new QShortcut(
                QKeySequence(QString::fromStdString(description.keyEquivalent).toUpper()), &dialog);
            QObject::connect(key, &QShortcut::activated, button, [button] { button->click(); });
        }
        if (i == 0)
            button->setFocus();
    }
}

QDialog* makeDialog(const Alert& alert, QWidget* owner)
{
    auto* dialog = new QDialog(owner);
    dialog->setWindowTitle("Zarn Actions");
    dialog->setWindowModality(Qt::ApplicationModal);
    auto* columns = new QHBoxLayout(dialog);
    columns->setContentsMargins(20, 18, 20, 16);
    columns->setSpacing(16);
    columns->addWidget(makeIcon(dialog), 0, Qt::AlignTop);
    auto* column = new QVBoxLayout;
    column->setSpacing(8);
    columns->addLayout(column, 1);
    if (!alert.messageText.empty()) {
        auto* header = makeText(alert.messageText, dialog);
        auto font = header->font();
        font.setBold(true);
        header->setFont(font);
        column->addWidget(header);
    }
    column->addWidget(fitted(makeText(alert.informativeText, dialog), dialog));
    column->addStretch();
    dialog->setAccessibleName(QString::fromStdString(
        alert.messageText.empty() ? alert.informativeText : alert.messageText));
    if (!alert.messageText.empty())
        dialog->setAccessibleDescription(QString::fromStdString(alert.informativeText));
    auto* row = new QHBoxLayout;
    addButtons(alert, *dialog, *row);
    column->addSpacing(6);
    column->addLayout(row);
    dialog->layout()->setSizeConstraint(QLayout::SetFixedSize);
    return dialog;
}

} // namespace

int QtAlertRunner::runModal(const Alert& alert)
{
    if (m_application.isEnding())
        return responseWithoutPress(alert);
    // Its owner destroys it if it is destroyed first.
    const QPointer<QDialog> dialog = makeDialog(alert, m_application.windowInFront());
    const int response = dialog->exec();
    delete dialog;
    return response >= alertFirstButtonReturn ? response : responseWithoutPress(alert);
}

} // namespace zarn::linux_backend
