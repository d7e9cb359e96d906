// SPDX-License-Identifier: MIT
#include "app/appearance.h"

#include "tests/app/app_fixture.h"

namespace zarn {

namespace {

class AppearanceTest : public AppTest {
protected:
    Appearance appearance{platform.settings.standard(), texts};
    memory::MemoryView view{platform.events};
    memory::MemoryTextView textView;
};

std::string plainText(const AttributedText& text)
{
    std::string plain;
    for (const auto& run : text)
        plain += run.text;
    return plain;
}

TEST_F(AppearanceTest, OnlyTheTextDarkIsDark)
{
    EXPECT_FALSE(appearance.isDarkMode());
    const struct {
        Value stored;
        bool dark;
    } rows[] = {{"Dark", true}, {"dark", false}, {"Light", false}, {"", false}, {1, false},
        {true, false}, {"Dark ", false}};
    for (const auto& row : rows) {
        standard().globalValues["AppleInterfaceStyle"] = row.stored;
        EXPECT_EQ(appearance.isDarkMode(), row.dark) << describe(row.stored);
    }
}

TEST_F(AppearanceTest, TheNoticeIsFourParagraphsInOrder)
{
    EXPECT_EQ(plainText(appearance.noticeText()),
        "Zarn Actions adds interactions with the Zarn Pro server to Apple Shortcuts. It is not "
        "part of the Zarn product line, is not supported through Zarn's usual support channels, "
        "and has not been tested or validated by Zarn's internal compliance, quality or "
        "product-security processes.\n"
        "\nPlease navigate to publisher.example/feedback and submit feedback\n"
        "\nWarning: Failure to test shortcuts thoroughly on non production devices could result "
        "in data loss.\n"
        "    \nThis software is licensed under the terms of the Example Licence Agreement.\n\n"
        "Copyright \u00a9 2024 Example Software.");
}

TEST_F(AppearanceTest, EveryRunHasItsFontColourAndLink)
{
    const auto notice = appearance.noticeText();
    const struct {
        const char* start;
        const char* font;
        std::optional<std::string> link;
    } rows[] = {
        {"Zarn Actions adds", "", std::nullopt},
        {"\nPlease navigate to ", "", std::nullopt},
        {"publisher.example/feedback", "", "https://publisher.example/feedback"},
        {" and submit feedback\n", "", std::nullopt},
        {"\nWarning: ", "HelveticaNeue-Italic", std::nullopt},
        {"    \nThis software", "", std::nullopt},
        {"Example Licence Agreement", "", "https://publisher.example/agreement.pdf"},
        {".\n\nCopyright", "", std::nullopt},
    };
    ASSERT_EQ(notice.size(), std::size(rows));
    for (std::size_t i = 0; i < notice.size(); ++i) {
        EXPECT_TRUE(notice[i].text.starts_with(rows[i].start)) << notice[i].text;
        EXPECT_EQ(notice[i].font, (Font{rows[i].font, 12}));
        EXPECT_EQ(notice[i].link, rows[i].link);
        EXPECT_EQ(notice[i].color, TextColor::Black);
    }
    EXPECT_EQ(notice[2].text, "publisher.example/feedback");
    EXPECT_EQ(notice[6].text, "Example Licence Agreement");
}

TEST_F(AppearanceTest, OnlyTheFirstOccurrenceIsALink)
{
    texts.agreementTitle = "software";
    Appearance other{platform.settings.standard(), texts};
    int links = 0;
    std::string before;
    for (const auto& run : other.noticeText()) {
        if (run.link == texts.agreementUrl) {
            ++links;
            EXPECT_TRUE(before.ends_with("    \nThis "));
        }
        before += run.text;
    }
    EXPECT_EQ(links, 1);
}

TEST_F(AppearanceTest, WithoutAnAddressItsParagraphStaysPlain)
{
    texts.feedbackAddress = "";
    texts.agreementTitle = "";
    Appearance other{platform.settings.standard(), texts};
    EXPECT_EQ(other.noticeText().size(), 4U);
    for (const auto& run : other.noticeText())
        EXPECT_EQ(run.link, std::nullopt);
}

TEST_F(AppearanceTest, TheTextColourIsTakenOnFirstUseAndReplacedByEveryPainting)
{
    standard().globalValues["AppleInterfaceStyle"] = "Dark";
    EXPECT_EQ(appearance.noticeText().front().color, TextColor::White);
    standard().globalValues.clear();
    EXPECT_EQ(appearance.noticeText().front().color, TextColor::White);
    appearance.applyAppearance(false, view, &textView);
    EXPECT_EQ(appearance.noticeText().front().color, TextColor::Black);
    EXPECT_EQ(textView.attributedText(), appearance.noticeText());
}

TEST_F(AppearanceTest, TheGreyIsTheSameAndOnlyTheAlphaChanges)
{
    view.setWantsLayer(true);
    appearance.applyAppearance(true, view, &textView);
    EXPECT_EQ(view.greyLevel, 0.2);
    EXPECT_EQ(view.alpha, 1.0);
    appearance.applyAppearance(false, view, &textView);
    EXPECT_EQ(view.greyLevel, 0.2);
    EXPECT_EQ(view.alpha, 0.2);
}

TEST_F(AppearanceTest, ThePaintedModeIsTheArgumentAndTheTextColourIsAskedForAgain)
{
    view.setWantsLayer(true);
    standard().globalValues["AppleInterfaceStyle"] = "Dark";
    appearance.applyAppearance(false, view, &textView);
    EXPECT_EQ(view.alpha, 0.2);
    EXPECT_EQ(textView.attributedText().front().color, TextColor::White);
}

TEST_F(AppearanceTest, AViewWithoutALayerIsNotPainted)
{
    appearance.applyAppearance(true, view, &textView);
    EXPECT_EQ(view.alpha, -1);
    EXPECT_EQ(textView.timesFilled, 1);
}

TEST_F(AppearanceTest, ATextViewWithoutStorageIsLeftAlone)
{
    textView.withTextStorage = false;
    appearance.applyAppearance(true, view, &textView);
    appearance.applyAppearance(true, view, nullptr);
    EXPECT_EQ(textView.timesFilled, 0);
}

} // namespace

} // namespace zarn
