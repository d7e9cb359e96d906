// SPDX-License-Identifier: MIT
#pragma once

#include "base/fatal.h"
#include "platform/controls.h"
#include "platform/window.h"

#include <memory>
#include <string_view>

namespace zarn {

/// The view that a controller manages. Main thread only; outlives the controller's last callback.
class View {
public:
    virtual ~View() = default;
    /// The window that shows the view, or nullptr.
    virtual Window* window() = 0;
    virtual void setWantsLayer(bool wants) = 0;
    virtual bool hasLayer() const = 0;
    /// Paints the layer in generic grey: level and alpha from 0 to 1.
    virtual void setLayerBackground(double greyLevel, double alpha) = 0;
    /// In points, without the menu bar; larger where the user's font needs the room.
    virtual void setPreferredContentSize(int width, int height) = 0;
    virtual void performSegue(std::string_view identifier) = 0;
    /// Takes the view off screen: ends a segue, or closes the window that shows it.
    virtual void dismissViewController() = 0;
};

/// Finds the controls of a loaded view by their storyboard names; nullptr when the view has no
/// control of that name and kind.
class OutletSource {
public:
    virtual ~OutletSource() = default;
    virtual Label* label(std::string_view name) = 0;
    virtual TextField* textField(std::string_view name) = 0;
    virtual Button* button(std::string_view name) = 0;
    virtual PopUpButton* popUpButton(std::string_view name) = 0;
    virtual PopUpButtonCell* popUpButtonCell(std::string_view name) = 0;
    virtual Menu* menu(std::string_view name) = 0;
    virtual ProgressIndicator* progressIndicator(std::string_view name) = 0;
    virtual ImageView* imageView(std::string_view name) = 0;
    virtual TextView* textView(std::string_view name) = 0;
};

/// Base of the controllers that a storyboard instantiates. Main thread only.
/// Order of calls: setView, connectOutlets, viewDidLoad, then viewWillAppear and viewDidAppear each
/// time the view is shown, viewWillDisappear each time it goes away.
class ViewController {
public:
    virtual ~ViewController() = default;

    void setView(View* view) { m_view = view; }
    virtual void connectOutlets(OutletSource& source) = 0;
    virtual void viewDidLoad() { }
    virtual void viewWillAppear() { }
    virtual void viewDidAppear() { }
    virtual void viewWillDisappear() { }
    /// Called when a control with the storyboard action `action` was used. `button` is the control,
    /// or nullptr when it is not a button. False when the controller has no such action.
    virtual bool performAction(std::string_view action, Button* button) = 0;

protected:
    /// Stops the process when no view was set.
    View& view() const
    {
        if (!m_view)
            fatalError("view controller without a view");
        return *m_view;
    }

private:
    View* m_view = nullptr;
};

} // namespace zarn
