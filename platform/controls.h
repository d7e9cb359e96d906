// SPDX-License-Identifier: MIT
#pragma once

#include "platform/attributed_text.h"

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

/// The controls that a storyboard connects to outlets. Main thread only. The view owns them; an
/// outlet borrows. Setting a value from code never fires the control's action.
namespace zarn {

class Control {
public:
    virtual ~Control() = default;
    /// A control that is hidden or disabled while it has the keyboard focus has it again once it is
    /// shown or enabled, unless the user has moved the focus meanwhile. Until then the next control
    /// has it, or nothing, for a button that is disabled: that is for a time. Neither ends editing.
    virtual void setHidden(bool hidden) = 0;
    virtual bool isHidden() const = 0;
    virtual void setEnabled(bool enabled) = 0;
    virtual bool isEnabled() const = 0;
    /// The interface identifier given in the storyboard, or "".
    virtual std::string identifier() const = 0;
};

class Label : public Control {
public:
    virtual void setStringValue(std::string_view text) = 0;
    virtual std::string stringValue() const = 0;
};

class TextField;

class TextFieldDelegate {
public:
    virtual ~TextFieldDelegate() = default;
    /// The editable field lost the keyboard focus to another control, or Return was pressed in it,
    /// whether or not its text changed. Not for a menu, an alert, a deactivated window or a click
    /// on a button, and never for a field that is not editable. A notification without a text
    /// field carries nullptr.
    virtual void controlTextDidEndEditing(TextField* field) = 0;
};

/// A line of text, plain or secure. One that is not editable takes the focus too: its text can be
/// selected.
class TextField : public Control {
public:
    virtual void setStringValue(std::string_view text) = 0;
    virtual std::string stringValue() const = 0;
    virtual void setEditable(bool editable) = 0;
    virtual bool isEditable() const = 0;
    virtual void setDelegate(TextFieldDelegate* delegate) = 0;
    /// Called whenever the user, not code, has changed the text.
    virtual void setOnChange(std::function<void()> onChange) = 0;
    /// Gives the field the keyboard focus, at once or as soon as its window has it.
    virtual void makeFirstResponder() = 0;
};

enum class ImageName { RightFacingTriangleTemplate, TouchBarGoDownTemplate, AppIcon };

/// A push button, check box or disclosure button. State is 1 for on, 0 for off; a disclosure
/// button keeps any value. It takes the keyboard focus by Tab and not by a click; then Space and
/// Return press it.
class Button : public Control {
public:
    virtual void setTitle(std::string_view title) = 0;
    virtual std::string title() const = 0;
    virtual void setState(int state) = 0;
    virtual int state() const = 0;
    virtual void setImage(ImageName image) = 0;
    virtual void setToolTip(std::string_view text) = 0;
};

/// It takes the keyboard focus by Tab and not by a click.
class PopUpButton : public Control {
public:
    virtual void removeAllItems() = 0;
    /// One item per title: adding one that exists moves it to the end.
    virtual void addItem(std::string_view title) = 0;
    /// Adds several at once, as addItem does one by one.
    virtual void addItems(const std::vector<std::string>& titles) = 0;
    /// Removes the item of that title, if any.
    virtual void removeItem(std::string_view title) = 0;
    /// Selects the item of that title; none when there is no such item.
    virtual void selectItem(std::string_view title) = 0;
    virtual void selectNone() = 0;
    /// "" when none is selected.
    virtual std::string titleOfSelectedItem() const = 0;
    /// The titles in order; a separator has the title "".
    virtual std::vector<std::string> itemTitles() const = 0;
};

/// The cell of a pop-up button: the title of its chosen item.
class PopUpButtonCell {
public:
    virtual ~PopUpButtonCell() = default;
    virtual std::string title() const = 0;
};

/// The menu of a pop-up button.
class Menu {
public:
    virtual ~Menu() = default;
    virtual std::size_t numberOfItems() const = 0;
    /// `index` is at most numberOfItems().
    virtual void insertSeparator(std::size_t index) = 0;
};

class ProgressIndicator : public Control {
public:
    virtual void startAnimation() = 0;
    virtual void stopAnimation() = 0;
};

class ImageView : public Control {
public:
    virtual void setImage(ImageName image) = 0;
};

/// A text view for reading. Links can be clicked, reached by keyboard, and open in the browser.
class TextView : public Control {
public:
    virtual bool hasTextStorage() const = 0;
    /// Only with text storage.
    virtual void setAttributedText(const AttributedText& text) = 0;
};

} // namespace zarn
