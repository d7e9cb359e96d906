// SPDX-License-Identifier: MIT
#pragma once

#include "platform/notification_center.h"

#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <string>
#include <vector>

namespace zarn {

class NotificationCenterFixture {
public:
    virtual ~NotificationCenterFixture() = default;
    virtual DistributedNotificationCenter& center() = 0;
    /// The desktop's colour preference changes; returns when the change was delivered.
    virtual void changeAppearance() = 0;
};

/// Made by the backend that this is linked with.
std::unique_ptr<NotificationCenterFixture> makeNotificationCenterFixture();

/// What every notification center has to do.
class NotificationCenterContract : public testing::Test {
protected:
    void observe(const std::string& who)
    {
        center.addObserver(
            &*m_identities.insert(who).first, themeChanged, [this, who] { heard.push_back(who); });
    }
    void forget(const std::string& who)
    {
        center.removeObserver(&*m_identities.insert(who).first, themeChanged);
    }

    static constexpr auto themeChanged = "AppleInterfaceThemeChangedNotification";
    std::unique_ptr<NotificationCenterFixture> fixture = makeNotificationCenterFixture();
    DistributedNotificationCenter& center = fixture->center();
    std::vector<std::string> heard;

private:
    std::set<std::string> m_identities;
};

} // namespace zarn
