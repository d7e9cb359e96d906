// SPDX-License-Identifier: MIT
#include "platform/view_controller.h"

#include "base/fatal.h"

namespace zarn {

View& ViewController::view() const
{
    if (!m_view)
        fatalError("view controller without a view");
    return *m_view;
}

} // namespace zarn
