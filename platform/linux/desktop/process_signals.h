// SPDX-License-Identifier: MIT
#pragma once

#include <functional>

namespace zarn::linux_backend {

/// Core dumps off, files private by default, no death by a closed pipe, standard streams open.
/// Called first of all.
void hardenProcess();
/// Keeps the user's other programs from reading this one's memory. Called before the first secret
/// is there, but after the desktop was asked about itself: its portals look through /proc at who
/// asks, and refuse whom they cannot see.
void forbidTracing();

/// Takes SIGTERM, SIGINT, SIGHUP and SIGUSR1 from now on; they wait until handlers are set.
void catchSignals();
/// Delivers them in the event loop of the main thread. Called once, after the application object
/// was made.
void setSignalHandlers(std::function<void()> terminate, std::function<void()> raise);

} // namespace zarn::linux_backend
