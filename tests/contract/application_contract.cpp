// SPDX-License-Identifier: MIT
#include "tests/contract/application_contract.h"

#include <algorithm>
#include <thread>

namespace zarn {

using Texts = std::vector<std::string>;

void ApplicationContract::showAbout()
{
    storyboard().showWindow(storyboard().instantiateController("aboutWC"));
}

bool ApplicationContract::performMenuAction(std::string_view action)
{
    happens("menu " + std::string(action));
    return true;
}

// --- Start and end

TEST_F(ApplicationContract, ARunShowsTheInitialWindowBeforeAnythingHappens)
{
    Texts before;
    const int code = runWith({[&] {
        before = events();
        EXPECT_EQ(windowTitles(), Texts{"Zarn Actions"});
        EXPECT_TRUE(fixture->isInFront("Zarn Actions"));
        fixture->application().terminate();
    }});
    EXPECT_EQ(code, 0);
    EXPECT_EQ(std::count(before.begin(), before.end(), "launched"), 1);
    std::erase(before, "launched");
    EXPECT_EQ(before,
        (Texts{"LoginVC connectOutlets", "LoginVC viewDidLoad", "LoginVC viewWillAppear",
            "LoginVC viewDidAppear"}));
}

TEST_F(ApplicationContract, TerminatingReturnsAndNoLaterEventIsHandled)
{
    EXPECT_EQ(runWith({[&] {
                           events().clear();
                           fixture->application().terminate();
                           happens("terminate returned");
                       },
                  [&] { happens("a later event"); }}),
        0);
    EXPECT_EQ(events(), (Texts{"terminate returned", "terminating", "LoginVC ended"}));
}

TEST_F(ApplicationContract, WorkForTheMainThreadRunsThereLaterAndInItsOrder)
{
    auto& application = fixture->application();
    std::thread::id thread;
    EXPECT_EQ(runWith({[&] {
                           events().clear();
                           std::thread([&] {
                               application.performOnMainThread([&] {
                                   thread = std::this_thread::get_id();
                                   happens("first");
                               });
                           }).join();
                           application.performOnMainThread([&] { happens("second"); });
                           happens("submitted");
                       },
                  [&] {
                      fixture->settle();
                      application.terminate();
                      application.performOnMainThread([&] { happens("after the end"); });
                  }}),
        0);
    fixture->settle();
    EXPECT_EQ(thread, std::this_thread::get_id());
    EXPECT_EQ(events(), (Texts{"submitted", "first", "second", "terminating", "LoginVC ended"}));
}

TEST_F(ApplicationContract, NoControllerOutlivesTheRun)
{
    runWith({[&] {
        showAbout();
        probe("LoginVC").shownView().performSegue("termsOfUse");
        EXPECT_EQ(record.living.size(), 3U);
        fixture->application().terminate();
    }});
    EXPECT_TRUE(record.living.empty());
    EXPECT_EQ(windowTitles(), Texts{});
}

TEST_F(ApplicationContract, AnApplicationThatWasTerminatedBeforeItRanShowsNothing)
{
    fixture->application().terminate();
    EXPECT_EQ(runWith({[&] { happens("an event"); }}), 0);
    EXPECT_EQ(events(), Texts{});
}

TEST_F(ApplicationContract, TermsThatCannotBeClosedDoNotHoldUpTheEnd)
{
    record.onWillAppear["ToUVC"]
        = [](View& view) { view.window()->setStyleMask(window_style::fullSizeContentView); };
    EXPECT_EQ(runWith({[&] {
                           probe("LoginVC").shownView().performSegue("termsOfUse");
                           fixture->settle();
                       },
                  [&] {
                      EXPECT_FALSE(fixture->closeWindow(""));
                      fixture->application().terminate();
                  }}),
        0);
    EXPECT_TRUE(record.living.empty());
}

int ApplicationContract::responseAtTheEnd(std::vector<AlertButton> buttons)
{
    const Alert alert{"", "Remove it?", AlertStyle::Warning, std::move(buttons)};
    int response = 0;
    EXPECT_EQ(runWith({[&] {
                           fixture->alerts().whenOpen([&] { fixture->application().terminate(); });
                           response = fixture->alerts().runner().runModal(alert);
                       },
                  [&] { happens("a later event"); }}),
        0);
    EXPECT_EQ(std::count(events().begin(), events().end(), "a later event"), 0);
    return response;
}

TEST_F(ApplicationContract, AnOpenAlertDoesNotHoldUpTheEndAndPressesItsFirstButton)
{
    EXPECT_EQ(responseAtTheEnd({{"OK", ""}, {"Quit", ""}}), alertFirstButtonReturn);
}

TEST_F(ApplicationContract, AQuestionThatIsOpenAtTheEndIsCancelled)
{
    EXPECT_EQ(responseAtTheEnd({{"Remove", ""}, {"Cancel", ""}}), alertSecondButtonReturn);
}

TEST_F(ApplicationContract, AnOfferThatIsOpenAtTheEndIsIgnored)
{
    EXPECT_EQ(responseAtTheEnd({{"View", ""}, {"Ignore", ""}}), alertSecondButtonReturn);
}

// --- The last window

TEST_F(ApplicationContract, ClosingTheLastWindowEndsTheRun)
{
    EXPECT_EQ(runWith({[&] {
                           events().clear();
                           EXPECT_TRUE(fixture->closeWindow("Zarn Actions"));
                       },
                  [&] { happens("a later event"); }}),
        0);
    EXPECT_EQ(std::count(events().begin(), events().end(), "a later event"), 0);
    EXPECT_EQ(events().front(), "LoginVC viewWillDisappear");
    EXPECT_EQ(std::count(events().begin(), events().end(), "terminating"), 1);
}

TEST_F(ApplicationContract, DismissingTheLastViewEndsTheRun)
{
    EXPECT_EQ(runWith({[&] { probe("LoginVC").shownView().dismissViewController(); },
                  [&] { happens("a later event"); }}),
        0);
    EXPECT_EQ(std::count(events().begin(), events().end(), "a later event"), 0);
}

TEST_F(ApplicationContract, ADelegateMayKeepTheApplicationAliveWithoutWindows)
{
    m_endsWithWindows = false;
    EXPECT_EQ(runWith({[&] { EXPECT_TRUE(fixture->closeWindow("Zarn Actions")); },
                  [&] {
                      happens("alive");
                      EXPECT_EQ(windowTitles(), Texts{});
                      fixture->application().terminate();
                  }}),
        0);
    EXPECT_EQ(std::count(events().begin(), events().end(), "alive"), 1);
}

TEST_F(ApplicationContract, AnOpenAboutWindowKeepsTheApplicationAlive)
{
    EXPECT_EQ(runWith({[&] {
                           showAbout();
                           EXPECT_TRUE(fixture->isInFront("About"));
                       },
                  [&] { EXPECT_TRUE(fixture->closeWindow("Zarn Actions")); },
                  [&] {
                      happens("alive");
                      EXPECT_EQ(windowTitles(), Texts{"About"});
                      EXPECT_TRUE(fixture->closeWindow("About"));
                  },
                  [&] { happens("a later event"); }}),
        0);
    EXPECT_EQ(std::count(events().begin(), events().end(), "alive"), 1);
    EXPECT_EQ(std::count(events().begin(), events().end(), "a later event"), 0);
}

TEST_F(ApplicationContract, DismissingTheTermsKeepsTheApplicationAlive)
{
    EXPECT_EQ(runWith({[&] { probe("LoginVC").shownView().performSegue("termsOfUse"); },
                  [&] { probe("ToUVC").shownView().dismissViewController(); },
                  [&] {
                      happens("alive");
                      EXPECT_EQ(windowTitles(), Texts{"Zarn Actions"});
                      fixture->application().terminate();
                  }}),
        0);
    EXPECT_EQ(std::count(events().begin(), events().end(), "alive"), 1);
}

// --- Windows and menus

TEST_F(ApplicationContract, TheWindowsAreListedInTheOrderInWhichTheyWereShown)
{
    EXPECT_EQ(windowTitles(), Texts{});
    runWith({[&] {
                 const auto notShown = storyboard().instantiateController("aboutWC");
                 EXPECT_EQ(windowTitles(), Texts{"Zarn Actions"});
                 showAbout();
                 showAbout();
             },
        [&] {
            EXPECT_EQ(windowTitles(), (Texts{"Zarn Actions", "About", "About"}));
            EXPECT_EQ(fixture->application().windows(), fixture->application().windows());
            EXPECT_TRUE(fixture->closeWindow("Zarn Actions"));
        },
        [&] {
            EXPECT_EQ(windowTitles(), (Texts{"About", "About"}));
            fixture->application().terminate();
        }});
}

TEST_F(ApplicationContract, TheMenuCommandsReachTheDelegate)
{
    const std::pair<const char*, const char*> commands[] = {
        {"About Zarn Actions", "menu showAbout"},
        {"Check for Updates\u2026", "menu checkForUpdates"},
        {"Show Log Folder", "menu showLogFolder"},
    };
    std::vector<std::function<void()>> steps;
    for (const auto& [title, event] : commands) {
        steps.emplace_back([this, title = title] {
            events().clear();
            EXPECT_TRUE(fixture->chooseMenuItem(title)) << title;
        });
        steps.emplace_back([this, event = event] { EXPECT_EQ(events(), Texts{event}); });
    }
    steps.emplace_back([this] {
        EXPECT_FALSE(fixture->chooseMenuItem("Preferences"));
        fixture->application().terminate();
    });
    EXPECT_EQ(runWith(std::move(steps)), 0);
}

TEST_F(ApplicationContract, QuitInTheMenuEndsTheRun)
{
    EXPECT_EQ(runWith({[&] { EXPECT_TRUE(fixture->chooseMenuItem("Quit Zarn Actions")); },
                  [&] { happens("a later event"); }}),
        0);
    EXPECT_EQ(std::count(events().begin(), events().end(), "a later event"), 0);
    EXPECT_EQ(std::count(events().begin(), events().end(), "terminating"), 1);
}

TEST_F(ApplicationContract, ActivatingBringsTheProgramInFrontOfOthers)
{
    runWith({[&] {
        EXPECT_TRUE(fixture->isInFront("Zarn Actions"));
        ASSERT_TRUE(fixture->switchToOtherProgram());
        fixture->application().activateIgnoringOtherApps();
        EXPECT_TRUE(fixture->isInFront("Zarn Actions"));
        fixture->application().terminate();
    }});
}

TEST_F(ApplicationContract, NoModifierKeyIsHeldWhereNoneIs)
{
    EXPECT_EQ(fixture->application().currentModifierFlags() & modifierFlagOption, 0U);
}

} // namespace zarn
