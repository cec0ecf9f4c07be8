#include "formats/wav_tag_writer.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "base/memory_stream.h"
#include "formats/wav_tag_iterator.h"
#include "support/temp_folder.h"
#include "tag_test_files.h"

using namespace tagtest;

namespace {

struct Written {
  LRiffTagWriteResult result;
  Bytes file;
  std::vector<ListedChunk> chunks;
};

Written WriteTags(const Bytes& file, const LFileTagDataAudio& tags, const std::string& tempFolder) {
  LMemoryStream stream{Bytes(file)};
  LWavTagWriter writer(stream, tags, tempFolder);
  Written w;
  w.result = writer.Write();
  w.file = stream.Bytes();
  w.chunks = ListChunks(w.file);
  return w;
}

// The INFO entries of a LIST chunk body as "ID=text;" pairs.
std::string InfoEntries(const ListedChunk& list) {
  std::string out;
  for (std::size_t at = 4; at + 8 <= list.body.size();) {
    const std::string id(reinterpret_cast<const char*>(list.body.data() + at), 4);
    const std::uint32_t size = LE32(list.body, at + 4);
    out += id + "=" + FieldText(list.body, at + 8, size) + ";";
    at += 8 + size + (size & 1);
  }
  return out;
}

}  // namespace

TEST(WavTagWriter, TitleAndArtistGiveAnInfoListAndADisplayTitleButNoCartAndNoBext) {
  TempFolder temp;
  LFileTagDataAudio tags;
  tags.Set("TITLE", "Abendlied");
  tags.Set("ARTIST", "Chor");
  const Bytes original = PlainWave();
  const Written w = WriteTags(original, tags, temp.Path());
  ASSERT_EQ(w.result, LRiffTagWriteResult::Ok);

  EXPECT_EQ(ChunkIds(w.chunks), (std::vector<std::string>{"fmt ", "data", "id3 ", "CSET", "LIST", "DISP"}));
  const ListedChunk* list = FindChunk(w.chunks, "LIST");
  ASSERT_NE(list, nullptr);
  EXPECT_EQ(std::string(list->body.begin(), list->body.begin() + 4), "INFO");
  EXPECT_EQ(InfoEntries(*list), "INAM=Abendlied;IART=Chor;");
  // "Abendlied" and its zero are 10 bytes, "Chor" and its zero 5 plus a pad byte.
  EXPECT_EQ(list->size, 4u + 8 + 10 + 8 + 6);

  const ListedChunk* disp = FindChunk(w.chunks, "DISP");
  ASSERT_NE(disp, nullptr);
  EXPECT_EQ(disp->size, 4u + 9 + 1);
  EXPECT_EQ(LE32(disp->body, 0), 1u);
  EXPECT_EQ(FieldText(disp->body, 4, 10), "Abendlied");

  const ListedChunk* cset = FindChunk(w.chunks, "CSET");
  ASSERT_NE(cset, nullptr);
  EXPECT_EQ(cset->size, 8u);
  EXPECT_EQ(LE16(cset->body, 0), 65001u);

  // The audio and everything before it is untouched; the RIFF size covers the file.
  EXPECT_TRUE(std::equal(original.begin() + 8, original.end(), w.file.begin() + 8));
  EXPECT_EQ(LE32(w.file, 4), w.file.size() - 8);
  // The ID3 tag's temporary file is gone.
  EXPECT_TRUE(FolderNames(temp.Path()).empty());
}

TEST(WavTagWriter, EncodedByGoesToIsrcAndFillsTheCartProducerAppId) {
  TempFolder temp;
  LFileTagDataAudio tags;
  tags.Set("ENCODEDBY", "x");
  {
    LMemoryStream stream{PlainWave()};
    LWavTagWriter writer(stream, tags, temp.Path());
    ASSERT_EQ(writer.Write(), LRiffTagWriteResult::Ok);
    const auto chunks = ListChunks(stream.Bytes());
    EXPECT_EQ(InfoEntries(*FindChunk(chunks, "LIST")), "ISRC=x;");
    // An ordinary key fills its cart field but does not make a cart chunk by itself.
    EXPECT_EQ(FindChunk(chunks, "cart"), nullptr);
    ASSERT_EQ(writer.CartBody().size(), 2048u);
    EXPECT_EQ(FieldText(writer.CartBody(), 488, 64), "x");
    EXPECT_FALSE(writer.CartWanted());
  }
  // With a cart-specific key the chunk is written and carries the field.
  tags.Set("CUTID", "A-17");
  const Written w = WriteTags(PlainWave(), tags, temp.Path());
  ASSERT_EQ(w.result, LRiffTagWriteResult::Ok);
  const ListedChunk* cart = FindChunk(w.chunks, "cart");
  ASSERT_NE(cart, nullptr);
  EXPECT_EQ(cart->size, 2048u);
  EXPECT_EQ(FieldText(cart->body, 488, 64), "x");
  EXPECT_EQ(FieldText(cart->body, 132, 64), "A-17");
  EXPECT_EQ(FindChunk(w.chunks, "bext"), nullptr);
}

TEST(WavTagWriter, AMarkerAt1500MsIn44100HzIsWrittenAtSample66150) {
  LFileTagDataAudio tags;
  tags.MarkerAddMs(1500, 44100);
  tags.MarkerAddMs(250, 44100);
  TempFolder temp;
  const Written w = WriteTags(PlainWave(), tags, temp.Path());
  ASSERT_EQ(w.result, LRiffTagWriteResult::Ok);
  // Marker keys alone make a cue chunk and nothing else.
  EXPECT_EQ(ChunkIds(w.chunks), (std::vector<std::string>{"fmt ", "data", "cue "}));
  const ListedChunk* cue = FindChunk(w.chunks, "cue ");
  ASSERT_NE(cue, nullptr);
  ASSERT_EQ(cue->size, 4u + 2 * 24);
  EXPECT_EQ(LE32(cue->body, 0), 2u);
  // The rest of each point's layout is what ffprobe and sndfile-info read in the tag tests.
  EXPECT_EQ(LE32(cue->body, 4 + 4), 66150u);
  EXPECT_EQ(LE32(cue->body, 4 + 24 + 4), 11025u);
}

TEST(WavTagWriter, AnOld1000ByteBextRegionTakesASmallerChunkAndAJunkChunkFillsTheRestExactly) {
  TempFolder temp;
  const Bytes oldBext = Chunk("bext", Bytes(992, 'o'));
  ASSERT_EQ(oldBext.size(), 1000u);
  const Bytes original = RiffWave({Fmt16(2, 44100), oldBext, Staircase(500, 2)});
  LFileTagDataAudio tags;
  tags.Set("ORIGINATOR", "Sonvale");
  const Written w = WriteTags(original, tags, temp.Path());
  ASSERT_EQ(w.result, LRiffTagWriteResult::Ok);

  EXPECT_EQ(ChunkIds(w.chunks), (std::vector<std::string>{"fmt ", "bext", "JUNK", "data"}));
  const ListedChunk* bext = FindChunk(w.chunks, "bext");
  const ListedChunk* junk = FindChunk(w.chunks, "JUNK");
  EXPECT_EQ(bext->offset, 12u + 24);
  EXPECT_EQ(bext->size, 602u);
  EXPECT_EQ(FieldText(bext->body, 256, 32), "Sonvale");
  EXPECT_EQ(junk->offset, bext->offset + 8 + 602);
  EXPECT_EQ(junk->offset + 8 + junk->size, bext->offset + 1000);
  EXPECT_EQ(junk->size, 1000u - 610 - 8);
  // The old text does not linger in the JUNK chunk.
  EXPECT_EQ(std::count(junk->body.begin(), junk->body.end(), 0), static_cast<long>(junk->size));
  // Nothing was appended and the audio did not move.
  EXPECT_EQ(w.file.size(), original.size());
  EXPECT_TRUE(std::equal(original.begin() + 1036, original.end(), w.file.begin() + 1036));
}

TEST(WavTagWriter, OldRegionsGoToTheFirstKindByPriorityThatFitsAndAnExactFitNeedsNoJunk) {
  TempFolder temp;
  LFileTagDataAudio tags;
  tags.Set("ORIGINATOR", "o");
  tags.MarkerAddSample(5);
  // The cue chunk (4 + 24 bytes) fits the old id3 region of 36 bytes exactly; bext
  // goes to the old cart region of 2056 bytes, with a JUNK chunk after it.
  const Bytes original =
      RiffWave({Fmt16(1, 8000), Chunk("id3 ", Bytes(28, 1)), Chunk("cart", Bytes(2048, 2)), Staircase(100, 1)});
  const Written w = WriteTags(original, tags, temp.Path());
  ASSERT_EQ(w.result, LRiffTagWriteResult::Ok);
  EXPECT_EQ(ChunkIds(w.chunks), (std::vector<std::string>{"fmt ", "cue ", "bext", "JUNK", "data"}));
  EXPECT_EQ(w.file.size(), original.size());
}

TEST(WavTagWriter, OldTagChunksAreReplacedSoThatWritingTwiceEqualsWritingOnce) {
  TempFolder temp;
  LFileTagDataAudio first;
  first.Set("TITLE", "Erster Titel, recht lang");
  first.Set("COMMENT", "alt");
  first.MarkerAddSample(10);
  LFileTagDataAudio second;
  second.Set("TITLE", "Zweiter");
  second.Set("CUTID", "7");

  const Written once = WriteTags(PlainWave(), second, temp.Path());
  const Written twice = WriteTags(WriteTags(PlainWave(), first, temp.Path()).file, second, temp.Path());
  ASSERT_EQ(twice.result, LRiffTagWriteResult::Ok);
  EXPECT_EQ(twice.file, once.file);
  // An empty set removes them all.
  EXPECT_EQ(WriteTags(twice.file, LFileTagDataAudio(), temp.Path()).file, PlainWave());

  // An old INFO list in the middle of the file cannot be reused: it becomes JUNK.
  const Bytes middle = RiffWave({Fmt16(2, 44100), InfoList({{"INAM", "alt"}}), Staircase(10, 2)});
  const Written w = WriteTags(middle, second, temp.Path());
  EXPECT_EQ(ChunkIds(w.chunks), (std::vector<std::string>{"fmt ", "JUNK", "data", "id3 ", "CSET", "LIST", "DISP",
                                                          "cart"}));
  EXPECT_EQ(LE32(w.file, 4), w.file.size() - 8);
}

TEST(WavTagWriter, FieldsAreCutAtTheirWidthWithoutSplittingACharacter) {
  TempFolder temp;
  LFileTagDataAudio tags;
  // 63 ASCII characters and an umlaut of two bytes: the cut at 64 would split it.
  tags.Set("TITLE", std::string(63, 't').append("ü").c_str());
  tags.Set("TIME", "12:34:56:78");
  tags.Set("LEVELREFERENCE", "-12");
  tags.Set("POSTTIMER1VALUE", "not a number");
  tags.Set("TIMEREFLOW", "123456789012345");
  tags.Set("BWFVERSION", "2");
  tags.Set("UMID", "1, 2,255,7");
  tags.Set("CODINGHISTORY", "A=PCM,F=44100\r\n");
  tags.Set("TAGTEXT", "Text");
  LMemoryStream stream{PlainWave()};
  LWavTagWriter writer(stream, tags, temp.Path());
  ASSERT_EQ(writer.Write(), LRiffTagWriteResult::Ok);

  const Bytes& cart = writer.CartBody();
  EXPECT_EQ(FieldText(cart, 4, 64), std::string(63, 't'));
  EXPECT_EQ(FieldText(cart, 462, 8), "12:34:56");
  EXPECT_EQ(static_cast<std::int32_t>(LE32(cart, 680)), -12);
  EXPECT_EQ(LE32(cart, 688), 0u);
  EXPECT_EQ(cart.size(), 2048u + 4);

  const Bytes& bext = writer.BextBody();
  // Only the first 11 characters count: 12345678901, kept to 32 bits.
  EXPECT_EQ(LE32(bext, 338), static_cast<std::uint32_t>(12345678901LL));
  EXPECT_EQ(LE16(bext, 346), 2u);
  EXPECT_EQ(bext[348], 1);
  EXPECT_EQ(bext[349], 2);
  EXPECT_EQ(bext[350], 255);
  EXPECT_EQ(bext[351], 7);
  EXPECT_EQ(bext[352], 0);
  EXPECT_EQ(bext.size(), 602u + 15);
  const auto chunks = ListChunks(stream.Bytes());
  const ListedChunk* written = FindChunk(chunks, "bext");
  ASSERT_NE(written, nullptr);
  EXPECT_EQ(written->size, 617u);
}

TEST(WavTagWriter, AFileWhoseChunksRunPastItsEndIsLeftUntouched) {
  TempFolder temp;
  LFileTagDataAudio tags;
  tags.Set("TITLE", "t");
  // A recording still being written: the data size is the writer's provisional value.
  Bytes growing = PlainWave(100, 1, 8000);
  for (std::size_t i = 0; i < 4; ++i) growing[40 + i] = i == 0 ? 0xDB : 0xFF;
  const Written w = WriteTags(growing, tags, temp.Path());
  EXPECT_EQ(w.result, LRiffTagWriteResult::Damaged);
  EXPECT_EQ(w.file, growing);

  const Written notWave = WriteTags(Bytes(100, 0), tags, temp.Path());
  EXPECT_EQ(notWave.result, LRiffTagWriteResult::NotRiff);
  EXPECT_TRUE(FolderNames(temp.Path()).empty());
}

TEST(WavTagWriter, AShortWriteIsReportedAndTheTagsFollowTheLastChunkWhereAWalkFindsThem) {
  TempFolder temp;
  LFileTagDataAudio tags;
  tags.Set("TITLE", "t");
  const Bytes original = PlainWave();
  LMemoryStream readOnly(original.data(), original.size());
  LWavTagWriter writer(readOnly, tags, temp.Path());
  EXPECT_EQ(writer.Write(), LRiffTagWriteResult::WriteFailed);
  EXPECT_FALSE(writer.AllChunkWriteStatusDone());

  // Mono 8-bit-sized data of odd length whose writer forgot the pad byte: it gets it.
  const Bytes body(7, 0x55);
  const Bytes odd = RiffWave({Fmt16(1, 8000), Chunk("data", body, -1, false)});
  // The same data followed by an even chunk: every chunk after the data lies at
  // an odd offset, and the tags follow the last one without a pad byte.
  const Bytes shifted = RiffWave({Fmt16(1, 8000), Chunk("data", body, -1, false), Chunk("fact", Bytes(4, 1))});
  ASSERT_EQ(shifted.size() % 2, 1u);
  // The same data with a pad byte that is not 0, as some writers leave it: it becomes 0.
  Bytes dirty = odd;
  dirty.push_back('s');
  const std::uint32_t riffSize = static_cast<std::uint32_t>(dirty.size() - 8);
  std::memcpy(dirty.data() + 4, &riffSize, 4);

  struct Case {
    const Bytes& file;
    std::size_t tagsAt;
    bool zeroPadBefore;
  };
  for (const Case& c : {Case{odd, odd.size() + 1, true}, Case{shifted, shifted.size(), false},
                        Case{dirty, dirty.size(), true}}) {
    SCOPED_TRACE(c.file.size());
    const Written w = WriteTags(c.file, tags, temp.Path());
    ASSERT_EQ(w.result, LRiffTagWriteResult::Ok);
    ASSERT_GE(w.file.size(), c.tagsAt + 4);
    EXPECT_EQ(std::string(w.file.begin() + static_cast<long>(c.tagsAt), w.file.begin() + static_cast<long>(c.tagsAt) + 4),
              "id3 ");
    if (c.zeroPadBefore) {
      EXPECT_EQ(w.file[c.tagsAt - 1], 0);
    }
    EXPECT_EQ(LE32(w.file, 4), w.file.size() - 8);
    LMemoryStream back(w.file.data(), w.file.size());
    LWavTagIterator reader(back);
    ASSERT_TRUE(reader.Open());
    ASSERT_NE(reader.Tags().Get("TITLE"), nullptr);
    EXPECT_STREQ(reader.Tags().Get("TITLE"), "t");
  }
}
