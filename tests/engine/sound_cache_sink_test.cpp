#include "engine/sound_cache_sink.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstring>

#include "engine/sound_cache_item.h"
#include "engine/sound_cache_overview.h"
#include "engine/sound_cache_source.h"
#include "sound_cache_fixture.h"

namespace {

constexpr long long kFrames = 1000;

// 1000 stereo frames whose four overview blocks each test a corner of the peak coding.
std::vector<float> PeakCorners() {
  std::vector<float> s(static_cast<std::size_t>(kFrames * 2), 0.0f);
  auto at = [&](long long frame, int channel) -> float& { return s[static_cast<std::size_t>(frame * 2 + channel)]; };
  for (long long f = 0; f < 256; ++f) {
    at(f, 0) = 1e-6f;    // a tiny peak still codes as 1
    at(f, 1) = -0.5f;    // all negative: positive code 0
  }
  at(300, 0) = 20.0f;    // over range
  at(301, 1) = -20.0f;
  at(302, 1) = 0.25f;
  // frames 512 .. 767 stay silent
  at(999, 0) = 1.0f;     // the short last block (232 frames)
  at(800, 1) = 15.848932f;
  at(801, 1) = -1.0f;
  return s;
}

std::vector<float> ReadFloats(const std::string& path) {
  std::vector<unsigned char> bytes = FileBytes(path);
  std::vector<float> floats(bytes.size() / sizeof(float));
  std::memcpy(floats.data(), bytes.data(), floats.size() * sizeof(float));
  return floats;
}

}  // namespace

TEST(SoundCachePeakCode, CodesTinyFullScaleAndOverRangePeaksAsStored) {
  const std::pair<float, std::uint16_t> codes[] = {{0.0f, 0},    {-1.0f, 0},           {NAN, 0},        {1e-6f, 1},
                                                   {1.0f, 4134}, {15.848932f, 65534}, {15.9f, 65535}, {20.0f, 65535}};
  for (auto [peak, code] : codes) EXPECT_EQ(LSoundCachePeakCode(peak), code) << peak;
}

TEST_F(SoundCacheTest, AnItemOfAThousandStereoFramesHasItsAudioOverviewAndDescription) {
  long long length = 0;
  LSoundCacheItemHandle item = AddItem(LMakeSource<VectorSource>(PeakCorners(), 2, 48000), &length);
  ASSERT_TRUE(item.IsItem());
  EXPECT_EQ(length, kFrames);
  EXPECT_TRUE(LSoundCacheItemIsValid(item.Number()));
  EXPECT_EQ(LSoundCacheItemLengthGet(item.Number()), kFrames);

  EXPECT_EQ(ReadFloats(CachePath(item.Number(), kLSoundCacheExtAudio)), PeakCorners());
  // (positive, negative) code of channels 0 and 1 in each block.
  EXPECT_EQ(OverviewCodes(CachePath(item.Number(), kLSoundCacheExtOverview)),
            (std::vector<std::uint16_t>{1, 0, 0, 2067,          // a tiny peak; all negative
                                        65535, 0, 1033, 65535,  // over range
                                        0, 0, 0, 0,             // silence
                                        4134, 0, 65534, 4134}));  // the short last block has its records
  int rate = 0;
  unsigned char channels = 0;
  EXPECT_TRUE(LSoundCacheItemAudioInfoGet(CachePath(item.Number(), kLSoundCacheExtInfo).c_str(), rate, channels));
  EXPECT_EQ(rate, 48000);
  EXPECT_EQ(channels, 2);
}

TEST_F(SoundCacheTest, WritingInOddPiecesGivesTheSameFilesAsOneGo) {
  LSoundCacheItemHandle whole = AddItem(LMakeSource<VectorSource>(PeakCorners(), 2));
  std::vector<float> samples = PeakCorners();
  unsigned short number = LSoundCache::Instance().ItemCreateNewAndIncRef();
  ASSERT_NE(number, kLSoundCacheItemNone);
  LSoundCacheItemHandle pieces(number);
  long long length = 0;
  {
    LSoundSink sink = LMakeSink<LSoundCacheSink>(44100, 2, LSoundCacheItemHandle::Adopt(number), &length);
    EXPECT_FALSE(sink.HasError());
    const long long sizes[] = {1, 255, 234, 7, 256, 247};
    long long at = 0;
    for (long long size : sizes) {
      sink.Write(samples.data() + at * 2, size);
      at += size;
    }
    ASSERT_EQ(at, kFrames);
    EXPECT_EQ(sink.GetPosition(), kFrames);
    EXPECT_EQ(LSoundCache::Instance().RefCountGet(number), 2);
  }
  EXPECT_EQ(length, kFrames);
  EXPECT_EQ(LSoundCache::Instance().RefCountGet(number), 1);
  for (const char* extension : {kLSoundCacheExtAudio, kLSoundCacheExtOverview}) {
    EXPECT_EQ(FileBytes(CachePath(number, extension)), FileBytes(CachePath(whole.Number(), extension))) << extension;
  }
}

TEST_F(SoundCacheTest, ATailIsAppendedFromTheEndOfItsSourceAtClose) {
  unsigned short number = LSoundCache::Instance().ItemCreateNewAndIncRef();
  LSoundCacheItemHandle held(number);
  long long length = 0;
  {
    auto* sink = new LSoundCacheSink(44100, 1, LSoundCacheItemHandle::Adopt(number), &length);
    LSoundSink handle(sink);
    std::vector<float> head = {-1.0f, -2.0f};
    handle.Write(head.data(), 2);
    sink->TailSet(MakeStaircase(10000, 1), 9000);
  }
  ASSERT_EQ(length, 9002);
  std::vector<float> audio = ReadFloats(CachePath(number, kLSoundCacheExtAudio));
  ASSERT_EQ(audio.size(), 9002u);
  EXPECT_EQ(audio[1], -2.0f);
  EXPECT_EQ(audio[2], 1000.0f);
  EXPECT_EQ(audio[9001], 9999.0f);
  EXPECT_EQ(FileBytes(CachePath(number, kLSoundCacheExtOverview)).size(), 36u * 4);
}

TEST_F(SoundCacheTest, ASourceOfNoChannelsGivesASinkInErrorAndNoItem) {
  unsigned short number = LSoundCache::Instance().ItemCreateNewAndIncRef();
  LSoundSink sink = LMakeSink<LSoundCacheSink>(44100, 0, LSoundCacheItemHandle::Adopt(number));
  EXPECT_TRUE(sink.HasError());
  EXPECT_EQ(sink.GetChannels(), 1);
  sink.Close();
  EXPECT_FALSE(Exists(CachePath(number, kLSoundCacheExtAudio)));
}

TEST_F(SoundCacheTest, ACacheSourceReadsTheSameFramesWholeAndInOddBlocksWithSilenceAround) {
  constexpr long long kItemFrames = 20000;
  LSoundCacheItemHandle item = AddItem(MakeStaircase(kItemFrames, 2, 22050));
  LSoundSource source = LSoundCacheSourceOpen(item.Number());
  ASSERT_FALSE(source.IsError());
  EXPECT_EQ(source.GetSampleRate(), 22050u);
  EXPECT_EQ(source.GetChannels(), 2);
  EXPECT_EQ(source.GetEndSample(), kItemFrames);
  EXPECT_EQ(LSoundCache::Instance().RefCountGet(item.Number()), 2);

  const long long from = -10;
  const long long total = kItemFrames + 40;
  std::vector<float> whole(static_cast<std::size_t>(total * 2), -7.0f);
  source.Seek(from);
  source.Read(whole.data(), total);
  EXPECT_EQ(source.GetPositionSample(), from + total);
  for (long long i = 0; i < total; ++i) {
    long long frame = from + i;
    bool inside = frame >= 0 && frame < kItemFrames;
    for (int c = 0; c < 2; ++c)
      ASSERT_EQ(whole[static_cast<std::size_t>(i * 2 + c)], inside ? StaircaseValue(frame, c) : 0.0f) << frame;
  }

  std::vector<float> pieces(whole.size(), -7.0f);
  source.Seek(from);
  for (long long at = 0; at < total; at += 234) {
    long long take = std::min<long long>(234, total - at);
    source.Read(pieces.data() + at * 2, take);
  }
  EXPECT_EQ(pieces, whole);

  // A seek back into the middle reads from there.
  std::vector<float> two(4);
  source.Seek(12345);
  source.Read(two.data(), 2);
  EXPECT_EQ(two[0], StaircaseValue(12345, 0));
  EXPECT_EQ(two[3], StaircaseValue(12346, 1));
  source.Close();
  EXPECT_EQ(LSoundCache::Instance().RefCountGet(item.Number()), 1);
}

TEST_F(SoundCacheTest, AnItemWhoseFilesAreMissingReadsAsSilence) {
  LSoundCacheItemHandle item = AddItem(MakeStaircase(300, 1));
  ASSERT_EQ(std::remove(CachePath(item.Number(), kLSoundCacheExtAudio).c_str()), 0);
  LSoundSource bare = LMakeSource<LSoundCacheSource>(item.Number(), 44100, 1);
  EXPECT_EQ(bare.GetEndSample(), 0);
  EXPECT_EQ(bare.GetErrorCode(), kLSourceCannotOpen);
  std::vector<float> out(50, 3.0f);
  bare.Read(out.data(), 50);
  EXPECT_EQ(out, std::vector<float>(50, 0.0f));
  EXPECT_FALSE(LSoundCacheItemIsValid(item.Number()));

  ASSERT_EQ(std::remove(CachePath(item.Number(), kLSoundCacheExtInfo).c_str()), 0);
  EXPECT_EQ(LSoundCacheItemLengthGet(item.Number()), 0);
  LSoundSource opened = LSoundCacheSourceOpen(item.Number());
  EXPECT_EQ(opened.GetErrorCode(), kLSourceCannotOpen);
  EXPECT_EQ(opened.GetEndSample(), 0);
}

TEST_F(SoundCacheTest, SoxReadsTheAudioFileAsTheSameRawFloats) {
  if (std::system("command -v sox >/dev/null 2>&1") != 0) GTEST_SKIP() << "sox is not installed";
  // sox works in fixed point and clips beyond full scale: a ramp from -1 to just below 1.
  std::vector<float> ramp(8192);
  for (std::size_t i = 0; i < ramp.size(); ++i) ramp[i] = (static_cast<float>(i) - 4096.0f) / 4096.0f;
  LSoundCacheItemHandle item = AddItem(LMakeSource<VectorSource>(ramp, 2));
  std::string aud = CachePath(item.Number(), kLSoundCacheExtAudio);
  std::string wav = temp_.File("judge.wav");
  std::string command = "sox -t raw -e floating-point -b 32 -L -c 2 -r 44100 '" + aud + "' -e floating-point '" +
                        wav + "' 2>/dev/null";
  ASSERT_EQ(std::system(command.c_str()), 0);
  // sox writes the same floats behind its header: the data are the file's last bytes.
  std::vector<unsigned char> raw = FileBytes(aud);
  std::vector<unsigned char> out = FileBytes(wav);
  ASSERT_GE(out.size(), raw.size());
  EXPECT_TRUE(std::equal(raw.begin(), raw.end(), out.end() - static_cast<long>(raw.size())));
}
