// SPDX-License-Identifier: MIT
#pragma once

#include "platform/view_controller.h"

#include <functional>
#include <memory>
#include <string_view>

namespace zarn {

/// A window together with the controller of its content.
class WindowController {
public:
    virtual ~WindowController() = default;
    /// nullptr when the controller has no window.
    virtual Window* window() = 0;
};

/// Makes the view controller of a custom class named in a storyboard ("LoginVC", "AboutVC",
/// "ToUVC"); nullptr for an unknown name.
using ViewControllerFactory
    = std::function<std::unique_ptr<ViewController>(std::string_view customClass)>;

/// Window layouts by identifier. Main thread only.
class Storyboard {
public:
    virtual ~Storyboard() = default;

    /// Called once, before the first instantiation.
    virtual void setViewControllerFactory(ViewControllerFactory factory) = 0;
    /// Loads the view and runs viewDidLoad; nothing is shown. nullptr when the identifier names no
    /// window controller. Destroying the result without showing it frees everything.
    virtual std::unique_ptr<WindowController> instantiateController(std::string_view identifier)
        = 0;
    virtual std::unique_ptr<WindowController> instantiateInitialController() = 0;
    /// Shows the window and keeps its controller until the window closes.
    virtual void showWindow(std::unique_ptr<WindowController> controller) = 0;
};

/// Finds storyboards. Main thread only.
class Storyboards {
public:
    virtual ~Storyboards() = default;
    /// nullptr when the bundle has no storyboard of that name.
    virtual Storyboard* storyboard(std::string_view name) = 0;
};

} // namespace zarn
