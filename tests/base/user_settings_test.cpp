#include "base/user_settings.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <thread>
#include <vector>

#include "support/temp_folder.h"

namespace {

class UserSettingsTest : public ::testing::Test {
protected:
  void SetUp() override {
    folder_ = temp_.File("config");
    settings().FolderSet(folder_);
  }
  void TearDown() override { settings().FolderSet(""); }
  // Forgets what is in memory, so the next call reads the files.
  void Reload() { settings().FolderSet(folder_); }
  static LUserSettings& settings() { return LUserSettings::Instance(); }

  TempFolder temp_;
  std::string folder_;
};

}  // namespace

TEST_F(UserSettingsTest, ValuesSurviveAReloadInTheirDomainAndSectionAndRemovedKeysDoNot) {
  EXPECT_EQ(settings().Get(kLSettingsDomain, "Cache", "RetentionDays", "28"), "28");
  ASSERT_TRUE(settings().Set(kLSettingsDomain, "Cache", "RetentionDays", "30"));
  ASSERT_TRUE(settings().Set(kLRecentFileListDomain, "", "File0", "/music/ä.wav"));
  ASSERT_TRUE(settings().Set(kLUsageStatsDomain, "Counts", "Opened", "3"));
  ASSERT_TRUE(settings().Set(kLSettingsDomain, "A", "one", "1"));
  ASSERT_TRUE(settings().Set(kLSettingsDomain, "A", "two", "2"));
  ASSERT_TRUE(settings().Remove(kLSettingsDomain, "A", "one"));
  EXPECT_TRUE(settings().Remove(kLSettingsDomain, "A", "never there"));
  // Texts with the file's own syntax come back as they were.
  const std::string awkward = "a=b\n[c]\\d\r;e";
  ASSERT_TRUE(settings().Set(kLSettingsDomain, "sec]tion=", "key=[x]", awkward.c_str()));
  ASSERT_TRUE(settings().Set(kLSettingsDomain, "sec]tion=", "empty", ""));
  Reload();
  EXPECT_EQ(settings().Get(kLSettingsDomain, "Cache", "RetentionDays"), "30");
  EXPECT_EQ(settings().Get(kLSettingsDomain, "Other", "RetentionDays", "none"), "none");
  EXPECT_EQ(settings().Get(kLRecentFileListDomain, "", "File0"), "/music/ä.wav");
  EXPECT_EQ(settings().Get(kLSettingsDomain, "", "File0", "none"), "none");
  EXPECT_EQ(settings().GetInt(kLUsageStatsDomain, "Counts", "Opened", 0), 3);
  EXPECT_EQ(settings().Get(kLSettingsDomain, "A", "one", "gone"), "gone");
  EXPECT_EQ(settings().Get(kLSettingsDomain, "A", "two"), "2");
  EXPECT_EQ(settings().Get(kLSettingsDomain, "sec]tion=", "key=[x]"), awkward);
  EXPECT_EQ(settings().Get(kLSettingsDomain, "sec]tion=", "empty", "fallback"), "");
  EXPECT_TRUE(std::filesystem::exists(folder_ + "/Settings.ini"));
  EXPECT_TRUE(std::filesystem::exists(folder_ + "/RecentFileList.ini"));

  // A domain name that is no plain word is refused.
  EXPECT_FALSE(settings().Set("../escape", "A", "b", "c"));
  EXPECT_FALSE(settings().Set("", "A", "b", "c"));
  EXPECT_EQ(settings().Get("../escape", "A", "b", "fallback"), "fallback");
  EXPECT_FALSE(std::filesystem::exists(temp_.File("escape.ini")));
}

TEST_F(UserSettingsTest, ZeroSwitchesAFeatureOffAndNumbersFallBack) {
  EXPECT_TRUE(settings().IsFeatureOn(kLSettingsDomain, "View", "Spectrum"));
  EXPECT_FALSE(settings().IsFeatureOn(kLSettingsDomain, "View", "Spectrum", false));
  ASSERT_TRUE(settings().Set(kLSettingsDomain, "View", "Spectrum", "0"));
  EXPECT_FALSE(settings().IsFeatureOn(kLSettingsDomain, "View", "Spectrum"));
  ASSERT_TRUE(settings().Set(kLSettingsDomain, "View", "Spectrum", "yes"));
  EXPECT_TRUE(settings().IsFeatureOn(kLSettingsDomain, "View", "Spectrum", false));
  ASSERT_TRUE(settings().SetInt(kLSettingsDomain, "View", "Zoom", -12));
  EXPECT_EQ(settings().GetInt(kLSettingsDomain, "View", "Zoom", 0), -12);
  EXPECT_EQ(settings().GetInt(kLSettingsDomain, "View", "Spectrum", 7), 7);
  EXPECT_EQ(settings().GetInt(kLSettingsDomain, "View", "Missing", 28), 28);
}

TEST_F(UserSettingsTest, AFileChangedByAnotherInstanceIsReadAgainAndNoTemporaryFileStays) {
  ASSERT_TRUE(settings().Set(kLSettingsDomain, "Cache", "RetentionDays", "5"));
  EXPECT_EQ(settings().Get(kLSettingsDomain, "Cache", "RetentionDays"), "5");
  {
    std::ofstream other(folder_ + "/Settings.ini", std::ios::trunc);
    other << "; written elsewhere\n[Cache]\r\nRetentionDays=14\r\nWorkingFolder=/Volumes/Work\n";
  }
  EXPECT_EQ(settings().Get(kLSettingsDomain, "Cache", "RetentionDays"), "14");
  EXPECT_EQ(settings().Get(kLSettingsDomain, "Cache", "WorkingFolder"), "/Volumes/Work");
  std::size_t files = 0;
  for (const auto& entry : std::filesystem::directory_iterator(folder_)) {
    EXPECT_EQ(entry.path().extension(), ".ini") << entry.path();
    ++files;
  }
  EXPECT_EQ(files, 1u);
}

TEST_F(UserSettingsTest, ManyThreadsSettingAtOnceLoseNothing) {
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([t] {
      for (int i = 0; i < 10; ++i) {
        std::string key = "k" + std::to_string(t) + "_" + std::to_string(i);
        EXPECT_TRUE(LUserSettings::Instance().Set(kLUsageStatsDomain, "Threads", key.c_str(), key.c_str()));
      }
    });
  }
  for (auto& thread : threads) thread.join();
  Reload();
  for (int t = 0; t < 4; ++t)
    for (int i = 0; i < 10; ++i) {
      std::string key = "k" + std::to_string(t) + "_" + std::to_string(i);
      ASSERT_EQ(settings().Get(kLUsageStatsDomain, "Threads", key.c_str()), key);
    }
}

TEST_F(UserSettingsTest, ASettingsFileThatIsALinkStaysALinkAndTheFileItLeadsToTakesTheValue) {
  const std::string real = temp_.File("dotfiles.ini");
  std::filesystem::create_directories(folder_);
  std::ofstream(real) << "[Cache]\nRetentionDays=7\n";
  const std::string link = folder_ + "/" + kLSettingsDomain + ".ini";
  std::filesystem::create_symlink(real, link);
  ASSERT_TRUE(settings().Set(kLSettingsDomain, "Cache", "RetentionDays", "14"));
  EXPECT_TRUE(std::filesystem::is_symlink(link));
  Reload();
  EXPECT_EQ(settings().Get(kLSettingsDomain, "Cache", "RetentionDays"), "14");
  std::ifstream in(real);
  const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  EXPECT_NE(text.find("RetentionDays=14"), std::string::npos);
}
