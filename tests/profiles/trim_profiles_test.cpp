// SPDX-License-Identifier: MIT
#include "profiles/profile_store.h"
#include "tests/profiles/login_fixture.h"

#include <chrono>
#include <optional>
#include <random>

namespace zarn {

namespace {

// The rule as it is written down, pass by pass. Slow, and obviously right.
void trimPassByPass(ProfileMap& profiles, Date now)
{
    while (profiles.size() > profileTrimThreshold) {
        auto oldest = now;
        std::optional<std::string> candidate;
        for (const auto& [name, value] : profiles) {
            const auto& record = *value.dictionary();
            if (record.empty() || !record.contains("date")) {
                candidate = name;
                break;
            }
            const auto date = *record.at("date").date();
            if (date < oldest) {
                candidate = name;
                oldest = date;
            }
        }
        if (!candidate)
            return;
        profiles.erase(*candidate);
    }
}

class TrimProfilesTest : public LoginTest {
protected:
    double now() const { return platform.clock.time.secondsSince1970; }
    ProfileMap datedProfiles(int count) const
    {
        ProfileMap profiles;
        for (int i = 0; i < count; ++i)
            profiles[std::to_string(1000 + i)] = profileRecord("https://s", now() - 10'000 + i);
        return profiles;
    }
    ProfileStore store{domains, platform.clock};
};

using TrimProfilesDeathTest = TrimProfilesTest;

TEST_F(TrimProfilesTest, UpToThirtyNineProfilesStay)
{
    for (const int count : {0, 1, 38, 39}) {
        auto profiles = datedProfiles(count);
        store.trimProfiles(profiles);
        EXPECT_EQ(profiles, datedProfiles(count));
    }
}

TEST_F(TrimProfilesTest, TheOldestGoFirst)
{
    auto profiles = datedProfiles(41);
    store.trimProfiles(profiles);
    EXPECT_EQ(profiles.size(), 39U);
    EXPECT_FALSE(profiles.contains("1000"));
    EXPECT_FALSE(profiles.contains("1001"));
    EXPECT_TRUE(profiles.contains("1002"));
}

TEST_F(TrimProfilesTest, AnUndatedOrEmptyRecordGoesBeforeTheOldest)
{
    for (const auto& undated : {Value::Dictionary{}, Value::Dictionary{{"server", "https://u"}}}) {
        auto profiles = datedProfiles(39);
        profiles["zz"] = undated;
        store.trimProfiles(profiles);
        EXPECT_EQ(profiles, datedProfiles(39));
    }
}

TEST_F(TrimProfilesTest, UndatedRecordsGoInTheMapsOrder)
{
    auto profiles = datedProfiles(38);
    profiles["a"] = Value::Dictionary{};
    profiles["b"] = Value::Dictionary{{"server", "https://b"}};
    profiles["c"] = Value::Dictionary{};
    store.trimProfiles(profiles);
    EXPECT_EQ(profiles.size(), 39U);
    EXPECT_TRUE(profiles.contains("c"));
}

TEST_F(TrimProfilesTest, OfEquallyOldRecordsTheFirstGoes)
{
    ProfileMap profiles;
    for (int i = 0; i < 41; ++i)
        profiles[std::to_string(1000 + i)] = profileRecord("https://s", 5);
    store.trimProfiles(profiles);
    EXPECT_EQ(profiles.begin()->first, "1002");
    EXPECT_EQ(profiles.size(), 39U);
}

TEST_F(TrimProfilesTest, DatesFromNowOnAreNeverChosenAndTheTrimStops)
{
    ProfileMap profiles;
    for (int i = 0; i < 60; ++i)
        profiles[std::to_string(1000 + i)] = profileRecord("https://s", now() + i);
    const auto before = profiles;
    store.trimProfiles(profiles);
    EXPECT_EQ(profiles, before);
    profiles["1030"] = profileRecord("https://s", now() - 1);
    store.trimProfiles(profiles);
    EXPECT_EQ(profiles.size(), 59U);
    EXPECT_FALSE(profiles.contains("1030"));
}

TEST_F(TrimProfilesTest, ItWritesNothing)
{
    auto profiles = datedProfiles(60);
    store.trimProfiles(profiles);
    EXPECT_TRUE(events().empty());
}

TEST_F(TrimProfilesDeathTest, ADateThatIsNoneStopsTheProcessWhenAPassReachesIt)
{
    auto profiles = datedProfiles(40);
    profiles["1030"] = Value::Dictionary{{"server", "https://s"}, {"date", "May"}};
    EXPECT_DEATH(store.trimProfiles(profiles), "a profile whose date is no date");
    // Thirty-nine records are never walked, and a pass stops at the first undated record.
    profiles.erase("1000");
    store.trimProfiles(profiles);
    profiles["1"] = Value::Dictionary{};
    store.trimProfiles(profiles);
    EXPECT_EQ(profiles.size(), 39U);
    EXPECT_TRUE(profiles.contains("1030"));
    // Reached before the undated record, or after all undated ones are gone.
    profiles["1031x"] = Value::Dictionary{};
    EXPECT_DEATH(store.trimProfiles(profiles), "a profile whose date is no date");
    profiles.erase("1031x");
    profiles["1"] = Value::Dictionary{};
    profiles["1040"] = profileRecord("https://s", 4);
    EXPECT_DEATH(store.trimProfiles(profiles), "a profile whose date is no date");
}

TEST_F(TrimProfilesTest, OneWalkRemovesWhatPassAfterPassWould)
{
    std::mt19937 random(20240817);
    const auto upTo = [&](int most) { return std::uniform_int_distribution<int>(0, most)(random); };
    for (int round = 0; round < 3000; ++round) {
        ProfileMap profiles;
        const int size = upTo(90);
        const int undatedShare = upTo(3) == 0 ? 40 : 1;
        // Few distinct dates make ties; some lie in the future, some are exactly now.
        const int spread = upTo(1) == 0 ? 6 : 1000;
        for (int i = 0; i < size; ++i) {
            const auto name = std::to_string(upTo(500));
            if (upTo(99) < undatedShare)
                profiles[name] = upTo(1) == 0 ? Value::Dictionary{}
                                              : Value::Dictionary{{"server", "https://u"}};
            else
                profiles[name] = profileRecord("https://s", now() - spread / 2 + upTo(spread));
        }
        auto expected = profiles;
        trimPassByPass(expected, platform.clock.time);
        store.trimProfiles(profiles);
        ASSERT_EQ(profiles, expected) << "round " << round;
    }
}

// Pass by pass this would be ten thousand million steps.
TEST_F(TrimProfilesTest, AHundredThousandProfilesCostNoMoreThanSortingThem)
{
    ProfileMap profiles;
    for (int i = 0; i < 100'000; ++i)
        profiles["server " + std::to_string(i)]
            = profileRecord("https://s" + std::to_string(i), now() - 1 - (i * 7919) % 100'000);
    profiles["undated"] = Value::Dictionary{};
    const auto start = std::chrono::steady_clock::now();
    store.trimProfiles(profiles);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
    ASSERT_EQ(profiles.size(), 39U);
    for (const auto& [name, record] : profiles)
        EXPECT_GE(record.dictionary()->at("date").date()->secondsSince1970, now() - 39);
}

} // namespace

} // namespace zarn
