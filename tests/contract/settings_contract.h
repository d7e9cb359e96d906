// SPDX-License-Identifier: MIT
#pragma once

#include "platform/settings.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace zarn {

/// Lends settings in which nothing is stored.
class SettingsFixture {
public:
    virtual ~SettingsFixture() = default;
    virtual Settings& settings() = 0;
    /// The same settings as another process has them open.
    virtual Settings& otherProcess() = 0;
    virtual void setLaunchArgument(const std::string& key, const std::string& value) = 0;
    virtual void setGlobalValue(const std::string& key, const Value& value) = 0;
    /// From now on no write to `suiteName` succeeds.
    virtual void refuseWrites() = 0;
    static constexpr auto suiteName = "group.R3V8N1P6WB.zarnie.SharedZPMA";
};

/// Made by the backend that this is linked with.
std::unique_ptr<SettingsFixture> makeSettingsFixture();

/// What all settings have to do.
class SettingsContract : public testing::Test {
protected:
    SettingsContract()
        : fixture(makeSettingsFixture())
        , settings(fixture->settings())
        , standard(settings.standard())
        , suite(*settings.suite(suiteName))
    {
    }

    static constexpr auto suiteName = SettingsFixture::suiteName;

private:
    const std::unique_ptr<SettingsFixture> fixture;

protected:
    SettingsFixture& backend() { return *fixture; }
    Settings& settings;
    SettingsDomain& standard;
    SettingsDomain& suite;
};

} // namespace zarn
