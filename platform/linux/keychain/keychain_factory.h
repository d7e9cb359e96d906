// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/keychain/keychain_store.h"

#include <memory>

namespace zarn::linux_backend {

/// Chooses the place where items are kept and opens it. The choice is made here, once, and holds
/// for the life of the store; when it is the file, one line says so. Call it on the thread that
/// will use the store; it answers within seconds whatever state the session bus is in.
std::unique_ptr<KeychainStore> makeKeychainStore(const KeychainOptions& options);

} // namespace zarn::linux_backend
