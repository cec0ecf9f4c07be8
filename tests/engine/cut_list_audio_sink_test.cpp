#include "engine/cut_list_audio_sink.h"

#include <gtest/gtest.h>

#include <cmath>

#include "cut_list_fixture.h"
#include "engine/mp3_item_attributes.h"
#include "engine/sound_cache_item.h"
#include "engine/sound_cache_overview.h"

namespace {

LCutListAudioSink* SinkOf(const LSoundSink& handle) { return static_cast<LCutListAudioSink*>(handle.Get()); }

// Stereo frames whose peaks change from block to block, some beyond full scale.
std::vector<float> Waves(long long frames) {
  std::vector<float> s;
  for (long long f = 0; f < frames; ++f) {
    const float amplitude = static_cast<float>((f / 97) % 23) * 0.9f;
    s.push_back(amplitude * std::sin(static_cast<float>(f) * 0.05f));
    s.push_back(f % 300 < 150 ? -amplitude * 0.5f : 0.0f);
  }
  return s;
}

unsigned short gPaddedItem = kLSoundCacheItemNone;
bool PaddedLookup(unsigned short item, LMP3ItemAttributes* out) {
  if (item != gPaddedItem) return false;
  out->firstFrame = 0;
  out->frameCount = 105;
  out->paddingFrames = 5;
  return true;
}

}  // namespace

TEST_F(CutListTest, CommittingHoldsBackTheOpenBlockAndClosingPublishesEverything) {
  LSoundCacheItemHandle old = TaggedItem(1, 100);
  LCutListAudio list = ListOver(old, 100);
  LSoundSink sink = list.OpenSink(48000, kChannels, "/recordings/take 1.wav");
  ASSERT_FALSE(sink.HasError());
  const unsigned short item = SinkOf(sink)->Item();
  ASSERT_LE(item, kLSoundCacheItemLast);
  const std::vector<float> samples = Render(ModelOf(3, 0, 300), kChannels);
  sink.Write(samples.data(), 300);
  EXPECT_EQ(list.GetLength(), 100) << "nothing is shown before the first commit";

  EXPECT_EQ(SinkOf(sink)->CommitUpTo(300), 256);
  ASSERT_EQ(list.SegmentCount(), 1);
  EXPECT_EQ(list.Segments().front().ItemNumber(), item);
  EXPECT_EQ(list.GetLength(), 256);
  EXPECT_EQ(list.GetSampleRate(), 48000u);
  EXPECT_EQ(RefCount(old), 1) << "the old segments went at the commit";
  EXPECT_EQ(LSoundCache::Instance().RefCountGet(item), 2);
  EXPECT_EQ(ReadList(list), Render(ModelOf(3, 0, 256), kChannels));
  EXPECT_EQ(SinkOf(sink)->CommitUpTo(100), 56);

  sink.Close();
  EXPECT_EQ(list.GetLength(), 300);
  EXPECT_EQ(ReadList(list), samples);
  EXPECT_STREQ(list.GetPath(), "/recordings/take 1.wav");
  EXPECT_EQ(LSoundCache::Instance().RefCountGet(item), 1);
  EXPECT_EQ(FileBytes(CachePath(item, kLSoundCacheExtOverview)).size(), 2u * kChannels * 4);
  int rate = 0;
  unsigned char channels = 0;
  EXPECT_TRUE(LSoundCacheItemAudioInfoGet(CachePath(item, kLSoundCacheExtInfo).c_str(), rate, channels));
  EXPECT_EQ(rate, 48000);
  EXPECT_EQ(channels, kChannels);
  EXPECT_TRUE(LSoundCacheItemIsValid(item));

  list.Clear();
  EXPECT_FALSE(Exists(CachePath(item, kLSoundCacheExtAudio))) << "the item lived on through the list only";
}

TEST_F(CutListTest, ASinkOfNoChannelsWritesMonoAndRaisesItsErrorFlag) {
  LCutListAudio list;
  LSoundSink sink = list.OpenSink(44100, 0, nullptr);
  EXPECT_TRUE(sink.HasError());
  EXPECT_EQ(sink.GetChannels(), 1);
  const unsigned short item = SinkOf(sink)->Item();
  const std::vector<float> samples = {0.5f, -0.5f, 0.25f};
  sink.Write(samples.data(), 3);
  sink.Close();
  EXPECT_EQ(FileBytes(CachePath(item, kLSoundCacheExtAudio)).size(), 12u);
  EXPECT_EQ(list.GetChannels(), 1);
  EXPECT_EQ(ReadList(list), samples);
}

TEST_F(CutListTest, SeekingTo1000RewritesFromOverviewRecord3With232FramesInTheBlock) {
  LCutListAudio list;
  LSoundSink sink = list.OpenSink(44100, kChannels, nullptr);
  LCutListAudioSink* s = SinkOf(sink);
  const unsigned short item = s->Item();
  const std::vector<float> quiet(2000 * kChannels, 0.5f);
  sink.Write(quiet.data(), 2000);
  sink.Seek(1000);
  EXPECT_EQ(sink.GetPosition(), 1000);
  EXPECT_EQ(s->BlockFrames(), 232);
  const std::vector<float> loud(24 * kChannels, 1.0f);
  sink.Write(loud.data(), 24);  // completes the block of frame 1000, whose peaks restarted at the seek
  EXPECT_EQ(s->BlockFrames(), 0);
  sink.Close();

  const std::vector<std::uint16_t> grf = OverviewCodes(CachePath(item, kLSoundCacheExtOverview));
  ASSERT_EQ(grf.size(), 7u * kChannels * 2);
  // Positive codes of records 2 to 4: 0.5, then 1.0 on both channels, then 0.5.
  EXPECT_EQ(grf[2 * 4], 2067);
  EXPECT_EQ(grf[3 * 4], 4134);
  EXPECT_EQ(grf[3 * 4 + 2], 4134);
  EXPECT_EQ(grf[4 * 4], 2067);
  EXPECT_EQ(list.GetLength(), 1024);
  std::vector<float> read = ReadList(list);
  EXPECT_EQ(read[999 * kChannels], 0.5f);
  EXPECT_EQ(read[1000 * kChannels], 1.0f);
  EXPECT_EQ(FileBytes(CachePath(item, kLSoundCacheExtAudio)).size(), 2000u * kChannels * 4);
}

TEST_F(CutListTest, TheSinksOverviewIsTheCacheSinksOverviewByteForByte) {
  const std::vector<float> samples = Waves(5000);
  LSoundCacheItemHandle reference = AddItem(LMakeSource<VectorSource>(samples, kChannels));
  LCutListAudio list;
  LSoundSink sink = list.OpenSink(44100, kChannels, nullptr);
  const unsigned short item = SinkOf(sink)->Item();
  const long long pieces[] = {1, 255, 234, 7, 1000, 256, 3247};
  long long at = 0;
  for (long long piece : pieces) {
    sink.Write(samples.data() + at * kChannels, piece);
    at += piece;
  }
  ASSERT_EQ(at, 5000);
  sink.Close();
  for (const char* extension : {kLSoundCacheExtAudio, kLSoundCacheExtOverview})
    EXPECT_EQ(FileBytes(CachePath(item, extension)), FileBytes(CachePath(reference.Number(), extension))) << extension;
}

TEST_F(CutListTest, ClosingAnUnwrittenSinkShowsAnEmptyItemAndTellsTheAnalyzers) {
  std::vector<std::pair<unsigned short, unsigned int>> heard;
  const int analyzer = LSoundCache::Instance().AnalyzerAdd(
      {[&](unsigned short item, unsigned int change) { heard.emplace_back(item, change); }, nullptr});
  LCutListAudio list;
  unsigned short item;
  {
    LSoundSink sink = list.OpenSink(8000, 1, "");
    item = SinkOf(sink)->Item();
  }
  LSoundCache::Instance().AnalyzerRemove(analyzer);
  ASSERT_EQ(list.SegmentCount(), 1);
  EXPECT_EQ(list.Segments().front().ItemNumber(), item);
  EXPECT_EQ(list.GetLength(), 0);
  EXPECT_EQ(list.GetSampleRate(), 8000u);
  EXPECT_TRUE(Exists(CachePath(item, kLSoundCacheExtAudio)));
  EXPECT_TRUE(FileBytes(CachePath(item, kLSoundCacheExtAudio)).empty());
  EXPECT_EQ(heard, (std::vector<std::pair<unsigned short, unsigned int>>{{item, kLSoundCacheChangeItemAdded}}));
}

TEST_F(CutListTest, ATailIsWrittenAtCloseAndLosesTheEncodersPaddingOutsideLosslessMode) {
  for (bool lossless : {false, true}) {
    LMP3LosslessContext context;
    context.ModeSet(lossless);
    LCutListAudio list(&context);
    LSoundSink sink = list.OpenSink(44100, 1, nullptr);
    LCutListAudioSink* s = SinkOf(sink);
    gPaddedItem = s->Item();
    LMP3ItemAttributesLookupSet(PaddedLookup);
    const std::vector<float> head(10, -1.0f);
    sink.Write(head.data(), 10);
    s->TailSet(MakeStaircase(1000, 1), 100);
    sink.Close();
    LMP3ItemAttributesLookupSet(nullptr);
    EXPECT_EQ(list.GetLength(), lossless ? 110 : 105) << lossless;
    std::vector<float> read = ReadList(list);
    EXPECT_EQ(read[9], -1.0f);
    EXPECT_EQ(read[10], 900.0f);
  }
}
