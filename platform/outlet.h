// SPDX-License-Identifier: MIT
#pragma once

#include "base/fatal.h"

#include <string>

namespace zarn {

/// A weak reference to a control that the storyboard connects by name.
/// Using an outlet that was never connected stops the process; the error names the outlet.
template <typename T> class Outlet {
public:
    explicit Outlet(const char* name)
        : m_name(name)
    {
    }

    void connect(T* control) { m_control = control; }
    const char* name() const { return m_name; }
    bool isConnected() const { return m_control != nullptr; }
    T* operator->() const { return &get(); }
    T& get() const
    {
        if (!m_control)
            fatalError(std::string("missing outlet ") + m_name);
        return *m_control;
    }

private:
    const char* m_name;
    T* m_control = nullptr;
};

} // namespace zarn
