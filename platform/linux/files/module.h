// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace zarn::linux_backend {

/// Loads one of the program's own shared modules (`fileName`, such as "zarn-http.so") and returns
/// the address of its function `symbol`. Looks beside the executable, then in
/// ../lib/zarn-actions/modules; never anywhere the environment names. A module that cannot be
/// loaded is a broken installation: the process ends with status 1 and one line on standard error.
/// Modules stay loaded. Any thread.
///
/// Heavy libraries (HTTP, keyring) live in modules so that the first paint does not wait for them.
void* moduleFunction(const std::string& fileName, const char* symbol);

} // namespace zarn::linux_backend
