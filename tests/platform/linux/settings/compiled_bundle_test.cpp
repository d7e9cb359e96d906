// SPDX-License-Identifier: MIT
#include "platform/linux/settings/compiled_bundle.h"

#include "zarn/product_constants.h"

#include <gtest/gtest.h>

namespace zarn::linux_backend {
namespace {

TEST(CompiledBundle, IsTheProgramOfThisBuild)
{
    const CompiledBundle bundle;
    ASSERT_NE(bundle.infoDictionary(), nullptr);
    EXPECT_EQ(*bundle.infoDictionary(),
        (Value::Dictionary{{"CFBundleExecutable", "zarn-actions"},
            {"CFBundleIdentifier", "com.zarn.ZarnActions"}, {"CFBundleName", "Zarn Actions"},
            {"CFBundleShortVersionString", product::shortVersion},
            {"CFBundleVersion", product::buildNumber}}));
}

TEST(CompiledBundle, HasEveryTextOfTheProduct)
{
    const auto texts = compiledProductTexts();
    EXPECT_EQ(texts.updateCheckPageURL, product::updateCheckPageURL);
    EXPECT_TRUE(texts.updateCheckPageURL.starts_with("https://")) << texts.updateCheckPageURL;
    EXPECT_EQ(texts.feedbackAddress, product::feedbackAddress);
    EXPECT_EQ(texts.agreementTitle, product::agreementTitle);
    EXPECT_EQ(texts.agreementUrl, product::agreementUrl);
    EXPECT_EQ(texts.publisherName, product::publisherName);
    for (const auto& text :
        {texts.feedbackAddress, texts.agreementTitle, texts.agreementUrl, texts.publisherName})
        EXPECT_NE(text, "");
}

} // namespace
} // namespace zarn::linux_backend
