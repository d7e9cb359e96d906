// SPDX-License-Identifier: MIT
#include "profiles/credentials.h"

#include "api/connection_state.h"
#include "base/utf8.h"
#include "log/write_to_log.h"
#include "platform/serial_queue.h"

#include <chrono>

namespace zarn {

namespace {

Data bytesOf(const std::string& text)
{
    return {text.begin(), text.end()};
}

std::optional<std::string> textOf(const Data& bytes)
{
    std::string text(bytes.begin(), bytes.end());
    return isUtf8(text) ? std::optional(text) : std::nullopt;
}

KeychainQuery queryFor(const std::string& itemName)
{
    return {std::string(keychainAccessGroup), itemName, std::nullopt, true};
}

} // namespace

std::string Credentials::itemNameFor(const std::string& service) const
{
    if (service == currentProfileService)
        return service;
    const auto prefix = m_deps.connection.useApiClient == 1 ? apiClientItemPrefix : userItemPrefix;
    return std::string(prefix) + service;
}

void Credentials::writeEntry(const std::string& message)
{
    WriteToLog(m_deps.log).writeEntry(message);
}

void Credentials::save(
    const std::string& service, const std::string& account, const std::string& secret)
{
    if (service.empty())
        return;
    m_keychainItemName = itemNameFor(service);
    if (!isUtf8(secret))
        return;
    m_deps.keychainQueue.async([self = shared_from_this(), account, secret, service] {
        self->writeKeychainItem(account, secret, service);
    });
}

void Credentials::writeKeychainItem(
    const std::string& account, const std::string& secret, const std::string& service)
{
    const auto existing = checkExisting(m_keychainItemName, account);
    if (existing.empty()) {
        addItem(account, secret, service);
        return;
    }
    if (const auto it = existing.find(account); it != existing.end() && it->second == secret)
        return;
    updateItem(account, secret, service);
}

void Credentials::updateItem(
    const std::string& account, const std::string& secret, const std::string& service)
{
    // Without the account on purpose: the first item of the service is the one that is read back.
    const auto status = m_deps.keychain.update(queryFor(m_keychainItemName), bytesOf(secret));
    if (status == keychain_status::success)
        return;
    // This odd pairing is intended: a success is silent, and a failure without a text reads like
    // one.
    const bool hasText = failureText(status).has_value();
    writeEntry("keychain item for service " + service + ", account " + account
        + (hasText ? ", failed to update." : ", has been updated."));
}

void Credentials::addItem(
    const std::string& account, const std::string& secret, const std::string& service)
{
    const auto status = m_deps.keychain.add(
        {std::string(keychainAccessGroup), m_keychainItemName, account, bytesOf(secret)});
    if (status == keychain_status::success)
        return;
    if (const auto text = failureText(status))
        writeEntry(
            "Write failed for service " + service + ", account " + account + ": " + *text + ".");
}

std::optional<std::string> Credentials::failureText(KeychainStatus status)
{
    auto text = m_deps.keychain.messageText(status);
    if (m_deps.notStored)
        m_deps.notStored("The keyring did not take the secret" + (text ? ": " + *text : "") + ".");
    return text;
}

AccountMap Credentials::checkExisting(const std::string& itemName, const std::string& account)
{
    m_userPassDict.clear();
    auto query = queryFor(itemName);
    query.account = account;
    // The only query that leaves the choice of the database to the system: keep it that way,
    // entries may be in either.
    query.useDataProtectionKeychain = false;
    const auto match = m_deps.keychain.copyMatching(query);
    if (match.status == keychain_status::itemNotFound)
        writeEntry(
            "[credentials.checkExisting] lookup error occurred: " + std::to_string(match.status));
    if (match.status != keychain_status::success || !match.item)
        return {};
    const auto secret = textOf(match.item->secret);
    if (!secret)
        return {};
    m_userPassDict[account] = *secret;
    return m_userPassDict;
}

AccountMap Credentials::retrieve(const std::string& service)
{
    m_keychainItemName = itemNameFor(service);
    return lookupItem(m_keychainItemName);
}

bool finishKeychainWrites(
    SerialQueue& queue, const Keychain& keychain, const std::function<void()>& meanwhile)
{
    constexpr std::chrono::milliseconds step{50};
    constexpr std::chrono::milliseconds silenceLimit = std::chrono::seconds(10);
    // The keychain itself waits no longer for its user.
    constexpr std::chrono::milliseconds limit = std::chrono::minutes(6);
    std::chrono::milliseconds silence{0};
    std::chrono::milliseconds waited{0};
    while (!queue.drain(step)) {
        meanwhile();
        waited += step;
        if (!keychain.isWaitingForUser())
            silence += step;
        if (silence >= silenceLimit || waited >= limit)
            return false;
    }
    return true;
}

AccountMap Credentials::lookupItem(const std::string& itemName)
{
    const auto match = m_deps.keychain.copyMatching(queryFor(itemName));
    if (match.status != keychain_status::success || !match.item)
        return {};
    const auto secret = textOf(match.item->secret);
    if (!secret)
        return {};
    m_userPassDict[match.item->account] = *secret;
    return m_userPassDict;
}

} // namespace zarn
