// SPDX-License-Identifier: MIT
#pragma once

namespace zarn::linux_backend {

/// Draws the program's controls alike on every desktop. Main thread only, before the application is
/// made.
void useOwnStyle();

/// Gives the whole program its colours, light or dark. Main thread only.
void applyDark(bool dark);

} // namespace zarn::linux_backend
