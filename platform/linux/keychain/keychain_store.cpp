// SPDX-License-Identifier: MIT
#include "platform/linux/keychain/keychain_store.h"

#include "platform/linux/files/paths.h"

namespace zarn::linux_backend {

std::optional<KeychainChoice> keychainChoice(std::string_view name)
{
    if (name == keychainKinds[0].name)
        return KeychainChoice::SecretService;
    if (name == keychainKinds[1].name)
        return KeychainChoice::File;
    return std::nullopt;
}

KeychainOptions keychainOptions(KeychainChoice choice)
{
    const auto paths = Paths::fromEnvironment();
    return {choice, paths.data, paths.state, true};
}

std::optional<std::string> keychainMessageText(KeychainStatus status)
{
    // Without a final full stop: the log sets one behind the text.
    switch (status) {
    case keychain_status::success:
        return "No error";
    case keychain_status::ioFailure:
        return "The keychain could not be read or written";
    case keychain_status::userCanceled:
        return "The user refused access to the keychain";
    case keychain_status::notAvailable:
        return "No keychain is available";
    case keychain_status::readOnly:
        return "The keychain cannot be changed";
    case keychain_status::invalidKeychain:
        return "The keychain file cannot be opened with its key";
    case keychain_status::duplicateItem:
        return "The item already exists in the keychain";
    case keychain_status::itemNotFound:
        return "The item could not be found in the keychain";
    case keychain_status::noDefaultKeychain:
        return "There is no default keychain";
    case keychain_status::interactionNotAllowed:
        return "The keyring is locked or does not answer";
    default:
        return std::nullopt;
    }
}

} // namespace zarn::linux_backend
