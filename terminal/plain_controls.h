// SPDX-License-Identifier: MIT
#pragma once

#include "base/wipe.h"
#include "platform/controls.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

/// Controls that nobody sees: each keeps what it was given. They stand in for those of a window
/// where a command uses the configuration view. Main thread only.
namespace zarn {

/// The state that every control has.
template <typename Base> class PlainControl : public Base {
public:
    void setHidden(bool hidden) override { m_isHidden = hidden; }
    bool isHidden() const override { return m_isHidden; }
    void setEnabled(bool enabled) override { m_isEnabled = enabled; }
    bool isEnabled() const override { return m_isEnabled; }
    std::string identifier() const override { return {}; }

private:
    bool m_isHidden = false;
    bool m_isEnabled = true;
};

class PlainLabel final : public PlainControl<Label> {
public:
    void setStringValue(std::string_view text) override { m_text = text; }
    std::string stringValue() const override { return m_text; }

private:
    std::string m_text;
};

/// Its text may be a secret, and is wiped.
class PlainTextField final : public PlainControl<TextField> {
public:
    PlainTextField() = default;
    ~PlainTextField() override { wipe(m_text); }
    PlainTextField(const PlainTextField&) = delete;
    PlainTextField& operator=(const PlainTextField&) = delete;

    void setStringValue(std::string_view text) override
    {
        wipe(m_text);
        m_text = text;
    }
    std::string stringValue() const override { return m_text; }
    void setEditable(bool editable) override { m_isEditable = editable; }
    bool isEditable() const override { return m_isEditable; }
    // Editing is reported to nobody: a command knows what it types.
    void setDelegate(TextFieldDelegate*) override { }
    void setOnChange(std::function<void()>) override { }
    void makeFirstResponder() override { }

private:
    std::string m_text;
    bool m_isEditable = true;
};

class PlainButton final : public PlainControl<Button> {
public:
    void setTitle(std::string_view title) override { m_title = title; }
    std::string title() const override { return m_title; }
    void setState(int state) override { m_state = state; }
    int state() const override { return m_state; }
    void setImage(ImageName) override { }
    void setToolTip(std::string_view) override { }

private:
    std::string m_title;
    int m_state = 0;
};

/// A separator is an item with the title "", which no profile has.
class PlainPopUpButton final : public PlainControl<PopUpButton>,
                               public PopUpButtonCell,
                               public Menu {
public:
    void removeAllItems() override
    {
        m_titles.clear();
        m_selected.clear();
    }
    void addItem(std::string_view title) override
    {
        if (m_titles.empty())
            m_selected = title;
        std::erase(m_titles, title);
        m_titles.emplace_back(title);
    }
    void addItems(const std::vector<std::string>& titles) override
    {
        for (const auto& title : titles)
            addItem(title);
    }
    void removeItem(std::string_view title) override
    {
        std::erase(m_titles, title);
        if (m_selected == title)
            m_selected.clear();
    }
    void selectItem(std::string_view title) override
    {
        m_selected = std::ranges::find(m_titles, title) != m_titles.end() ? title : "";
    }
    void selectNone() override { m_selected.clear(); }
    std::string titleOfSelectedItem() const override { return m_selected; }
    std::vector<std::string> itemTitles() const override { return m_titles; }

    std::string title() const override { return titleOfSelectedItem(); }
    std::size_t numberOfItems() const override { return m_titles.size(); }
    void insertSeparator(std::size_t index) override
    {
        m_titles.emplace(m_titles.begin() + static_cast<std::ptrdiff_t>(index));
    }

private:
    std::vector<std::string> m_titles;
    /// "" when none is.
    std::string m_selected;
};

class PlainProgressIndicator final : public PlainControl<ProgressIndicator> {
public:
    void startAnimation() override { }
    void stopAnimation() override { }
};

} // namespace zarn
