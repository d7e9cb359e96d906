// SPDX-License-Identifier: MIT
#include "platform/linux/keychain/keychain_factory.h"

#include "platform/linux/keychain/moving_keychain.h"

namespace zarn::linux_backend {

namespace {

/// No bus, or a bus that knows no such service. A service that is locked, slow or refuses is there,
/// and so may be one behind a bus that cannot be reached.
bool isServiceProvablyAbsent(CallContext& call)
{
    return SecretConnection(call).find() == CallOutcome::Absent;
}

} // namespace

std::unique_ptr<KeychainStore> makeKeychainStore(const KeychainOptions& options, CallContext& call)
{
    auto file = std::make_unique<FileKeychain>(options.dataFolder, options.stateFolder, call);
    if (options.choice == KeychainChoice::File
        || (options.choice == KeychainChoice::Automatic && isServiceProvablyAbsent(call))) {
        call.report("no keyring service is used: items are kept in an encrypted file that is "
                    "protected by file permissions");
        return file;
    }
    return std::make_unique<MovingKeychain>(
        std::make_unique<SecretServiceKeychain>(call), std::move(file), options.moveItems, call);
}

} // namespace zarn::linux_backend
