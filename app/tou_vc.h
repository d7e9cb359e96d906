// SPDX-License-Identifier: MIT
#pragma once

#include "platform/outlet.h"
#include "platform/view_controller.h"

namespace zarn {

class Appearance;
class Application;
class DistributedNotificationCenter;
class SettingsDomain;

/// The terms-of-use gate: can be left through its two buttons only. Main thread only.
class ToUVC : public ViewController {
public:
    struct Deps {
        Appearance& appearance;
        SettingsDomain& standardDefaults;
        Application& application;
    };
    explicit ToUVC(const Deps& deps)
        : m_deps(deps)
    {
    }

    void connectOutlets(OutletSource& source) override;
    void viewDidLoad() override;
    void viewWillAppear() override;
    /// "exitOrAccept", the action of both buttons.
    bool performAction(std::string_view action, Button* button) override;
    void interfaceModeChangedWithSender();

private:
    void exitOrAccept(const Button& sender);

    Deps m_deps;
    Window* m_window = nullptr;
    Outlet<ImageView> icon_ImageView{"icon_ImageView"};
    Outlet<TextView> termsOfUse_TextView{"termsOfUse_TextView"};
    Outlet<Button> exit_Button{"exit_Button"};
    Outlet<Button> accept_Button{"accept_Button"};
};

/// The terms of use in a window that follows the desktop's light or dark preference. The terms
/// themselves do not observe it; their text must stay readable all the same. Main thread only.
class FollowingToUVC final : public ToUVC {
public:
    FollowingToUVC(const Deps& deps, DistributedNotificationCenter& center);
    ~FollowingToUVC() override;
    FollowingToUVC(const FollowingToUVC&) = delete;
    FollowingToUVC& operator=(const FollowingToUVC&) = delete;

private:
    DistributedNotificationCenter& m_center;
};

} // namespace zarn
