// SPDX-License-Identifier: MIT
#include "tests/contract/notification_center_contract.h"

#include <utility>

namespace zarn {

using Texts = std::vector<std::string>;

TEST_F(NotificationCenterContract, AnObserverHearsEachChangeOnce)
{
    observe("panel");
    EXPECT_EQ(heard, Texts{});
    fixture->changeAppearance();
    EXPECT_EQ(heard, Texts{"panel"});
    fixture->changeAppearance();
    EXPECT_EQ(heard, (Texts{"panel", "panel"}));
}

TEST_F(NotificationCenterContract, ObserversHearInTheOrderInWhichTheyCame)
{
    observe("second panel");
    observe("first panel");
    fixture->changeAppearance();
    EXPECT_EQ(heard, (Texts{"second panel", "first panel"}));
}

TEST_F(NotificationCenterContract, AnObserverOfAnotherNameHearsNothing)
{
    center.addObserver(this, "AnotherNotification", [this] { heard.emplace_back("another"); });
    observe("panel");
    fixture->changeAppearance();
    EXPECT_EQ(heard, Texts{"panel"});
}

TEST_F(NotificationCenterContract, ARemovedObserverHearsNothingAndTheOthersStillDo)
{
    observe("closed");
    observe("open");
    forget("closed");
    fixture->changeAppearance();
    EXPECT_EQ(heard, Texts{"open"});
}

TEST_F(NotificationCenterContract, RemovingForOneNameKeepsTheOther)
{
    observe("panel");
    int identity = 0;
    center.addObserver(&identity, themeChanged, [this] { heard.emplace_back("kept"); });
    center.removeObserver(&identity, "AnotherNotification");
    fixture->changeAppearance();
    EXPECT_EQ(heard, (Texts{"panel", "kept"}));
}

TEST_F(NotificationCenterContract, RemovingWhatWasNeverAddedDoesNothing)
{
    forget("stranger");
    observe("panel");
    fixture->changeAppearance();
    EXPECT_EQ(heard, Texts{"panel"});
}

TEST_F(NotificationCenterContract, AnObserverMayRemoveItselfWhileItIsTold)
{
    center.addObserver(this, themeChanged, [this] {
        heard.emplace_back("once");
        center.removeObserver(this, themeChanged);
    });
    fixture->changeAppearance();
    fixture->changeAppearance();
    EXPECT_EQ(heard, Texts{"once"});
}

TEST_F(NotificationCenterContract, AnObserverRemovedByAnotherWhileADeliveryRunsIsNotCalled)
{
    int gone = 0;
    center.addObserver(this, themeChanged, [&] {
        heard.emplace_back("closes the other");
        center.removeObserver(&gone, themeChanged);
    });
    center.addObserver(&gone, themeChanged, [this] { heard.emplace_back("gone"); });
    fixture->changeAppearance();
    EXPECT_EQ(heard, Texts{"closes the other"});
}

TEST_F(NotificationCenterContract, AnObserverAddedWhileADeliveryRunsHearsTheNextOne)
{
    bool isAdded = false;
    center.addObserver(this, themeChanged, [&] {
        heard.emplace_back("opens another");
        if (!std::exchange(isAdded, true))
            observe("added");
    });
    fixture->changeAppearance();
    EXPECT_EQ(heard, Texts{"opens another"});
    fixture->changeAppearance();
    EXPECT_EQ(heard, (Texts{"opens another", "opens another", "added"}));
}

} // namespace zarn
