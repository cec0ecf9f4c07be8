#include "engine/cut_list_source.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cmath>
#include <cstring>
#include <random>

#include "cut_list_fixture.h"

namespace {

std::uint32_t Bits(float v) {
  std::uint32_t b;
  std::memcpy(&b, &v, sizeof b);
  return b;
}

float FromBits(std::uint32_t b) {
  float v;
  std::memcpy(&v, &b, sizeof v);
  return v;
}

}  // namespace

TEST_F(CutListTest, OneReadCrossesEverySegmentBoundaryAndSilenceReadsAsZeros) {
  LSoundCacheItemHandle a = TaggedItem(1, 300);
  LSoundCacheItemHandle b = TaggedItem(2, 300);
  LCutListAudio list;
  list.SetFormat(44100, kChannels);
  list.SegmentAppend(LCutListSegment(a, 7, 1.0f, 290));
  list.SegmentAppend(LCutListSegment::Silence(3));
  list.SegmentAppend(LCutListSegment(b, 1, 1.0f, 0));
  list.SegmentAppend(LCutListSegment(a, 250, 1.0f, 3));
  list.SegmentAppend(LCutListSegment(b, 20, 1.0f, 280));
  const Model model =
      Concat({ModelOf(1, 290, 7), ModelSilence(3), ModelOf(2, 0, 1), ModelOf(1, 3, 250), ModelOf(2, 280, 20)});
  LSoundSource source = list.OpenSource();
  EXPECT_EQ(source.GetEndSample(), 281);
  EXPECT_EQ(source.GetChannels(), kChannels);
  EXPECT_EQ(ReadBlocks(source, 0, 281, 281), Render(model, kChannels));
  EXPECT_EQ(ReadBlocks(source, 0, 281, 1), Render(model, kChannels));

  // Silence around the list: before 0 and past the end.
  std::vector<float> around = ReadBlocks(source, -10, 20, 20);
  EXPECT_EQ(around, Render(Concat({ModelSilence(10), ModelOf(1, 290, 7), ModelSilence(3)}), kChannels));
  EXPECT_EQ(source.GetPositionSample(), 10);
  EXPECT_EQ(ReadBlocks(source, 275, 10, 10), Render(Concat({ModelOf(2, 294, 6), ModelSilence(4)}), kChannels));

  // A seek back behind the current segment, and a read of nothing.
  source.Seek(200);
  std::vector<float> one(2, -1.0f);
  source.Read(one.data(), 0);
  EXPECT_EQ(one[0], -1.0f);
  source.Seek(12);
  source.Read(one.data(), 1);
  EXPECT_EQ(one[0], FrameName(1, 4, 0));
  EXPECT_EQ(source.GetPositionSample(), 13);
  source.Seek(5000);
  source.Read(one.data(), 1);
  EXPECT_EQ(one[1], 0.0f);
}

TEST_F(CutListTest, TenThousandSegmentsReadInBigOddAndPerSegmentBlocksAlikeBitForBit) {
  constexpr int kSegments = 10000;
  LSoundCacheItemHandle a = TaggedItem(1, 5000);
  LSoundCacheItemHandle b = TaggedItem(2, 5000);
  LCutListAudio list;
  list.SetFormat(44100, kChannels);
  std::vector<float> expected;
  std::mt19937 random(99);
  for (int i = 0; i < kSegments; ++i) {
    const long long length = 1 + random() % 40;
    const int kind = static_cast<int>(random() % 10);
    if (kind == 0) {
      list.SegmentAppend(LCutListSegment::Silence(length));
      expected.insert(expected.end(), static_cast<std::size_t>(length * kChannels), 0.0f);
      continue;
    }
    const long long offset = random() % (5000 - length);
    const float gain = kind == 1 ? 0.5f : 1.0f;
    const int tag = kind % 2 == 0 ? 1 : 2;
    list.SegmentAppend(LCutListSegment(tag == 1 ? a : b, length, gain, offset));
    for (long long f = 0; f < length; ++f) {
      for (int c = 0; c < kChannels; ++c) expected.push_back(FrameName(tag, offset + f, c) * gain);
    }
  }
  const long long total = list.GetLength();
  LSoundSource source = list.OpenSource();
  ASSERT_EQ(source.GetEndSample(), total);
  const std::vector<float> whole = ReadBlocks(source, 0, total, 8192);
  EXPECT_EQ(whole, expected);

  std::vector<float> perSegment(whole.size(), -1.0f);
  long long at = 0;
  for (const LCutListSegment& segment : list.Segments()) {
    source.Seek(at);
    source.Read(perSegment.data() + at * kChannels, segment.length);
    at += segment.length;
  }
  EXPECT_TRUE(SameBits(perSegment, whole));
  EXPECT_TRUE(SameBits(ReadBlocks(source, 0, total, 234), whole));
  EXPECT_EQ(RefCount(a) + RefCount(b),
            2 + 2 * (list.SegmentCount() - SegmentsNaming({&list}, kLSoundCacheItemSilence)));
}

TEST_F(CutListTest, AGainOfOneHalfHalvesAndAGainOfExactlyOnePassesEveryBitThrough) {
  // A signalling NaN and a denormal: any multiply, even by 1.0, would change the NaN's bits.
  const std::vector<float> odd = {FromBits(0x7F800001u), FromBits(0x00000003u), 3.0f, -0.0f};
  LSoundCacheItemHandle item = AddItem(LMakeSource<VectorSource>(odd, 2));
  std::vector<unsigned char> stored = FileBytes(CachePath(item.Number(), kLSoundCacheExtAudio));
  ASSERT_EQ(stored.size(), 16u);
  ASSERT_EQ(stored[0] | stored[1] << 8 | stored[2] << 16 | static_cast<std::uint32_t>(stored[3]) << 24, 0x7F800001u);

  LCutListAudio list;
  list.SetFormat(44100, 2);
  list.SegmentAppend(LCutListSegment(item, 2, 1.0f, 0));
  std::vector<float> same = ReadList(list);
  ASSERT_EQ(same.size(), 4u);
  for (std::size_t i = 0; i < 4; ++i) EXPECT_EQ(Bits(same[i]), Bits(odd[i])) << i;

  LSoundCacheItemHandle stairs = TaggedItem(1, 100);
  LCutListAudio half;
  half.SetFormat(44100, kChannels);
  half.SegmentAppend(LCutListSegment(stairs, 100, 0.5f, 0));
  std::vector<float> halved = ReadList(half);
  std::vector<float> full = Render(ModelOf(1, 0, 100), kChannels);
  for (std::size_t i = 0; i < full.size(); ++i) ASSERT_EQ(halved[i], full[i] * 0.5f) << i;
}

TEST_F(CutListTest, AnItemWhoseAudioFileIsMissingReadsAsSilence) {
  LSoundCacheItemHandle a = TaggedItem(1, 100);
  LSoundCacheItemHandle b = TaggedItem(2, 100);
  LCutListAudio list = ListOver(a, 100);
  list.SegmentAppend(LCutListSegment(b, 50, 0.5f, 20));
  list.SegmentAppend(LCutListSegment(a, 200, 1.0f, 50));  // runs 150 frames past the item's end
  ASSERT_EQ(::unlink(CachePath(b.Number(), kLSoundCacheExtAudio).c_str()), 0);
  EXPECT_EQ(ReadList(list),
            Render(Concat({ModelOf(1, 0, 100), ModelSilence(50), ModelOf(1, 50, 50), ModelSilence(150)}), kChannels));
}

TEST_F(CutListTest, ASourceKeepsReadingTheSegmentsItWasOpenedOver) {
  LSoundCacheItemHandle a = TaggedItem(1, 100);
  LCutListAudio list = ListOver(a, 100);
  LSoundSource source = list.OpenSource();
  EXPECT_EQ(RefCount(a), 3);
  list.EfDelete(0, 50);
  list.EfInsertSilence(0, 10);
  EXPECT_EQ(ReadBlocks(source, 0, 100, 37), Render(ModelOf(1, 0, 100), kChannels));
  source.Close();
  EXPECT_EQ(RefCount(a), 2);
}
