// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace zarn {

/// Bits of a window's style mask.
namespace window_style {
inline constexpr unsigned closable = 2;
inline constexpr unsigned miniaturizable = 4;
inline constexpr unsigned resizable = 8;
inline constexpr unsigned fullScreen = 16384;
inline constexpr unsigned fullSizeContentView = 32768;
} // namespace window_style

enum class TitleVisibility { Visible = 0, Hidden = 1 };

/// A top-level window. Main thread only. Borrowed: the platform owns it.
class Window {
public:
    virtual ~Window() = default;
    virtual std::string title() const = 0;
    virtual void setTitleVisibility(TitleVisibility visibility) = 0;
    virtual void setTitlebarAppearsTransparent(bool transparent) = 0;
    /// Bits of window_style. Without closable, miniaturizable, resizable and fullScreen the user
    /// and the window manager can do none of these. Before the window is shown.
    virtual void setStyleMask(unsigned mask) = 0;
    virtual unsigned styleMask() const = 0;
    virtual void setOpaque(bool opaque) = 0;
    virtual void setHidesOnDeactivate(bool hides) = 0;
    virtual void makeKeyAndOrderFront() = 0;
};

} // namespace zarn
