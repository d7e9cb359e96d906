// SPDX-License-Identifier: MIT
#pragma once

#include "base/warn.h"
#include "platform/application.h"
#include "platform/storyboard.h"

#include <cstdlib>
#include <utility>

/// The windows and what is in them, each with nothing behind it.
namespace zarn::stub {

/// What every control has, for each kind of control.
template <typename Kind> class StubControl : public Kind {
public:
    void setHidden(bool) override { }
    bool isHidden() const override { return false; }
    void setEnabled(bool) override { }
    bool isEnabled() const override { return false; }
    std::string identifier() const override { return ""; }
};

class StubLabel : public StubControl<Label> {
public:
    void setStringValue(std::string_view) override { }
    std::string stringValue() const override { return ""; }
};

class StubTextField : public StubControl<TextField> {
public:
    void setStringValue(std::string_view) override { }
    std::string stringValue() const override { return ""; }
    void setEditable(bool) override { }
    bool isEditable() const override { return false; }
    void setDelegate(TextFieldDelegate*) override { }
    void setOnChange(std::function<void()>) override { }
    void makeFirstResponder() override { }
};

class StubButton : public StubControl<Button> {
public:
    void setTitle(std::string_view) override { }
    std::string title() const override { return ""; }
    void setState(int) override { }
    int state() const override { return 0; }
    void setImage(ImageName) override { }
    void setToolTip(std::string_view) override { }
};

class StubPopUpButton : public StubControl<PopUpButton> {
public:
    void removeAllItems() override { }
    void addItem(std::string_view) override { }
    void addItems(const std::vector<std::string>&) override { }
    void removeItem(std::string_view) override { }
    void selectItem(std::string_view) override { }
    void selectNone() override { }
    std::string titleOfSelectedItem() const override { return ""; }
    std::vector<std::string> itemTitles() const override { return {}; }
};

class StubPopUpButtonCell : public PopUpButtonCell {
public:
    std::string title() const override { return ""; }
};

class StubMenu : public Menu {
public:
    std::size_t numberOfItems() const override { return 0; }
    void insertSeparator(std::size_t) override { }
};

class StubProgressIndicator : public StubControl<ProgressIndicator> {
public:
    void startAnimation() override { }
    void stopAnimation() override { }
};

class StubImageView : public StubControl<ImageView> {
public:
    void setImage(ImageName) override { }
};

class StubTextView : public StubControl<TextView> {
public:
    bool hasTextStorage() const override { return false; }
    void setAttributedText(const AttributedText&) override { }
};

class StubOutlets : public OutletSource {
public:
    Label* label(std::string_view) override { return &m_label; }
    TextField* textField(std::string_view) override { return &m_textField; }
    Button* button(std::string_view) override { return &m_button; }
    PopUpButton* popUpButton(std::string_view) override { return &m_popUpButton; }
    PopUpButtonCell* popUpButtonCell(std::string_view) override { return &m_popUpButtonCell; }
    Menu* menu(std::string_view) override { return &m_menu; }
    ProgressIndicator* progressIndicator(std::string_view) override { return &m_progressIndicator; }
    ImageView* imageView(std::string_view) override { return &m_imageView; }
    TextView* textView(std::string_view) override { return &m_textView; }

private:
    StubLabel m_label;
    StubTextField m_textField;
    StubButton m_button;
    StubPopUpButton m_popUpButton;
    StubPopUpButtonCell m_popUpButtonCell;
    StubMenu m_menu;
    StubProgressIndicator m_progressIndicator;
    StubImageView m_imageView;
    StubTextView m_textView;
};

class StubWindow : public Window {
public:
    std::string title() const override { return ""; }
    void setTitleVisibility(TitleVisibility) override { }
    void setTitlebarAppearsTransparent(bool) override { }
    void setStyleMask(unsigned) override { }
    unsigned styleMask() const override { return 0; }
    void setOpaque(bool) override { }
    void setHidesOnDeactivate(bool) override { }
    void makeKeyAndOrderFront() override { }
};

class StubView : public View {
public:
    explicit StubView(Window& window)
        : m_window(window)
    {
    }
    Window* window() override { return &m_window; }
    void setWantsLayer(bool) override { }
    bool hasLayer() const override { return false; }
    void setLayerBackground(double, double) override { }
    void setPreferredContentSize(int, int) override { }
    void performSegue(std::string_view) override { }
    void dismissViewController() override { }

private:
    Window& m_window;
};

/// The order of calls that a view controller relies on.
class StubWindowController : public WindowController {
public:
    explicit StubWindowController(std::unique_ptr<ViewController> content)
        : m_content(std::move(content))
    {
        if (!m_content)
            return;
        m_content->setView(&m_view);
        m_content->connectOutlets(m_outlets);
        m_content->viewDidLoad();
    }
    Window* window() override { return &m_window; }

private:
    StubWindow m_window;
    StubView m_view{m_window};
    StubOutlets m_outlets;
    std::unique_ptr<ViewController> m_content;
};

class StubStoryboard : public Storyboard {
public:
    void setViewControllerFactory(ViewControllerFactory factory) override
    {
        m_factory = std::move(factory);
    }
    std::unique_ptr<WindowController> instantiateController(std::string_view identifier) override
    {
        return std::make_unique<StubWindowController>(m_factory(identifier));
    }
    std::unique_ptr<WindowController> instantiateInitialController() override { return nullptr; }
    void showWindow(std::unique_ptr<WindowController>) override { }

private:
    ViewControllerFactory m_factory;
};

class StubStoryboards : public Storyboards {
public:
    Storyboard* storyboard(std::string_view) override { return &m_storyboard; }

private:
    StubStoryboard m_storyboard;
};

class StubApplication : public Application {
public:
    int run(ApplicationDelegate&) override
    {
        warn("this backend opens no window");
        return EXIT_FAILURE;
    }
    void activateIgnoringOtherApps() override { }
    void terminate() override { }
    std::vector<Window*> windows() override { return {}; }
    void performOnMainThread(std::function<void()>) override { }
    unsigned currentModifierFlags() const override { return 0; }
};

} // namespace zarn::stub
