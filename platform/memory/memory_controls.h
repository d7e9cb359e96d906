// SPDX-License-Identifier: MIT
#pragma once

#include "platform/controls.h"

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

/// Controls that only keep their state. A test acts as the user through MemoryWindowController
/// (`type`, `click`, `choose`).
namespace zarn::memory {

/// Which control of a window has the keyboard focus.
struct MemoryFocus {
    Control* control = nullptr;
};

/// Changes made by code are recorded as "<control> <what>" once recording is switched on.
class ControlRecord {
public:
    void recordAs(std::string name, std::vector<std::string>* events)
    {
        m_name = std::move(name);
        m_events = events;
    }

protected:
    void record(std::string_view what)
    {
        if (m_events)
            m_events->push_back(m_name + " " + std::string(what));
    }

private:
    std::string m_name;
    std::vector<std::string>* m_events = nullptr;
};

/// The state that every control has.
template <typename Base> class MemoryControlOf : public Base, public ControlRecord {
public:
    void setHidden(bool hidden) override
    {
        record(hidden ? "hidden" : "shown");
        m_hidden = hidden;
        keepFocus();
    }
    bool isHidden() const override { return m_hidden; }
    void setEnabled(bool enabled) override
    {
        record(enabled ? "enabled" : "disabled");
        m_enabled = enabled;
        keepFocus();
    }
    bool isEnabled() const override { return m_enabled; }
    std::string identifier() const override { return interfaceIdentifier; }

    void shareFocus(MemoryFocus& focus) { m_focus = &focus; }
    bool hasFocus() const { return m_focus && m_focus->control == this; }
    /// Moves the keyboard focus of the window to this control.
    void takeFocus();

    std::string interfaceIdentifier;

private:
    /// Gives up the focus while the control is hidden or disabled.
    void keepFocus()
    {
        const bool isUsable = m_enabled && !m_hidden;
        if (!isUsable && hasFocus()) {
            m_focus->control = nullptr;
            m_hadFocus = true;
        } else if (isUsable && std::exchange(m_hadFocus, false) && !m_focus->control) {
            m_focus->control = this;
        }
    }

    bool m_hidden = false;
    bool m_enabled = true;
    bool m_hadFocus = false;
    MemoryFocus* m_focus = nullptr;
};

class MemoryLabel final : public MemoryControlOf<Label> {
public:
    void setStringValue(std::string_view text) override
    {
        record("= " + std::string(text));
        m_text = text;
    }
    std::string stringValue() const override { return m_text; }

private:
    std::string m_text;
};

/// A plain or a secure text field: the interface makes no difference.
class MemoryTextField final : public MemoryControlOf<TextField> {
public:
    void setStringValue(std::string_view text) override
    {
        record("= " + std::string(text));
        m_text = text;
    }
    std::string stringValue() const override { return m_text; }
    void setEditable(bool editable) override
    {
        record(editable ? "editable" : "not editable");
        m_editable = editable;
    }
    bool isEditable() const override { return m_editable; }
    void setDelegate(TextFieldDelegate* delegate) override
    {
        record(delegate ? "delegate" : "no delegate");
        m_delegate = delegate;
    }
    void setOnChange(std::function<void()> onChange) override { m_onChange = std::move(onChange); }
    void makeFirstResponder() override
    {
        record("first responder");
        ++timesFirstResponder;
        takeFocus();
    }

    /// The field loses the keyboard focus, or Return is pressed in it.
    void endEditing()
    {
        if (m_delegate && m_editable)
            m_delegate->controlTextDidEndEditing(this);
    }
    /// The user replaces the field's text by typing.
    void type(std::string_view text)
    {
        const bool changes = m_text != text;
        m_text = text;
        if (m_onChange && changes)
            m_onChange();
    }
    TextFieldDelegate* delegate() const { return m_delegate; }
    /// The text on the screen.
    std::string shownText() const { return isSecure ? std::string(m_text.size(), '*') : m_text; }

    int timesFirstResponder = 0;
    bool isSecure = false;

private:
    std::string m_text;
    bool m_editable = true;
    TextFieldDelegate* m_delegate = nullptr;
    std::function<void()> m_onChange;
};

template <typename Base> void MemoryControlOf<Base>::takeFocus()
{
    if (!m_focus || hasFocus())
        return;
    auto* const before = dynamic_cast<MemoryTextField*>(std::exchange(m_focus->control, this));
    if (before)
        before->endEditing();
}

class MemoryButton final : public MemoryControlOf<Button> {
public:
    enum class Kind { Push, CheckBox, Disclosure };

    void setTitle(std::string_view title) override
    {
        record("titled " + std::string(title));
        m_title = title;
    }
    std::string title() const override { return m_title; }
    void setState(int state) override
    {
        record("state " + std::to_string(state));
        const bool isTwoState = kind == Kind::CheckBox && !allowsMixedState;
        m_state = isTwoState && state != 0 ? 1 : state;
    }
    int state() const override { return m_state; }
    void setImage(ImageName image) override
    {
        record(image == ImageName::TouchBarGoDownTemplate ? "image down" : "image right");
        m_image = image;
    }
    ImageName image() const { return m_image; }
    void setToolTip(std::string_view text) override
    {
        record("tooltip " + std::string(text));
        m_toolTip = text;
    }
    std::string toolTip() const { return m_toolTip; }

    /// The user clicks: a check box or disclosure button flips.
    void flip()
    {
        if (kind != Kind::Push)
            m_state = m_state == 0 ? 1 : 0;
    }

    Kind kind = Kind::Push;
    /// A check box with more states than on and off, as other backends may have them.
    bool allowsMixedState = false;

private:
    std::string m_title;
    int m_state = 0;
    ImageName m_image = ImageName::RightFacingTriangleTemplate;
    std::string m_toolTip;
};

class MemoryPopUpButton final : public MemoryControlOf<PopUpButton> {
public:
    void removeAllItems() override;
    void addItem(std::string_view title) override;
    void addItems(const std::vector<std::string>& titles) override;
    void removeItem(std::string_view title) override;
    void selectItem(std::string_view title) override;
    void selectNone() override
    {
        record("select none");
        m_selected.reset();
    }
    std::string titleOfSelectedItem() const override { return m_selected.value_or(""); }
    std::vector<std::string> itemTitles() const override;
    void insertSeparator(std::size_t index);
    bool hasSelection() const { return m_selected.has_value(); }
    /// The user chooses an item; false when no item has that title.
    bool choose(std::string_view title);
    /// The items as a user sees them, a separator as "-".
    std::vector<std::string> shownItems() const;

private:
    // A separator has the title ""; two other items never share one.
    struct Item {
        std::string title;
        bool isSeparator = false;
    };
    std::vector<Item>::const_iterator find(std::string_view title) const;

    std::vector<Item> m_items;
    std::optional<std::string> m_selected;
};

class MemoryPopUpButtonCell final : public PopUpButtonCell {
public:
    explicit MemoryPopUpButtonCell(const MemoryPopUpButton& button)
        : m_button(button)
    {
    }
    std::string title() const override { return m_button.titleOfSelectedItem(); }

private:
    const MemoryPopUpButton& m_button;
};

class MemoryMenu final : public Menu {
public:
    explicit MemoryMenu(MemoryPopUpButton& button)
        : m_button(button)
    {
    }
    std::size_t numberOfItems() const override { return m_button.itemTitles().size(); }
    void insertSeparator(std::size_t index) override { m_button.insertSeparator(index); }

private:
    MemoryPopUpButton& m_button;
};

class MemoryProgressIndicator final : public MemoryControlOf<ProgressIndicator> {
public:
    void startAnimation() override
    {
        record("start");
        m_animating = true;
    }
    void stopAnimation() override
    {
        record("stop");
        m_animating = false;
    }
    bool isAnimating() const { return m_animating; }

private:
    bool m_animating = false;
};

class MemoryImageView final : public MemoryControlOf<ImageView> {
public:
    void setImage(ImageName image) override
    {
        record("image");
        m_image = image;
    }
    std::optional<ImageName> image() const { return m_image; }

private:
    std::optional<ImageName> m_image;
};

class MemoryTextView final : public MemoryControlOf<TextView> {
public:
    bool hasTextStorage() const override { return withTextStorage; }
    void setAttributedText(const AttributedText& text) override
    {
        record("filled");
        m_text = text;
        ++timesFilled;
    }
    AttributedText attributedText() const { return m_text; }

    /// The text on the screen.
    std::string shownText() const;
    /// The address that a click on this stretch of text opens.
    std::optional<std::string> linkOf(std::string_view text) const;

    bool withTextStorage = true;
    int timesFilled = 0;

private:
    AttributedText m_text;
};

} // namespace zarn::memory
