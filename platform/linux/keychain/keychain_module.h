// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/keychain/keychain_store.h"

/// The one function of the module zarn-keychain: makes a store, which the caller owns. Program and
/// module are built together, so their types agree.
extern "C" __attribute__((visibility("default"))) zarn::linux_backend::KeychainStore*
zarnMakeKeychainStore(const zarn::linux_backend::KeychainOptions* options);

namespace zarn::linux_backend {

inline constexpr auto keychainModuleFile = "zarn-keychain.so";
inline constexpr auto keychainModuleFunction = "zarnMakeKeychainStore";

} // namespace zarn::linux_backend
