// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>

class QWidget;

namespace zarn::linux_backend {

/// The reason of a change of the focus that is not the user's, and ends no editing. (Without any
/// reason the toolkit sends no event: no ring, no caret.)
inline constexpr auto focusMovedByCode = Qt::ActiveWindowFocusReason;

/// The keyboard focus of one control while that cannot have it. The toolkit would move it on as by
/// Tab, and leaving what it is moved to could end editing. Main thread only; the control's window
/// outlives it, and no event comes between its end and the window's.
class KeptFocus {
public:
    explicit KeptFocus(QWidget& widget)
        : m_widget(widget)
    {
    }
    /// If the control has the focus, nothing has it until the user moves it or restore() is called.
    /// To be called before the control is disabled or hidden, as handOn().
    void park();
    /// If the control has the focus, it goes to the next control that can take it, back in the
    /// event loop: what is hidden together goes one by one, and what takes its place comes later.
    /// While another window is active, once this one is again.
    void handOn();
    /// The control has the focus again, if it gave it up last and the user has not moved it since.
    void restore();

private:
    bool isOwner() const;
    bool isParked() const;
    void giveToNext();

    QWidget& m_widget;
    const QWidget* m_heir = nullptr;
    /// What is put off goes with this object.
    QObject m_life;
};

} // namespace zarn::linux_backend
