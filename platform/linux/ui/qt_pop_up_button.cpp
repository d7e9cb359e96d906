// SPDX-License-Identifier: MIT
#include "platform/linux/ui/qt_controls.h"

#include <QComboBox>
#include <QSet>
#include <QSignalBlocker>
#include <QStandardItemModel>

#include <algorithm>

namespace zarn::linux_backend {

namespace {
QString toQt(std::string_view text)
{
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

bool isSeparator(const QComboBox& box, int index)
{
    return box.itemData(index, Qt::AccessibleDescriptionRole).toString() == "separator";
}
} // namespace

QtPopUpButton::QtPopUpButton(QComboBox* box, const ControlAction& action)
    : QtControlOf(box)
{
    // By a click it would end the editing of a field.
    box->setFocusPolicy(Qt::TabFocus);
    // Also when the item that is chosen already is chosen again.
    QObject::connect(box, &QComboBox::activated, box, [action](int) { action(); });
}

int QtPopUpButton::indexOf(std::string_view title) const
{
    const auto wanted = toQt(title);
    for (int i = 0; i < widget().count(); ++i) {
        if (!isSeparator(widget(), i) && widget().itemText(i) == wanted)
            return i;
    }
    return -1;
}

void QtPopUpButton::removeAllItems()
{
    widget().clear();
}

void QtPopUpButton::addItem(std::string_view title)
{
    const int existing = indexOf(title);
    const bool movesTheChosenOne = existing >= 0 && existing == widget().currentIndex();
    if (existing >= 0)
        widget().removeItem(existing);
    const bool wasEmpty = widget().count() == 0;
    const int selected = widget().currentIndex();
    widget().addItem(toQt(title));
    // The toolkit selects the first selectable item by itself; only the first of all is wanted.
    if (movesTheChosenOne)
        widget().setCurrentIndex(widget().count() - 1);
    else if (!wasEmpty && selected < 0)
        widget().setCurrentIndex(-1);
}

void QtPopUpButton::addItems(const std::vector<std::string>& titles)
{
    if (widget().count() > 0) {
        for (const auto& title : titles)
            addItem(title);
        return;
    }
    QSet<QString> seen;
    QStringList texts;
    for (auto it = titles.rbegin(); it != titles.rend(); ++it) {
        const auto text = toQt(*it);
        if (!seen.contains(text)) {
            seen.insert(text);
            texts.prepend(text);
        }
    }
    widget().addItems(texts);
    // The one that was first is chosen, wherever it moved.
    if (!texts.isEmpty())
        widget().setCurrentIndex(static_cast<int>(texts.indexOf(toQt(titles.front()))));
}

void QtPopUpButton::removeItem(std::string_view title)
{
    const int index = indexOf(title);
    if (index < 0)
        return;
    const bool wasSelected = index == widget().currentIndex();
    widget().removeItem(index);
    if (wasSelected)
        widget().setCurrentIndex(-1);
}

void QtPopUpButton::selectItem(std::string_view title)
{
    widget().setCurrentIndex(indexOf(title));
}

void QtPopUpButton::selectNone()
{
    widget().setCurrentIndex(-1);
}

std::string QtPopUpButton::titleOfSelectedItem() const
{
    return widget().currentText().toStdString();
}

std::vector<std::string> QtPopUpButton::itemTitles() const
{
    std::vector<std::string> titles;
    titles.reserve(numberOfItems());
    for (int i = 0; i < widget().count(); ++i)
        titles.push_back(isSeparator(widget(), i) ? "" : widget().itemText(i).toStdString());
    return titles;
}

std::size_t QtPopUpButton::numberOfItems() const
{
    return static_cast<std::size_t>(widget().count());
}

void QtPopUpButton::insertSeparator(std::size_t index)
{
    const bool hadSelection = widget().currentIndex() >= 0;
    widget().insertSeparator(static_cast<int>(index));
    if (!hadSelection)
        widget().setCurrentIndex(-1);
}

} // namespace zarn::linux_backend
