// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/keychain/call_context.h"
#include "platform/linux/keychain/keychain_store.h"

namespace zarn::linux_backend {

inline constexpr auto keychainModuleFile = "zarn-keychain.so";
inline constexpr auto keychainModuleFunction = "zarnMakeKeychainStore";

} // namespace zarn::linux_backend

/// The one function of the module zarn-keychain: makeKeychainStore() for a caller that owns the
/// store. Program and module are built together, so their types agree.
extern "C" __attribute__((visibility("default"))) zarn::linux_backend::KeychainStore*
zarnMakeKeychainStore(
    const zarn::linux_backend::KeychainOptions* options, zarn::linux_backend::CallContext* call);
