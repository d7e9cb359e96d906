// SPDX-License-Identifier: MIT
#pragma once

#include "platform/controls.h"
#include "platform/linux/ui/kept_focus.h"
#include "platform/linux/ui/qt_status_label.h"
#include "platform/linux/ui/qt_widgets.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QObject>
#include <QProgressBar>

#include <functional>
#include <type_traits>
#include <utility>

/// The controls of a loaded form: each adapts one widget. The scene that owns the window owns the
/// adapters too, and destroys them first. Main thread only.
namespace zarn::linux_backend {

/// What is called when the user uses a control.
using ControlAction = std::function<void()>;

template <typename Base, typename Widget> class QtControlOf : public Base {
public:
    explicit QtControlOf(Widget* widget)
        : m_widget(widget)
    {
    }
    void setHidden(bool hidden) override
    {
        if (hidden)
            m_focus.handOn();
        widget().setHidden(hidden);
        m_focus.restore();
    }
    bool isHidden() const override { return widget().isHidden(); }
    void setEnabled(bool enabled) override
    {
        // A button is disabled while a request runs, a field for good.
        if (!enabled && std::is_same_v<Base, Button>)
            m_focus.park();
        else if (!enabled)
            m_focus.handOn();
        widget().setEnabled(enabled);
        m_focus.restore();
    }
    bool isEnabled() const override { return widget().isEnabled(); }
    std::string identifier() const override
    {
        return widget().property("identifier").toString().toStdString();
    }

protected:
    Widget& widget() const { return *m_widget; }

private:
    Widget* m_widget;
    KeptFocus m_focus{*m_widget};
};

class QtLabel final : public QtControlOf<Label, QLabel> {
public:
    using QtControlOf::QtControlOf;
    void setStringValue(std::string_view text) override;
    std::string stringValue() const override;
};

class QtStatusLabel final : public QtControlOf<Label, StatusLabel> {
public:
    using QtControlOf::QtControlOf;
    void setStringValue(std::string_view text) override;
    std::string stringValue() const override;
};

class QtTextField final : public QObject, public QtControlOf<TextField, QLineEdit> {
    Q_OBJECT

public:
    explicit QtTextField(QLineEdit* field);
    void setStringValue(std::string_view text) override;
    std::string stringValue() const override;
    void setEditable(bool editable) override;
    bool isEditable() const override;
    void setDelegate(TextFieldDelegate* delegate) override { m_delegate = delegate; }
    void setOnChange(std::function<void()> onChange) override { m_onChange = std::move(onChange); }
    void makeFirstResponder() override;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void endEditing();
    void showStart();
    bool isLongerThanField() const;
    TextFieldDelegate* m_delegate = nullptr;
    std::function<void()> m_onChange;
    bool m_takesFocusWhenShown = false;
    bool m_settingFromCode = false;
};

class QtButton final : public QtControlOf<Button, QAbstractButton> {
public:
    QtButton(QAbstractButton* button, const ControlAction& action);
    void setTitle(std::string_view title) override;
    std::string title() const override;
    void setState(int state) override;
    int state() const override;
    void setImage(ImageName image) override;
    void setToolTip(std::string_view text) override;

private:
    bool isDisclosure() const;

    int m_state = 0;
    bool m_settingFromCode = false;
};

class QtPopUpButton final : public QtControlOf<PopUpButton, QComboBox> {
public:
    QtPopUpButton(QComboBox* box, const ControlAction& action);
    void removeAllItems() override;
    void addItem(std::string_view title) override;
    void addItems(const std::vector<std::string>& titles) override;
    void removeItem(std::string_view title) override;
    void selectItem(std::string_view title) override;
    void selectNone() override;
    std::string titleOfSelectedItem() const override;
    std::vector<std::string> itemTitles() const override;
    std::size_t numberOfItems() const;
    void insertSeparator(std::size_t index);

private:
    int indexOf(std::string_view title) const;
};

class QtPopUpButtonCell final : public PopUpButtonCell {
public:
    explicit QtPopUpButtonCell(const QtPopUpButton& button)
        : m_button(button)
    {
    }
    std::string title() const override { return m_button.titleOfSelectedItem(); }

private:
    const QtPopUpButton& m_button;
};

class QtMenu final : public Menu {
public:
    explicit QtMenu(QtPopUpButton& button)
        : m_button(button)
    {
    }
    std::size_t numberOfItems() const override { return m_button.numberOfItems(); }
    void insertSeparator(std::size_t index) override { m_button.insertSeparator(index); }

private:
    QtPopUpButton& m_button;
};

class QtProgressIndicator final : public QtControlOf<ProgressIndicator, QProgressBar> {
public:
    explicit QtProgressIndicator(QProgressBar* bar);
    /// On screen it is while it turns and is not hidden.
    void setHidden(bool hidden) override;
    bool isHidden() const override { return m_hidden; }
    void startAnimation() override;
    void stopAnimation() override;

private:
    bool m_animating = false;
    bool m_hidden = false;
};

class QtImageView final : public QtControlOf<ImageView, QLabel> {
public:
    using QtControlOf::QtControlOf;
    void setImage(ImageName image) override;
};

class QtTextView final : public QtControlOf<TextView, NoticeBrowser> {
public:
    QtTextView(NoticeBrowser* browser, std::function<void(const std::string&)> openLink);
    bool hasTextStorage() const override { return true; }
    void setAttributedText(const AttributedText& text) override;

private:
    /// Written anew when the user chooses another font.
    AttributedText m_text;
};

} // namespace zarn::linux_backend
