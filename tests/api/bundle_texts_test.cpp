// SPDX-License-Identifier: MIT
#include "api/bundle_texts.h"

#include "platform/memory/memory_desktop.h"

#include <gtest/gtest.h>

namespace zarn {
namespace {

TEST(BundleTexts, ReadsTheInformationDictionary)
{
    const memory::MemoryBundle bundle;
    const BundleTexts texts(bundle);
    EXPECT_EQ(texts.appVersion(), "1.4.2");
    EXPECT_EQ(texts.buildVersion(), "57");
    EXPECT_EQ(texts.appExecutableName(), "zarn-actions");
}

TEST(BundleTexts, EncodesEverythingButLettersAndDigitsInTheUserAgent)
{
    memory::MemoryBundle bundle;
    (*bundle.info)["CFBundleExecutable"] = "Zarn Actions_2.\xC3\xA4";
    EXPECT_EQ(BundleTexts(bundle).userAgentText(), "Zarn%20Actions%5F2%2E%C3%A4/1.4.2");
}

TEST(BundleTexts, EveryLetterAndDigitStaysAndTheirNeighboursAreEncoded)
{
    memory::MemoryBundle bundle;
    (*bundle.info)["CFBundleExecutable"] = "/09:@AZ[`az{";
    EXPECT_EQ(BundleTexts(bundle).userAgentText(), "%2F09%3A%40AZ%5B%60az%7B/1.4.2");
}

TEST(BundleTexts, EachTextIsReadOnce)
{
    memory::MemoryBundle bundle;
    const BundleTexts texts(bundle);
    EXPECT_EQ(texts.appVersion(), "1.4.2");
    bundle.info.reset();
    EXPECT_EQ(texts.appVersion(), "1.4.2");
}

TEST(BundleTextsDeathTest, AMissingTextStopsTheProcess)
{
    memory::MemoryBundle bundle;
    const BundleTexts texts(bundle);
    (*bundle.info)["CFBundleVersion"] = 57;
    EXPECT_DEATH(
        texts.buildVersion(), "fatal: the information dictionary has no CFBundleVersion\n");
    bundle.info->erase("CFBundleExecutable");
    EXPECT_DEATH(static_cast<void>(texts.userAgentText()),
        "fatal: the information dictionary has no CFBundleExecutable\n");
    bundle.info.reset();
    EXPECT_DEATH(texts.appVersion(),
        "fatal: the information dictionary has no CFBundleShortVersionString\n");
}

} // namespace
} // namespace zarn
