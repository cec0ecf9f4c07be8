#include "formats/wav_tags.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

#include "base/memory_stream.h"
#include "formats/wav_tag_writer.h"
#include "support/temp_folder.h"
#include "tag_test_files.h"

using namespace tagtest;

namespace {

// One value for every key a WAVE file carries, each within its narrowest field.
LFileTagDataAudio EveryKey() {
  LFileTagDataAudio tags;
  const std::pair<const char*, const char*> values[] = {
      {"TITLE", "Abendlied über die Berge und weit darüber hinaus, länger als ein Cart-Feld"},
      {"ARTIST", "Chor"},
      {"ALBUMARTIST", "Alle"},
      {"ALBUM", "Lieder"},
      {"DATE", "2024-05-01"},
      {"COMMENT", "Ein Kommentar"},
      {"TRACKNUMBER", "7"},
      {"GENRE", "Klassik"},
      {"COPYRIGHT", "(c) 2024 Sonvale"},
      {"ENCODEDBY", "Sonvale Studio"},
      {"ENCODER", "Sonvale 1.0"},
      {"CATEGORY", "Musik"},
      {"BWFVERSION", "2"},
      {"ORIGINATOR", "Sonvale"},
      {"REFERENCE", "REF-0001"},
      {"TIME", "12:34:56"},
      {"TIMEREFLOW", "123456789"},
      {"TIMEREFHIGH", "1"},
      {"UMID", "6,10,43,52,1,1,1,1,1,1,1,1,19,0,0,0,0,255"},
      {"CODINGHISTORY", "A=PCM,F=44100,W=16,M=stereo\r\n"},
      {"CARTVERSION", "0101"},
      {"CUTID", "CUT-1"},
      {"CLIENTID", "Kunde"},
      {"CLASSIFICATION", "Werbung"},
      {"OUTCUE", "Ende"},
      {"ENDDATE", "2024-12-31"},
      {"ENDTIME", "23:59:59"},
      {"PRODUCERAPPVERSION", "1.0"},
      {"USERDEF", "frei"},
      {"LEVELREFERENCE", "-20"},
      {"URL", "https://example.org/sonvale"},
      {"TAGTEXT", "<tags/>"},
  };
  for (const auto& [key, value] : values) tags.Set(key, value);
  for (int n = 1; n <= 8; ++n) {
    tags.Set(("POSTTIMER" + std::to_string(n) + "USAGE").c_str(), ("SEG" + std::to_string(n)).c_str());
    tags.Set(("POSTTIMER" + std::to_string(n) + "VALUE").c_str(), std::to_string(1000 * n).c_str());
  }
  return tags;
}

std::map<std::string, std::string> AsMap(const LFileTagDataAudio& tags) {
  std::map<std::string, std::string> map;
  for (const LFileTag& tag : tags) map[tag.key] = tag.value;
  return map;
}

LFileTagDataAudio RoundTrip(const Bytes& file, const LFileTagDataAudio& tags, const std::string& temp,
                            Bytes* written = nullptr) {
  LMemoryStream stream{Bytes(file)};
  LWavTagsWriteOptions options;
  options.tempFolder = temp;
  EXPECT_EQ(LWavTagsWrite(stream, tags, options), LWavTagsResult::Ok);
  LFileTagDataAudio read;
  EXPECT_EQ(LWavTagsRead(stream, &read), LWavTagsResult::Ok);
  if (written) *written = stream.Bytes();
  return read;
}

std::string Quoted(const std::string& path) { return "'" + path + "'"; }

}  // namespace

TEST(WavTags, EveryKeyAndTheMarkersSurviveWritingReadingEditingAndWritingAgain) {
  TempFolder temp;
  LFileTagDataAudio tags = EveryKey();
  int valid = 0;
  for (const LFileTag& tag : tags) valid += LWavTagWriter::TagFieldIsValid(tag.key.c_str());
  EXPECT_EQ(valid, static_cast<int>(tags.Count()));
  EXPECT_EQ(tags.Count(), 48u);
  tags.MarkerAddSample(0);
  tags.MarkerAddSample(44100);
  tags.MarkerAddSample(123457);

  Bytes written;
  const LFileTagDataAudio read = RoundTrip(PlainWave(), tags, temp.Path(), &written);
  std::map<std::string, std::string> expected = AsMap(tags);
  expected[kLTagMarkerSampleRate] = "44100";
  EXPECT_EQ(AsMap(read), expected);
  EXPECT_EQ(read.MarkerSamplesGet(), (LArray<std::uint64_t>{0, 44100, 123457}));

  // Open, edit, save: the edited set comes back and nothing of the old one lingers.
  LFileTagDataAudio edited = read;
  edited.Set("TITLE", "Neu");
  edited.Remove("URL");
  edited.Remove("UMID");
  edited.MarkersClear();
  edited.MarkerAddMs(1500, 44100);
  const LFileTagDataAudio again = RoundTrip(written, edited, temp.Path());
  expected = AsMap(edited);
  expected[kLTagMarkerPosType] = "1";
  expected["marker_0_pos"] = "66150";
  EXPECT_EQ(AsMap(again), expected);
  EXPECT_TRUE(FolderNames(temp.Path()).empty());
}

TEST(WavTags, WritingAndReadingByPathMatchesTheStreamsAndMillisecondsWithoutTheirOwnRateAreSamples) {
  TempFolder temp;
  const std::string path = temp.File("a.wav");
  WriteFileBytes(path, PlainWave(1000, 1, 22050));
  LFileTagDataAudio tags;
  tags.Set("TITLE", "Pfad");
  tags.Set(kLTagMarkerCount, "1");
  tags.Set(kLTagMarkerPosType, "0");
  tags.Set("marker_0_pos", "2000");
  LWavTagsWriteOptions options;
  options.tempFolder = temp.Path();
  ASSERT_EQ(LWavTagsWrite(path.c_str(), tags, options), LWavTagsResult::Ok);
  LFileTagDataAudio read;
  ASSERT_EQ(LWavTagsRead(path.c_str(), &read), LWavTagsResult::Ok);
  EXPECT_STREQ(read.Get("TITLE"), "Pfad");
  EXPECT_EQ(read.MarkerSamplesGet(), (LArray<std::uint64_t>{2000}));  // not converted with the file's rate
  tags.SetNumber(kLTagMarkerSampleRate, 8000);
  ASSERT_EQ(LWavTagsWrite(path.c_str(), tags, options), LWavTagsResult::Ok);
  ASSERT_EQ(LWavTagsRead(path.c_str(), &read), LWavTagsResult::Ok);
  EXPECT_EQ(read.MarkerSamplesGet(), (LArray<std::uint64_t>{16000}));

  EXPECT_EQ(LWavTagsRead(temp.File("missing.wav").c_str(), &read), LWavTagsResult::CannotOpen);
  EXPECT_EQ(LWavTagsWrite(temp.File("missing.wav").c_str(), tags, options), LWavTagsResult::CannotOpen);
  EXPECT_FALSE(LWavTagsResultMessage(LWavTagsResult::Damaged, "x.wav").empty());
  EXPECT_TRUE(LWavTagsResultMessage(LWavTagsResult::Ok, "x.wav").empty());
}

// ---- Outside tools read what we write, and we read what they write. ----

class WavTagsOutsideTools : public ::testing::Test {
protected:
  void SetUp() override {
    path_ = temp_.File("tagged.wav");
    WriteFileBytes(path_, PlainWave(44100 * 2, 2, 44100));
    tags_ = EveryKey();
    tags_.MarkerAddMs(1500, 44100);
    tags_.MarkerAddSample(22050);
    LWavTagsWriteOptions options;
    options.tempFolder = temp_.Path();
    ASSERT_EQ(LWavTagsWrite(path_.c_str(), tags_, options), LWavTagsResult::Ok);
  }

  TempFolder temp_;
  std::string path_;
  LFileTagDataAudio tags_;
};

// The broadcast and cart chunks are judged by sndfile-info, which shows every field of both.
TEST_F(WavTagsOutsideTools, FfprobeShowsTheInfoTagsAndTheCuePointsAsChapters) {
  if (!HaveTool("ffprobe")) GTEST_SKIP() << "ffprobe is not installed";
  std::string out;
  ASSERT_TRUE(RunTool("ffprobe -v error -show_entries format_tags:chapter=start,time_base -of flat " + Quoted(path_),
                      &out));
  for (const char* line :
       {"format.tags.title=\"Abendlied über die Berge und weit darüber hinaus, länger als ein Cart-Feld\"",
        "format.tags.artist=\"Chor\"", "format.tags.album=\"Lieder\"", "format.tags.genre=\"Klassik\"",
        "format.tags.comment=\"Ein Kommentar\"", "format.tags.copyright=\"(c) 2024 Sonvale\"",
        "format.tags.date=\"2024-05-01\"", "format.tags.track=\"7\"", "format.tags.encoder=\"Sonvale 1.0\"",
        "format.tags.ISRC=\"Sonvale Studio\"", "format.tags.ISTR=\"Alle\"", "format.tags.ISBJ=\"Musik\"",
        // Cue points in the order written, in sample frames.
        "chapters.chapter.0.time_base=\"1/44100\"", "chapters.chapter.0.start=66150",
        "chapters.chapter.1.start=22050"}) {
    EXPECT_NE(out.find(line), std::string::npos) << line << "\n" << out;
  }
}

namespace {

// The text after the colon of the first line that starts with label, trimmed.
std::string LineValue(const std::string& text, const std::string& label) {
  std::size_t at = 0;
  while (at < text.size()) {
    const std::size_t end = std::min(text.find('\n', at), text.size());
    const std::string line = text.substr(at, end - at);
    if (line.rfind(label, 0) == 0) {
      const std::size_t colon = line.find(':');
      if (colon == std::string::npos) return {};
      const std::size_t first = line.find_first_not_of(' ', colon + 1);
      const std::size_t last = line.find_last_not_of(" \r");
      return first == std::string::npos ? std::string() : line.substr(first, last - first + 1);
    }
    at = end + 1;
  }
  return "<no line " + label + ">";
}

}  // namespace

TEST_F(WavTagsOutsideTools, SndfileInfoShowsTheBroadcastAndCartFieldsAndTheCuePoints) {
  if (!HaveTool("sndfile-info")) GTEST_SKIP() << "sndfile-info (sndfile-programs) is not installed";
  std::string out;
  ASSERT_TRUE(RunTool("sndfile-info --broadcast " + Quoted(path_), &out));
  EXPECT_EQ(LineValue(out, "Description"), "Ein Kommentar") << out;
  EXPECT_EQ(LineValue(out, "Originator "), "Sonvale");
  EXPECT_EQ(LineValue(out, "Origination ref"), "REF-0001");
  EXPECT_EQ(LineValue(out, "Origination date"), "2024-05-01");
  EXPECT_EQ(LineValue(out, "Origination time"), "12:34:56");
  EXPECT_EQ(LineValue(out, "BWF version"), "2");
  EXPECT_EQ(LineValue(out, "Time ref").rfind("0x1075bcd15", 0), 0u);
  EXPECT_EQ(LineValue(out, "Coding history"), "A=PCM,F=44100,W=16,M=stereo");

  ASSERT_TRUE(RunTool("sndfile-info --cart " + Quoted(path_), &out));
  EXPECT_EQ(LineValue(out, "Version"), "0101") << out;
  // The first 64 bytes of the title (the tool trims the blank at the end of the field).
  EXPECT_EQ(LineValue(out, "Title"), "Abendlied über die Berge und weit darüber hinaus, länger als");
  EXPECT_EQ(LineValue(out, "Cut id"), "CUT-1");
  EXPECT_EQ(LineValue(out, "Classification"), "Werbung");
  EXPECT_EQ(LineValue(out, "End date"), "2024-12-31");
  EXPECT_EQ(LineValue(out, "App id"), "Sonvale Studio");
  EXPECT_EQ(LineValue(out, "Level ref."), "-20");
  EXPECT_EQ(LineValue(out, "Url"), "https://example.org/sonvale");
  EXPECT_EQ(LineValue(out, "Tag text"), "<tags/>");
  EXPECT_NE(out.find("7   SEG8    8000"), std::string::npos);

  ASSERT_TRUE(RunTool("sndfile-info " + Quoted(path_), &out));
  EXPECT_NE(out.find("Pos : 66150"), std::string::npos) << out;
  EXPECT_NE(out.find("Pos : 22050"), std::string::npos);
  EXPECT_EQ(LineValue(out, "    INAM"), "Abendlied über die Berge und weit darüber hinaus, länger als ein Cart-Feld");
  EXPECT_EQ(LineValue(out, "Frames"), "88200");
}

TEST_F(WavTagsOutsideTools, ExiftoolShowsTheInfoListAndTheId3Chunk) {
  if (!HaveTool("exiftool")) GTEST_SKIP() << "exiftool is not installed";
  std::string out;
  ASSERT_TRUE(RunTool("exiftool -a -G1 -s " + Quoted(path_), &out));
  const std::string title = "Abendlied über die Berge und weit darüber hinaus, länger als ein Cart-Feld";
  EXPECT_EQ(LineValue(out, "[RIFF]          Title "), title) << out;
  EXPECT_EQ(LineValue(out, "[RIFF]          Artist "), "Chor");
  EXPECT_EQ(LineValue(out, "[RIFF]          Source "), "Sonvale Studio");
  EXPECT_EQ(LineValue(out, "[RIFF]          CodePage "), "65001");
  EXPECT_EQ(LineValue(out, "[ID3v2_4]       Title "), title);
  EXPECT_EQ(LineValue(out, "[ID3v2_4]       Album "), "Lieder");
  EXPECT_EQ(LineValue(out, "[ID3v2_4]       Comment "), "Ein Kommentar");
  EXPECT_EQ(LineValue(out, "[ID3v2_4]       EncodedBy "), "Sonvale Studio");
}

TEST(WavTagsFromOutsideTools, TheBextAndInfoThatFfmpegWritesAreReadAndOurTagsReplaceThemWithoutTouchingTheAudio) {
  if (!HaveTool("ffmpeg")) GTEST_SKIP() << "ffmpeg is not installed";
  TempFolder temp;
  const std::string path = temp.File("ffmpeg.wav");
  ASSERT_TRUE(RunTool("ffmpeg -nostdin -v error -f lavfi -i sine=frequency=440:duration=0.2 -ac 2 -metadata title=Titel "
                      "-metadata artist=Wer -metadata description=Beschreibung -metadata originator=Urheber "
                      "-metadata originator_reference=R-1 -metadata origination_date=2023-01-02 "
                      "-metadata origination_time=01:02:03 -metadata time_reference=12345 "
                      "-metadata coding_history=A=PCM -write_bext 1 -y " +
                      Quoted(path)));
  LFileTagDataAudio read;
  ASSERT_EQ(LWavTagsRead(path.c_str(), &read), LWavTagsResult::Ok);
  EXPECT_STREQ(read.Get("TITLE"), "Titel");
  EXPECT_STREQ(read.Get("ARTIST"), "Wer");
  EXPECT_STREQ(read.Get("COMMENT"), "Beschreibung");
  EXPECT_STREQ(read.Get("ORIGINATOR"), "Urheber");
  EXPECT_STREQ(read.Get("REFERENCE"), "R-1");
  EXPECT_STREQ(read.Get("DATE"), "2023-01-02");
  EXPECT_STREQ(read.Get("TIME"), "01:02:03");
  EXPECT_STREQ(read.Get("TIMEREFLOW"), "12345");
  ASSERT_NE(read.Get("CODINGHISTORY"), nullptr);
  EXPECT_EQ(std::string(read.Get("CODINGHISTORY")).rfind("A=PCM", 0), 0u);

  // FFmpeg puts its bext chunk before the audio: our chunks reuse that region.
  std::string before;
  ASSERT_TRUE(RunTool("ffmpeg -nostdin -v error -i " + Quoted(path) + " -f s16le - | md5sum", &before));
  read.Set("TITLE", "Neu");
  read.Set("ORIGINATOR", "Sonvale");
  LWavTagsWriteOptions options;
  options.tempFolder = temp.Path();
  ASSERT_EQ(LWavTagsWrite(path.c_str(), read, options), LWavTagsResult::Ok);
  std::string after;
  ASSERT_TRUE(RunTool("ffmpeg -nostdin -v error -i " + Quoted(path) + " -f s16le - | md5sum", &after));
  EXPECT_EQ(after, before);
  LFileTagDataAudio again;
  ASSERT_EQ(LWavTagsRead(path.c_str(), &again), LWavTagsResult::Ok);
  EXPECT_STREQ(again.Get("TITLE"), "Neu");
  EXPECT_STREQ(again.Get("ORIGINATOR"), "Sonvale");
  EXPECT_STREQ(again.Get("REFERENCE"), "R-1");
  const std::vector<std::string> ids = ChunkIds(ListChunks(FileBytes(path)));
  EXPECT_EQ(std::count(ids.begin(), ids.end(), "bext"), 1) << ::testing::PrintToString(ids);
  EXPECT_EQ(std::count(ids.begin(), ids.end(), "LIST"), 1);
}
