// SPDX-License-Identifier: MIT
#pragma once

namespace zarn::linux_backend {

/// Core dumps off, files private by default, no death by a closed pipe, standard streams open.
/// Called first of all.
void hardenProcess();
/// Keeps the user's other programs from reading this one's memory. Called before the first secret
/// is there, but after the desktop was asked about itself: its portals look through /proc at who
/// asks, and refuse whom they cannot see.
void forbidTracing();

} // namespace zarn::linux_backend
