// SPDX-License-Identifier: MIT
#include "platform/linux/settings/plist_settings.h"
#include "tests/support/scratch_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <random>
#include <sstream>

namespace zarn::linux_backend {
namespace {

namespace fs = std::filesystem;

constexpr auto name = "group.R3V8N1P6WB.zarnie.SharedZPMA";

std::string contentsOf(const std::string& path)
{
    std::stringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
}

/// A settings file as the program writes it, and what becomes of damaged forms of it.
class SettingsDamage : public testing::Test {
protected:
    SettingsDamage()
    {
        PlistSettings settings(folder, {}, nullptr);
        settings.domain(name)->set("serversDict",
            Value::Dictionary{{"Köln <1>",
                                  Value::Dictionary{{"server", "https://a.example:8443/"},
                                      {"date", Date{1740824100}}}},
                {"b", Value::Dictionary{{"server", "https://b.example"}, {"date", Date{0}}}}});
        settings.domain(name)->set("data", Data{1, 2, 3, 255});
        settings.domain(name)->set("list", Value::Array{1, 2.5, true, "text"});
        sample = contentsOf(path);
    }

    /// One start of the program on these bytes: a look, then a change.
    void startOn(const std::string& bytes)
    {
        fs::remove_all(folder);
        fs::create_directory(folder);
        fs::permissions(folder, fs::perms::owner_all);
        std::ofstream(path) << bytes;
        fs::permissions(path, fs::perms::owner_read | fs::perms::owner_write);
        testing::internal::CaptureStderr();
        PlistSettings settings(folder, {}, nullptr);
        auto& domain = *settings.domain(name);
        const auto before = domain.dictionary();
        const auto status = domain.trySet("added", 7);
        const auto text = testing::internal::GetCapturedStderr();
        ASSERT_TRUE(status.ok()) << status.error().message;
        auto expected = before;
        expected["added"] = 7;
        PlistSettings later(folder, {}, nullptr);
        ASSERT_EQ(later.domain(name)->dictionary(), expected);
        checkCopy(bytes, text);
    }

    /// Said in one line and kept, or neither.
    void checkCopy(const std::string& bytes, const std::string& text)
    {
        std::vector<std::string> copies;
        for (const auto& entry : fs::directory_iterator(folder)) {
            if (entry.path().string().find(".damaged-") != std::string::npos)
                copies.push_back(entry.path());
        }
        ASSERT_LE(copies.size(), 1U);
        if (copies.empty()) {
            ASSERT_EQ(text, "");
            return;
        }
        ++damaged;
        ASSERT_EQ(contentsOf(copies[0]), bytes);
        ASSERT_EQ(std::count(text.begin(), text.end(), '\n'), 1) << text;
        ASSERT_NE(text.find(copies[0]), std::string::npos) << text;
    }

    const ScratchFolder scratch;
    const std::string folder = scratch.path() + "/zarn-actions";
    const std::string path = folder + "/" + name + ".plist";
    std::string sample;
    int damaged = 0;
};

TEST_F(SettingsDamage, EveryTruncationIsKeptAndTheProgramGoesOn)
{
    // Without its last line break the file is still whole.
    ASSERT_TRUE(sample.ends_with("</plist>\n"));
    for (std::size_t length = 0; length + 1 < sample.size(); ++length) {
        SCOPED_TRACE(length);
        startOn(sample.substr(0, length));
        ASSERT_EQ(damaged, static_cast<int>(length) + 1);
    }
    std::printf("Settings damage: %d truncations kept and reported in one line each\n", damaged);
}

TEST_F(SettingsDamage, NoMutationIsLostOrStopsTheProgram)
{
    const int rounds = std::getenv("ZARN_LONG") ? 10000 : 500;
    std::mt19937 random(7);
    int done = 0;
    for (int round = 0; round < rounds; ++round) {
        SCOPED_TRACE(round);
        auto bytes = sample;
        for (auto count = 1 + random() % 4; count > 0; --count) {
            const auto at = random() % bytes.size();
            switch (random() % 4) {
            case 0:
                bytes[at] = static_cast<char>(random() % 256);
                break;
            case 1:
                bytes.erase(at, 1 + random() % 20);
                break;
            case 2:
                bytes.insert(at, 1, static_cast<char>(random() % 256));
                break;
            default:
                bytes.insert(at, bytes.substr(random() % bytes.size(), random() % 40));
                break;
            }
        }
        startOn(bytes);
        if (HasFatalFailure())
            break;
        ++done;
    }
    std::printf("Settings damage: %d random mutations, %d of them damage, kept and reported in one "
                "line each\n",
        done, damaged);
    EXPECT_GT(damaged, rounds / 4);
}

} // namespace
} // namespace zarn::linux_backend
