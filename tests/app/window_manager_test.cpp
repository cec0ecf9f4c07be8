// File windows: unique titles, the limit on open files, tabs and the project.
#include <gtest/gtest.h>

#include "app/app_settings.h"
#include "app/window_manager.h"
#include "base/user_settings.h"
#include "document_fixture.h"

namespace {

class WindowManagerTest : public DocumentTest {
protected:
  SVWindowManager& Windows() { return Dialog().Windows(); }
  SVFileGUI* Open(const char* title, bool withoutExtension = true, int tab = kSVNewTab) {
    return Windows().FileWindowAdd(std::make_shared<SVFile>(LCutListAudio()), title, withoutExtension, tab);
  }
  std::string Unique(const char* wanted, bool withoutExtension = true) {
    LStringLong out;
    Windows().EnsureUniqueFileWindowTitle(out, wanted, withoutExtension);
    return out;
  }
};

TEST_F(WindowManagerTest, TitlesNumberOnFromTheDigitsAfterTheirSeparatorWithTheExtensionBehind) {
  EXPECT_EQ(Open("Take_3")->Title(), "Take_3") << "a free title is used as it is";
  EXPECT_EQ(Open("Take_3")->Title(), "Take_1") << "after '_' the number reads as 0";
  EXPECT_EQ(Open("Take 3")->Title(), "Take 3");
  EXPECT_EQ(Open("Take 3")->Title(), "Take 4") << "after a space the digits count";
  Open("Take3");
  EXPECT_EQ(Unique("Take3"), "Take1") << "after a letter the number reads as 0";
  EXPECT_EQ(Unique("Take_3"), "Take_2") << "Take_1 is taken";
  EXPECT_EQ(Open("Song")->Title(), "Song");
  EXPECT_EQ(Open("Song")->Title(), "Song_1");
  EXPECT_EQ(Open("Song")->Title(), "Song_2");

  Open("Clip_3.wav", false);
  EXPECT_EQ(Unique("Clip_3.wav", false), "Clip_1.wav");
  Open("Clip 3.wav", false);
  EXPECT_EQ(Unique("Clip 3.wav", false), "Clip 4.wav");
  EXPECT_EQ(Unique("Clip 3.wav", true), "Clip 3.wav_1") << "without extension the whole title is the name";
}

TEST_F(WindowManagerTest, TitlesOfTheNameFormatNumberFromZero) {
  Open("Unbenannt_1");
  EXPECT_EQ(Unique("Unbenannt_1"), "Unbenannt_0");
  Open("Unbenannt_0");
  EXPECT_EQ(Unique("Unbenannt_1"), "Unbenannt_2");

  ASSERT_TRUE(LUserSettings::Instance().Set(kLSettingsDomain, kSVSettingsSection, kSVSettingFileNameFormat,
                                            "Neu %autonumber%"));
  Open("Neu 7");
  EXPECT_EQ(Unique("Neu 7"), "Neu 0");
  EXPECT_EQ(Unique("Unbenannt_1"), "Unbenannt_2") << "no longer the format";

  // A % of the format is escaped before the comparison, so it never matches a title.
  ASSERT_TRUE(LUserSettings::Instance().Set(kLSettingsDomain, kSVSettingsSection, kSVSettingFileNameFormat,
                                            "100% Neu %autonumber%"));
  Open("100% Neu 7");
  EXPECT_EQ(Unique("100% Neu 7"), "100% Neu 8");
}

TEST_F(WindowManagerTest, TheFortyFifthWindowIsRefused) {
  for (int i = 0; i < kSVMaxFileWindows - 1; ++i) {
    ASSERT_TRUE(Windows().CheckMaxFiles()) << "window " << i + 1;
    Open("Datei", true, i % 3 == 0 ? kSVNewTab : 0);
  }
  EXPECT_EQ(Windows().FileWindowCount(), 44);
  EXPECT_TRUE(frontEnd_.alerts.empty());
  EXPECT_FALSE(Windows().CheckMaxFiles());
  ASSERT_EQ(frontEnd_.alerts.size(), 1u);
  EXPECT_EQ(frontEnd_.alerts[0].first, "Fehler");
  EXPECT_EQ(frontEnd_.alerts[0].second,
            "Max. Dateianzahl überschritten. Bitte schließen Sie einige Dateien, bevor Sie weitere laden.");
  LUserSettings& settings = LUserSettings::Instance();
  EXPECT_EQ(settings.Get(kLUsageStatsDomain, kSVUsageStatsSection, "LastFailed"), "MaxFilOpen");
  EXPECT_EQ(settings.Get(kLUsageStatsDomain, kSVUsageStatsSection, "LastFailedReason"),
            "MaximumAllowedFileNumberReached");
  EXPECT_EQ(Dialog().FileNewFromCutList(LCutListAudio(), "Neu", MainDialog::kInitialNewFile), nullptr);

  Windows().FileWindowClose(Windows().CurrentFileWindow());
  EXPECT_TRUE(Windows().CheckMaxFiles());
}

TEST_F(WindowManagerTest, TheProjectHoldsTheDocumentsInTabOrder) {
  SVFileGUI* a = Open("A");
  SVFileGUI* b = Open("B");
  SVFileGUI* c = Open("C", true, 0);
  ASSERT_EQ(Windows().TabCount(), 2);
  const auto& documents = Windows().Project().Documents();
  ASSERT_EQ(documents.size(), 3u);
  EXPECT_EQ(documents[0].get(), a->File());
  EXPECT_EQ(documents[1].get(), c->File());
  EXPECT_EQ(documents[2].get(), b->File());
  EXPECT_EQ(Windows().CurrentFileWindow(), c);

  std::weak_ptr<SVFile> gone = b->FilePtr();
  Windows().FileWindowClose(b);
  EXPECT_TRUE(gone.expired()) << "the document goes with its last holder";
  EXPECT_EQ(Windows().TabCount(), 1);
  EXPECT_EQ(Windows().Project().Documents().size(), 2u);
}

}  // namespace
