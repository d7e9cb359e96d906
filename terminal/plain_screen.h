// SPDX-License-Identifier: MIT
#pragma once

#include "platform/application.h"
#include "platform/notification_center.h"
#include "platform/run_loop.h"
#include "platform/view_controller.h"
#include "terminal/plain_controls.h"

#include <map>
#include <memory>
#include <string>
#include <string_view>

namespace zarn {

/// A view that nobody sees, with the controls of the configuration view in the state that the
/// storyboard gives them. Main thread only.
class PlainScreen final : public View, public OutletSource {
public:
    PlainScreen()
    {
        made(m_buttons, "quit_Button").setTitle("Quit");
        made(m_buttons, "updateServerInfo_Button").setTitle("Set");
    }

    Window* window() override { return nullptr; }
    void setWantsLayer(bool) override { }
    bool hasLayer() const override { return false; }
    void setLayerBackground(double, double) override { }
    void setPreferredContentSize(int, int) override { }
    void performSegue(std::string_view) override { }
    void dismissViewController() override { }

    Label* label(std::string_view name) override { return &made(m_labels, name); }
    TextField* textField(std::string_view name) override { return &made(m_fields, name); }
    Button* button(std::string_view name) override { return &made(m_buttons, name); }
    PopUpButton* popUpButton(std::string_view) override { return &m_serverMenu; }
    PopUpButtonCell* popUpButtonCell(std::string_view) override { return &m_serverMenu; }
    Menu* menu(std::string_view) override { return &m_serverMenu; }
    ProgressIndicator* progressIndicator(std::string_view) override { return &m_spinner; }
    ImageView* imageView(std::string_view) override { return nullptr; }
    TextView* textView(std::string_view) override { return nullptr; }

private:
    template <typename T> using Controls = std::map<std::string, std::unique_ptr<T>, std::less<>>;
    template <typename T> static T& made(Controls<T>& controls, std::string_view name)
    {
        auto& control = controls[std::string(name)];
        if (!control)
            control = std::make_unique<T>();
        return *control;
    }

    Controls<PlainLabel> m_labels;
    Controls<PlainTextField> m_fields;
    Controls<PlainButton> m_buttons;
    PlainPopUpButton m_serverMenu;
    PlainProgressIndicator m_spinner;
};

/// The application around that view. Main thread only, except performOnMainThread.
class PlainApplication final : public Application {
public:
    explicit PlainApplication(RunLoop& runLoop)
        : m_runLoop(runLoop)
    {
    }
    int run(ApplicationDelegate&) override { return 0; }
    void activateIgnoringOtherApps() override { }
    void terminate() override { }
    std::vector<Window*> windows() override { return {}; }
    void performOnMainThread(std::function<void()> work) override
    {
        m_runLoop.performOnMainThread(std::move(work));
    }
    unsigned currentModifierFlags() const override { return m_modifierFlags; }
    void setModifierFlags(unsigned flags) { m_modifierFlags = flags; }

private:
    RunLoop& m_runLoop;
    unsigned m_modifierFlags = 0;
};

/// Delivers nothing to anybody.
class PlainNotificationCenter final : public DistributedNotificationCenter {
public:
    void addObserver(const void*, std::string_view, std::function<void()>) override { }
    void removeObserver(const void*, std::string_view) override { }
};

} // namespace zarn
