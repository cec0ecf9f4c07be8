// Loading files into cut lists through the cache, and opening them as documents.
#include <gtest/gtest.h>

#include "app/cut_list_load.h"
#include "app/recent_file_list.h"
#include "document_fixture.h"
#include "engine/sound_cache.h"
#include "formats/wav_tags.h"

namespace {

using CutListLoadTest = DocumentTest;

TEST_F(CutListLoadTest, AnUntouchedFileIsDecodedOnceAndItsCopyKeptButATemporaryFileLeavesNone) {
  const std::string path = WriteStaircaseWave("take.wav", 3000, 2);
  LProcessInterfaceQuiet process;
  LCutListAudio first;
  ASSERT_EQ(SVCutListLoadFile(process, path.c_str(), first), kLProcessSuccess) << process.Error();
  ASSERT_EQ(first.GetLength(), 3000);
  EXPECT_EQ(first.GetChannels(), 2);
  EXPECT_STREQ(first.GetPath(), path.c_str());
  std::vector<float> expected = DocStaircase(3000, 2);
  for (float& s : expected) s /= 65536.0f;
  EXPECT_EQ(DocReadAll(first), expected);

  LCutListAudio second;
  ASSERT_EQ(SVCutListLoadFile(process, path.c_str(), second), kLProcessSuccess);
  EXPECT_EQ(second.Segments().front().ItemNumber(), first.Segments().front().ItemNumber());
  EXPECT_EQ(CacheAudioFiles(), 1);

  first = LCutListAudio();
  second = LCutListAudio();
  EXPECT_EQ(CacheAudioFiles(), 1) << "the decoded copy of an untouched file stays for reuse";

  const std::string temporary = WriteStaircaseWave("speech.wav", 100, 1);
  ASSERT_EQ(SVCutListLoadFile(process, temporary.c_str(), first, false), kLProcessSuccess);
  first = LCutListAudio();
  EXPECT_EQ(CacheAudioFiles(), 1) << "a temporary file leaves no copy behind";
}

TEST_F(CutListLoadTest, AFileThatCannotBeOpenedFailsWithAMessage) {
  LProcessInterfaceQuiet process;
  LCutListAudio list = StaircaseList(10, 1);
  EXPECT_EQ(SVCutListLoadFile(process, temp_.File("fehlt.wav").c_str(), list), kLProcessFailed);
  EXPECT_TRUE(list.IsEmpty());
  EXPECT_FALSE(process.Error().empty());

  EXPECT_EQ(Dialog().FileOpen(temp_.File("fehlt.wav").c_str()), nullptr);
  EXPECT_EQ(Dialog().Windows().FileWindowCount(), 0);
  EXPECT_FALSE(frontEnd_.lastError.empty());
  EXPECT_TRUE(Dialog().RecentFiles().Entries()[0].empty()) << "a failed open is not recent";
}

TEST_F(CutListLoadTest, OpeningAFileMakesACleanTitledDocumentWithItsBaseEntry) {
  const std::string path = WriteStaircaseWave("Take_3.wav", 500, 1);
  SVFileGUI* first = Dialog().FileOpen(path.c_str());
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(first->Title(), "Take_3.wav");
  EXPECT_FALSE(first->File()->IsModified());
  EXPECT_STREQ(first->File()->Path(), path.c_str());
  EXPECT_EQ(frontEnd_.processTitles.back(), "Laden der Ursprungsaudiodatei");
  EXPECT_EQ(Dialog().RecentFiles().Entries()[0], path);

  SVFileGUI* second = Dialog().FileOpen(path.c_str());
  ASSERT_NE(second, nullptr);
  EXPECT_EQ(second->Title(), "Take_1.wav");
  EXPECT_EQ(Dialog().Windows().CurrentFileWindow(), second);
  EXPECT_EQ(Dialog().Windows().TabCount(), 2);
}

}  // namespace

TEST_F(CutListLoadTest, TheLoaderHandsOnTheTagsWhetherItDecodesOrReusesTheCachedCopy) {
  const std::string path = WriteStaircaseWave("tagged.wav", 400, 1);
  LFileTagDataAudio tags;
  tags.Set("TITLE", "Probe");
  ASSERT_EQ(LWavTagsWrite(path.c_str(), tags), LWavTagsResult::Ok);
  LProcessInterfaceQuiet process;
  for (const char* round : {"decoded", "cached"}) {
    LCutListAudio list;
    LSoundFileInfo info;
    ASSERT_EQ(SVCutListLoadFile(process, path.c_str(), list, true, &info), kLProcessSuccess) << round;
    EXPECT_EQ(info.formatName, "wav") << round;
    EXPECT_STREQ(info.tags.Get("TITLE"), "Probe") << round;
  }
}
