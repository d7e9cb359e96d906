// SPDX-License-Identifier: MIT
#pragma once

#include <functional>

namespace zarn::linux_backend {

/// Takes SIGTERM, SIGINT, SIGHUP and SIGUSR1 from now on; they wait until handlers are set.
void catchSignals();
/// Delivers them in the event loop of the main thread. Called once, after the application object
/// was made.
void setSignalHandlers(std::function<void()> terminate, std::function<void()> raise);

} // namespace zarn::linux_backend
