// SPDX-License-Identifier: MIT
#pragma once

namespace zarn::linux_backend {

/// Gives the whole program its style, light or dark. Main thread only.
void applyDark(bool dark);

} // namespace zarn::linux_backend
