// SPDX-License-Identifier: MIT
#pragma once

#include "platform/controls.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

/// Controls that only remember. What a user does is a function of its own (`type`, `click`,
/// `choose`).
namespace zarn::memory {

/// The state that every control has.
template <typename Base> class MemoryControlOf : public Base {
public:
    void setHidden(bool hidden) override { m_hidden = hidden; }
    bool isHidden() const override { return m_hidden; }
    void setEnabled(bool enabled) override { m_enabled = enabled; }
    bool isEnabled() const override { return m_enabled; }
    std::string identifier() const override { return interfaceIdentifier; }

    std::string interfaceIdentifier;

private:
    bool m_hidden = false;
    bool m_enabled = true;
};

class MemoryLabel final : public MemoryControlOf<Label> {
public:
    void setStringValue(std::string_view text) override { m_text = text; }
    std::string stringValue() const override { return m_text; }

private:
    std::string m_text;
};

class MemoryTextField final : public MemoryControlOf<TextField> {
public:
    void setStringValue(std::string_view text) override { m_text = text; }
    std::string stringValue() const override { return m_text; }
    void setEditable(bool editable) override { m_editable = editable; }
    bool isEditable() const override { return m_editable; }
    void setDelegate(TextFieldDelegate* delegate) override { m_delegate = delegate; }
    void makeFirstResponder() override { ++timesFirstResponder; }

    void endEditing()
    {
        if (m_delegate)
            m_delegate->controlTextDidEndEditing(this);
    }
    TextFieldDelegate* delegate() const { return m_delegate; }

    int timesFirstResponder = 0;

private:
    std::string m_text;
    bool m_editable = true;
    TextFieldDelegate* m_delegate = nullptr;
};

class MemoryButton final : public MemoryControlOf<Button> {
public:
    void setTitle(std::string_view title) override { m_title = title; }
    std::string title() const override { return m_title; }
    void setState(int state) override { m_state = state; }
    int state() const override { return m_state; }
    void setImage(ImageName image) override { m_image = image; }
    ImageName image() const override { return m_image; }
    void setToolTip(std::string_view text) override { m_toolTip = text; }
    std::string toolTip() const override { return m_toolTip; }

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
    void selectNone() override { m_selected.reset(); }
    std::string titleOfSelectedItem() const override { return m_selected.value_or(""); }
    std::vector<std::string> itemTitles() const override;
    void insertSeparator(std::size_t index);
    bool hasSelection() const { return m_selected.has_value(); }

private:
    // A separator has no title; two items never share one.
    std::vector<std::optional<std::string>> m_items;
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
    void startAnimation() override { m_animating = true; }
    void stopAnimation() override { m_animating = false; }
    bool isAnimating() const override { return m_animating; }

private:
    bool m_animating = false;
};

class MemoryImageView final : public MemoryControlOf<ImageView> {
public:
    void setImage(ImageName image) override { m_image = image; }
    std::optional<ImageName> image() const override { return m_image; }

private:
    std::optional<ImageName> m_image;
};

class MemoryTextView final : public MemoryControlOf<TextView> {
public:
    bool hasTextStorage() const override { return withTextStorage; }
    void setAttributedText(const AttributedText& text) override
    {
        m_text = text;
        ++timesFilled;
    }
    AttributedText attributedText() const override { return m_text; }

    bool withTextStorage = true;
    int timesFilled = 0;

private:
    AttributedText m_text;
};

} // namespace zarn::memory
