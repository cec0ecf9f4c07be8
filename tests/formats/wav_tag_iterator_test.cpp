#include "formats/wav_tag_iterator.h"

#include <gtest/gtest.h>

#include <string>

#include "base/memory_stream.h"
#include "formats/wave_file.h"
#include "tag_test_files.h"

using namespace tagtest;

namespace {

LFileTagDataAudio ReadTags(const Bytes& file, bool* opened = nullptr) {
  LMemoryStream stream(file.data(), file.size());
  LWavTagIterator iterator(stream);
  const bool ok = iterator.Open();
  if (opened) *opened = ok;
  return iterator.Tags();
}

std::string Value(const LFileTagDataAudio& tags, const char* key) {
  const char* value = tags.Get(key);
  return value ? value : "<none>";
}

Bytes Body(std::size_t size, const std::vector<std::pair<std::size_t, std::string>>& fields) {
  Bytes body(size, 0);
  for (const auto& [offset, text] : fields) std::copy(text.begin(), text.end(), body.begin() + static_cast<long>(offset));
  return body;
}

Bytes CueBody(std::uint32_t count, const std::vector<std::uint32_t>& positions) {
  Bytes body;
  PutLE32(body, count);
  std::uint32_t id = 1;
  for (std::uint32_t pos : positions) {
    PutLE32(body, id++);
    PutLE32(body, pos);
    PutText(body, "data");
    PutLE32(body, 0);
    PutLE32(body, 0);
    PutLE32(body, pos);
  }
  return body;
}

// The staircase of PlainWave read back through the sound reader.
void ExpectAudioIntact(const Bytes& file, int frames, int channels) {
  LSoundSource source = LWaveFile::OpenSource(std::make_unique<LMemoryStream>(Bytes(file)));
  ASSERT_EQ(source.GetEndSample(), frames);
  std::vector<float> samples(static_cast<std::size_t>(frames * channels));
  source.Read(samples.data(), frames);
  for (int i = 0; i < frames * channels; ++i) ASSERT_FLOAT_EQ(samples[static_cast<std::size_t>(i)], i / 32767.0f) << i;
}

}  // namespace

TEST(WavTagIterator, ReadsEveryChunkKindOfAHandMadeFileIntoItsKeys) {
  const Bytes bext = Body(602 + 5, {{0, "Beschreibung"}, {256, "Studio"}, {320, "2024-05-01"}, {602, "A=PCM"}});
  Bytes cart = Body(2048, {{0, "0101"}, {4, "Cart-Titel"}, {132, "CUT9"}, {684, "SEG1"}});
  cart[680] = 0xF4;  // level reference -12
  cart[681] = cart[682] = cart[683] = 0xFF;
  Bytes disp;
  PutLE32(disp, 1);
  PutText(disp, "Anzeige");
  disp.push_back(0);
  const Bytes file = PlainWave(100, 2, 48000,
                               {InfoList({{"INAM", "Info-Titel"}, {"IENG", "Unbekannt"}, {"ISRC", "x"}}),
                                Chunk("bext", bext), Chunk("cart", cart), Chunk("DISP", disp),
                                Chunk("cue ", CueBody(2, {48000, 7}))});
  const LFileTagDataAudio tags = ReadTags(file);

  // INFO outranks the display title and the cart's narrow title field.
  EXPECT_EQ(Value(tags, "TITLE"), "Info-Titel");
  EXPECT_EQ(Value(tags, "ENCODEDBY"), "x");
  EXPECT_EQ(Value(tags, "COMMENT"), "Beschreibung");
  EXPECT_EQ(Value(tags, "ORIGINATOR"), "Studio");
  EXPECT_EQ(Value(tags, "DATE"), "2024-05-01");
  EXPECT_EQ(Value(tags, "CODINGHISTORY"), "A=PCM");
  EXPECT_EQ(Value(tags, "CARTVERSION"), "0101");
  EXPECT_EQ(Value(tags, "CUTID"), "CUT9");
  EXPECT_EQ(Value(tags, "LEVELREFERENCE"), "-12");
  // A named post timer keeps its value 0; unnamed empty timers give no tags.
  EXPECT_EQ(Value(tags, "POSTTIMER1USAGE"), "SEG1");
  EXPECT_EQ(Value(tags, "POSTTIMER1VALUE"), "0");
  EXPECT_FALSE(tags.Has("POSTTIMER2VALUE"));
  EXPECT_FALSE(tags.Has("TIMEREFLOW"));
  EXPECT_FALSE(tags.Has("BWFVERSION"));
  EXPECT_FALSE(tags.Has("UMID"));

  EXPECT_EQ(Value(tags, kLTagMarkerCount), "2");
  EXPECT_EQ(Value(tags, "marker_0_pos"), "48000");
  EXPECT_EQ(Value(tags, "marker_1_pos"), "7");
  EXPECT_EQ(Value(tags, kLTagMarkerPosType), "1");
  EXPECT_EQ(Value(tags, kLTagMarkerSampleRate), "48000");

  // Without INFO the display title is next in rank.
  const LFileTagDataAudio noInfo = ReadTags(PlainWave(10, 1, 8000, {Chunk("cart", cart), Chunk("DISP", disp)}));
  EXPECT_EQ(Value(noInfo, "TITLE"), "Anzeige");
}

TEST(WavTagIterator, Latin1TextOfOlderWritersComesBackAsUtf8) {
  const LFileTagDataAudio tags = ReadTags(PlainWave(10, 1, 8000, {InfoList({{"IART", "M\xfcller"}, {"INAM", "Grün"}})}));
  EXPECT_EQ(Value(tags, "ARTIST"), "Müller");
  EXPECT_EQ(Value(tags, "TITLE"), "Grün");
}

TEST(WavTagIterator, LyingChunksNeverCrashTheReaderAndLoseNeitherReadableTagsNorAudio) {
  const std::vector<Bytes> audio{Fmt16(2, 44100), Staircase(300, 2)};
  auto file = [&](const std::vector<Bytes>& tail) {
    std::vector<Bytes> chunks = audio;
    chunks.insert(chunks.end(), tail.begin(), tail.end());
    return RiffWave(chunks);
  };

  // A list that claims far more than the file holds, and an entry that claims more than the list.
  {
    Bytes list = InfoList({{"INAM", "Titel"}, {"IART", "Wer"}});
    list[4] = 0xF0;
    list[5] = 0xFF;
    list[6] = 0xFF;
    list[7] = 0x7F;
    Bytes overlong = InfoList({{"ICMT", "kurz"}});
    overlong[16] = 200;  // the ICMT entry's size
    const Bytes f1 = file({list});
    const LFileTagDataAudio t1 = ReadTags(f1);
    EXPECT_EQ(Value(t1, "TITLE"), "Titel");
    EXPECT_EQ(Value(t1, "ARTIST"), "Wer");
    ExpectAudioIntact(f1, 300, 2);
    const Bytes f2 = file({overlong, InfoList({{"IGNR", "Jazz"}})});
    const LFileTagDataAudio t2 = ReadTags(f2);
    EXPECT_EQ(Value(t2, "COMMENT"), "kurz");
    EXPECT_EQ(Value(t2, "GENRE"), "Jazz");
    ExpectAudioIntact(f2, 300, 2);
  }
  // Odd sizes without pad bytes, at both levels.
  {
    Bytes body;
    PutText(body, "INFO");
    for (const auto& [id, text] : std::vector<std::pair<std::string, std::string>>{{"INAM", "abcd"}, {"IART", "ef"}}) {
      Bytes value(text.begin(), text.end());
      value.push_back(0);
      const Bytes entry = Chunk(id.c_str(), value, -1, false);
      body.insert(body.end(), entry.begin(), entry.end());
    }
    Bytes disp;
    PutLE32(disp, 1);
    PutText(disp, "Anzeige!");  // 4 + 8 + 1: odd
    disp.push_back(0);
    const Bytes f = file({Chunk("LIST", body, -1, false), Chunk("DISP", disp, -1, false),
                          Chunk("cue ", CueBody(1, {99}))});
    const LFileTagDataAudio t = ReadTags(f);
    EXPECT_EQ(Value(t, "TITLE"), "abcd");
    EXPECT_EQ(Value(t, "ARTIST"), "ef");
    EXPECT_EQ(Value(t, "marker_0_pos"), "99");
    ExpectAudioIntact(f, 300, 2);
  }
  // A truncated list: the file ends inside the second entry.
  {
    Bytes f = file({InfoList({{"INAM", "ganz"}, {"ICMT", "abgeschnittener Kommentar"}})});
    f.resize(f.size() - 12);
    const LFileTagDataAudio t = ReadTags(f);
    EXPECT_EQ(Value(t, "TITLE"), "ganz");
    EXPECT_EQ(Value(t, "COMMENT"), "abgeschnittene");
    ExpectAudioIntact(f, 300, 2);
  }
  // A cue count far beyond the points there are, and a bext that the file cuts short.
  {
    Bytes f = file({Chunk("cue ", CueBody(0xFFFFFFF0u, {5, 6, 7})), Chunk("bext", Body(602, {{256, "Urheber"}}))});
    f.resize(f.size() - 300);
    const LFileTagDataAudio t = ReadTags(f);
    EXPECT_EQ(Value(t, kLTagMarkerCount), "3");
    EXPECT_EQ(Value(t, "marker_2_pos"), "7");
    EXPECT_EQ(Value(t, "ORIGINATOR"), "Urheber");
    ExpectAudioIntact(f, 300, 2);
  }
}
