// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/keychain/call_context.h"
#include "platform/linux/keychain/keychain_store.h"

#include <memory>

namespace zarn::linux_backend {

/// Chooses the place where items are kept, once for the life of the store, and opens it. Call it on
/// the thread that will use the store, within a call of `call`, which outlives the store.
std::unique_ptr<KeychainStore> makeKeychainStore(const KeychainOptions& options, CallContext& call);

} // namespace zarn::linux_backend
