// SPDX-License-Identifier: MIT
#include "platform/linux/keychain/keychain_module.h"

#include "platform/linux/keychain/keychain_factory.h"

zarn::linux_backend::KeychainStore* zarnMakeKeychainStore(
    const zarn::linux_backend::KeychainOptions* options, zarn::linux_backend::CallContext* call)
{
    return zarn::linux_backend::makeKeychainStore(*options, *call).release();
}
