// SPDX-License-Identifier: MIT
#include "platform/linux/ui/qt_widgets.h"
#include "platform/linux/ui/qt_window.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QProgressBar>

namespace zarn::linux_backend {

// A control has its action whether a controller asks for it as an outlet or not.
QtOutlets::QtOutlets(QWidget& form, Hooks hooks)
    : m_form(form)
    , m_hooks(std::move(hooks))
{
    for (const auto* widget : m_form.findChildren<QAbstractButton*>()) {
        if (widget->property("action").isValid())
            button(widget->objectName().toStdString());
    }
    popUp();
}

// The toolkit's label shows texts and images alike; the form says which one is for images.
bool QtOutlets::isForImage(std::string_view name) const
{
    const auto* label = m_form.findChild<QLabel*>(
        QString::fromUtf8(name.data(), static_cast<qsizetype>(name.size())));
    return label && label->property("forImage").isValid();
}

template <typename T, typename Widget, typename... Arguments>
T* QtOutlets::find(Made<T>& made, std::string_view name, Arguments&&... arguments)
{
    const auto existing = made.find(name);
    if (existing != made.end())
        return existing->second.get();
    auto* widget = m_form.findChild<Widget*>(
        QString::fromUtf8(name.data(), static_cast<qsizetype>(name.size())));
    if (!widget)
        return nullptr;
    auto control = std::make_unique<T>(widget, std::forward<Arguments>(arguments)...);
    return made.emplace(std::string(name), std::move(control)).first->second.get();
}

Label* QtOutlets::label(std::string_view name)
{
    if (auto* status = find<QtStatusLabel, StatusLabel>(m_statusLabels, name))
        return status;
    return isForImage(name) ? nullptr : find<QtLabel, QLabel>(m_labels, name);
}

TextField* QtOutlets::textField(std::string_view name)
{
    return find<QtTextField, QLineEdit>(m_textFields, name);
}

// Assistive technology presses buttons also while the window waits for the keychain and takes no
// keys. The fields then hold the address of one server and the password of another, so that such a
// press has to wait, too. What it finds disabled by then stays as it is.
void QtOutlets::perform(QWidget& widget, Button* button)
{
    m_hooks.performAfterWaits([this, target = QPointer<QWidget>(&widget), button] {
        if (target && target->isEnabled())
            m_hooks.action(target->property("action").toString().toStdString(), button);
    });
}

Button* QtOutlets::button(std::string_view name)
{
    const std::string key(name);
    return find<QtButton, QAbstractButton>(m_buttons, name, [this, key] {
        perform(*m_form.findChild<QAbstractButton*>(QString::fromStdString(key)),
            m_buttons.at(key).get());
    });
}

QtOutlets::PopUp* QtOutlets::popUp()
{
    auto* box = m_form.findChild<QComboBox*>();
    if (!m_popUp && box)
        m_popUp = std::make_unique<PopUp>(box, [this, box] { perform(*box, nullptr); });
    return m_popUp.get();
}

// A combo box is button, cell and menu in one; the names tell which of them is asked for.
PopUpButton* QtOutlets::popUpButton(std::string_view name)
{
    return name == "selectServer_Button" && popUp() ? &popUp()->button : nullptr;
}

PopUpButtonCell* QtOutlets::popUpButtonCell(std::string_view name)
{
    return name == "selectedServer_ButtonCell" && popUp() ? &popUp()->cell : nullptr;
}

Menu* QtOutlets::menu(std::string_view name)
{
    return name == "selectServer_Menu" && popUp() ? &popUp()->menu : nullptr;
}

ProgressIndicator* QtOutlets::progressIndicator(std::string_view name)
{
    return find<QtProgressIndicator, QProgressBar>(m_progressIndicators, name);
}

ImageView* QtOutlets::imageView(std::string_view name)
{
    return isForImage(name) ? find<QtImageView, QLabel>(m_imageViews, name) : nullptr;
}

TextView* QtOutlets::textView(std::string_view name)
{
    return find<QtTextView, NoticeBrowser>(m_textViews, name, m_hooks.openLink);
}

} // namespace zarn::linux_backend
