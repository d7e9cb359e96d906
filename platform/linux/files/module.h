// SPDX-License-Identifier: MIT
#pragma once

#include "base/result.h"

#include <string>
#include <string_view>

namespace zarn::linux_backend {

/// Loads one of the program's own shared modules (`fileName`, such as "zarn-http.so") and returns
/// the address of its function `symbol`. Looks beside the executable, then in
/// ../lib/zarn-actions/modules; never anywhere the environment names. Modules stay loaded. Any
/// thread.
///
/// Heavy libraries (HTTP, keyring) live in modules so that the first paint does not wait for them.
Result<void*> loadModuleFunction(const std::string& fileName, const char* symbol);

} // namespace zarn::linux_backend
