// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/ui/qt_controls.h"
#include "platform/storyboard.h"

#include <QObject>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

class LayerView;
class QMainWindow;

namespace zarn::linux_backend {

/// The controls of one form by object name. Main thread only.
class QtOutlets final : public OutletSource {
public:
    struct Hooks {
        /// A control with the storyboard action `name` was used; `button` when it is a button.
        std::function<void(const std::string& name, Button* button)> action;
        std::function<void(const std::string& address)> openLink;
        /// Runs work at once, or after what the program waits for.
        std::function<void(std::function<void()> work)> performAfterWaits;
    };
    QtOutlets(QWidget& form, Hooks hooks);

    Label* label(std::string_view name) override;
    TextField* textField(std::string_view name) override;
    Button* button(std::string_view name) override;
    PopUpButton* popUpButton(std::string_view name) override;
    PopUpButtonCell* popUpButtonCell(std::string_view name) override;
    Menu* menu(std::string_view name) override;
    ProgressIndicator* progressIndicator(std::string_view name) override;
    ImageView* imageView(std::string_view name) override;
    TextView* textView(std::string_view name) override;

private:
    struct PopUp {
        QtPopUpButton button;
        QtPopUpButtonCell cell{button};
        QtMenu menu{button};
        PopUp(QComboBox* box, const ControlAction& action)
            : button(box, action)
        {
        }
    };
    template <typename T, typename Widget, typename... Arguments>
    T* find(std::map<std::string, std::unique_ptr<T>, std::less<>>& made, std::string_view name,
        Arguments&&... arguments);
    PopUp* popUp();
    void perform(QWidget& widget, Button* button);
    bool isForImage(std::string_view name) const;

    QWidget& m_form;
    Hooks m_hooks;
    template <typename T> using Made = std::map<std::string, std::unique_ptr<T>, std::less<>>;
    Made<QtLabel> m_labels;
    Made<QtStatusLabel> m_statusLabels;
    Made<QtTextField> m_textFields;
    Made<QtButton> m_buttons;
    Made<QtProgressIndicator> m_progressIndicators;
    Made<QtImageView> m_imageViews;
    Made<QtTextView> m_textViews;
    std::unique_ptr<PopUp> m_popUp;
};

/// A top-level window. Main thread only.
class QtWindow final : public Window {
public:
    explicit QtWindow(QMainWindow& window)
        : m_window(window)
    {
    }
    std::string title() const override;
    void setTitleVisibility(TitleVisibility visibility) override;
    void setTitlebarAppearsTransparent(bool) override { }
    void setStyleMask(unsigned mask) override;
    unsigned styleMask() const override { return m_mask; }
    void setOpaque(bool) override { }
    void setHidesOnDeactivate(bool) override { }
    void makeKeyAndOrderFront() override;

private:
    QMainWindow& m_window;
    /// The title while it is hidden.
    std::optional<std::string> m_hiddenTitle;
    unsigned m_mask
        = 1 | window_style::closable | window_style::miniaturizable | window_style::resizable;
};

/// One loaded form: window, view, outlets and controller, and the order of the controller's
/// callbacks. Main thread only.
class QtScene final : public QObject, public View {
    Q_OBJECT

public:
    struct Hooks {
        std::function<void(QtScene& from, std::string_view identifier)> segue;
        std::function<void(const std::string& address)> openLink;
        /// The window has closed; the scene may be destroyed once control is back in the event
        /// loop.
        std::function<void(QtScene& scene)> closed;
        /// Runs work at once, or after what the program waits for.
        std::function<void(std::function<void()> work)> performAfterWaits;
    };
    QtScene(std::unique_ptr<QMainWindow> window, Hooks hooks);
    ~QtScene() override;

    /// Gives the scene its controller and loads the view.
    void load(std::unique_ptr<ViewController> controller);
    /// Brings the window up, over that of the presenter if there is one. The view has appeared when
    /// the display shows the window's first frame.
    void show(const QtScene* presenter = nullptr);
    bool isShown() const { return m_shown; }
    /// A window without closable in its style mask closes only this way.
    void close();
    /// Gives the keyboard to the window that this one was shown over.
    void activatePresenter();

    QMainWindow& mainWindow() { return *m_window; }
    QtWindow& sceneWindow() { return m_sceneWindow; }
    const std::string& customClass() const { return m_customClass; }

    Window* window() override { return &m_sceneWindow; }
    void setWantsLayer(bool wants) override;
    bool hasLayer() const override { return m_hasLayer; }
    void setLayerBackground(double greyLevel, double alpha) override;
    void setPreferredContentSize(int width, int height) override;
    void performSegue(std::string_view identifier) override;
    void dismissViewController() override;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void fitContent();
    void appear();
    void fitNotice();
    void disappear();
    LayerView& content() const;

    std::unique_ptr<QMainWindow> m_window;
    Hooks m_hooks;
    std::string m_customClass;
    QtWindow m_sceneWindow;
    QtOutlets m_outlets;
    std::unique_ptr<ViewController> m_controller;
    bool m_hasLayer = false;
    bool m_shown = false;
    std::optional<QSize> m_preferredSize;
};

} // namespace zarn::linux_backend
