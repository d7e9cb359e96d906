// SPDX-License-Identifier: MIT
#pragma once

#include "platform/keychain.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>

namespace zarn {

/// Lends a keychain in which nothing is stored under `accessGroup()`.
class KeychainFixture {
public:
    virtual ~KeychainFixture() = default;
    virtual Keychain& keychain() = 0;
    virtual std::string accessGroup() const { return "TEST.org.zarnie.contract"; }
    /// Whether names may hold a NUL; a keychain that cannot keep one refuses the item.
    virtual bool keepsNul() const { return true; }
    /// What a later start of the program would see.
    virtual Keychain& reopened() = 0;
};

struct KeychainBackend {
    std::string name;
    std::function<std::unique_ptr<KeychainFixture>()> make;
};

/// What every keychain has to do.
class KeychainContract : public testing::TestWithParam<KeychainBackend> {
protected:
    KeychainContract()
        : m_fixture(GetParam().make())
        , keychain(m_fixture->keychain())
        , group(m_fixture->accessGroup())
    {
    }

    KeychainItem item(
        const std::string& service, const std::string& account, const std::string& secret) const
    {
        return {group, service, account, Data(secret.begin(), secret.end())};
    }
    KeychainQuery query(const std::string& service) const
    {
        return {group, service, std::nullopt, true};
    }
    KeychainQuery query(const std::string& service, const std::string& account) const
    {
        return {group, service, account, true};
    }
    /// "account=secret" of the first match, or the status in decimal.
    std::string found(const KeychainQuery& query) const { return found(keychain, query); }
    static std::string found(Keychain& keychain, const KeychainQuery& query);

private:
    std::unique_ptr<KeychainFixture> m_fixture;

protected:
    Keychain& keychain;
    const std::string group;
    bool keepsNul() const { return m_fixture->keepsNul(); }
    Keychain& reopened() { return m_fixture->reopened(); }
};

inline std::string backendName(const testing::TestParamInfo<KeychainBackend>& info)
{
    return info.param.name;
}

} // namespace zarn
