#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>

#include "base/memory_stream.h"
#include "cut_list_fixture.h"
#include "engine/cut_list_audio.h"
#include "engine/mp3_item_attributes.h"

namespace {

struct Shape {
  unsigned short item;
  long long length;
  long long offset;
  bool operator==(const Shape&) const = default;
};

std::vector<Shape> ShapeOf(const LCutListAudio& list) {
  std::vector<Shape> shape;
  for (const LCutListSegment& s : list.Segments()) shape.push_back({s.ItemNumber(), s.length, s.offset});
  return shape;
}

// The edits on the model, written as plainly as possible.
void ModelDelete(Model& m, long long start, long long end) {
  const long long s = std::max(start, 0LL);
  const long long length = static_cast<long long>(m.size());
  if (start > end || end < 0 || s == end || s >= length) return;
  m.erase(m.begin() + s, m.begin() + std::min(end, length));
}

void ModelInsertSilence(Model& m, long long position, long long length) {
  if (length < 0) return;
  if (position < 0) {
    if (-position > length) return;
    length += position;
    position = 0;
  }
  const long long size = static_cast<long long>(m.size());
  if (position > size) {
    length += position - size;
    position = size;
  }
  m.insert(m.begin() + position, static_cast<std::size_t>(length), ModelFrame{});
}

void ModelInsert(Model& m, long long position, const Model& other) {
  if (other.empty()) return;
  const long long size = static_cast<long long>(m.size());
  if (position < 0) {
    m = Concat({other, ModelSilence(-position), m});
  } else if (position > size) {
    m = Concat({m, ModelSilence(position - size), other});
  } else {
    m.insert(m.begin() + position, other.begin(), other.end());
  }
}

Model ModelCopy(const Model& m, long long start, long long end) {
  Model out;
  for (long long i = start; i < end; ++i)
    out.push_back(i >= 0 && i < static_cast<long long>(m.size()) ? m[static_cast<std::size_t>(i)] : ModelFrame{});
  return out;
}

}  // namespace

TEST_F(CutListTest, DeletesThatClampCutAHeadSplitOrSpanWholeSegments) {
  LSoundCacheItemHandle a = TaggedItem(1, 100);
  const unsigned short n = a.Number();

  LCutListAudio head = ListOver(a, 100);
  head.EfDelete(-10, 5);
  EXPECT_EQ(ShapeOf(head), (std::vector<Shape>{{n, 95, 5}}));
  EXPECT_EQ(ReadList(head), Render(ModelOf(1, 5, 95), kChannels));

  LCutListAudio split = ListOver(a, 100);
  const std::uint16_t before = RefCount(a);
  split.EfDelete(20, 30);
  EXPECT_EQ(ShapeOf(split), (std::vector<Shape>{{n, 20, 0}, {n, 70, 30}}));
  EXPECT_EQ(RefCount(a), before + 1);
  EXPECT_EQ(ReadList(split), Render(Concat({ModelOf(1, 0, 20), ModelOf(1, 30, 70)}), kChannels));

  // Four segments of 100 frames each over frames 0, 100, 200, 300 of one item.
  LSoundCacheItemHandle b = TaggedItem(2, 400);
  LCutListAudio four;
  four.SetFormat(44100, kChannels);
  for (long long i = 0; i < 4; ++i) four.SegmentAppend(LCutListSegment(b, 100, 1.0f, i * 100));
  LCutListAudio tail(four);
  four.EfDelete(50, 320);  // keeps 50 of the first, drops two whole, cuts the fourth's head
  EXPECT_EQ(ShapeOf(four), (std::vector<Shape>{{b.Number(), 50, 0}, {b.Number(), 80, 320}}));
  EXPECT_EQ(ReadList(four), Render(Concat({ModelOf(2, 0, 50), ModelOf(2, 320, 80)}), kChannels));
  tail.EfDelete(0, 250);  // two whole segments and the head of the third
  EXPECT_EQ(ShapeOf(tail), (std::vector<Shape>{{b.Number(), 50, 250}, {b.Number(), 100, 300}}));

  // Ranges that do nothing.
  LCutListAudio same = ListOver(a, 100);
  same.EfDelete(30, 20);
  same.EfDelete(-20, -1);
  same.EfDelete(5, 5);
  same.EfDelete(100, 200);
  same.EfDelete(-5, 0);
  EXPECT_EQ(ShapeOf(same), (std::vector<Shape>{{n, 100, 0}}));
  same.EfDelete(-5, 500);
  EXPECT_TRUE(same.IsEmpty());
  EXPECT_EQ(RefCount(a), 1 + SegmentsNaming({&head, &split}, n));
}

TEST_F(CutListTest, SilenceGoesBeforeZeroInsideSegmentsPastTheEndAndIntoAnEmptyList) {
  LSoundCacheItemHandle a = TaggedItem(1, 100);
  LCutListAudio list = ListOver(a, 100);
  list.EfInsertSilence(-5, 3);
  EXPECT_EQ(list.GetLength(), 100);
  list.EfInsertSilence(-2, 3);
  EXPECT_EQ(ReadList(list), Render(Concat({ModelSilence(1), ModelOf(1, 0, 100)}), kChannels));
  list.EfInsertSilence(41, 4);   // inside: splits the item segment
  list.EfInsertSilence(130, 5);  // 25 past the end: the gap is filled as well
  EXPECT_EQ(ReadList(list),
            Render(Concat({ModelSilence(1), ModelOf(1, 0, 40), ModelSilence(4), ModelOf(1, 40, 60), ModelSilence(30)}),
                   kChannels));
  EXPECT_EQ(list.SegmentCount(), 5);

  LCutListAudio empty;
  empty.EfInsertSilence(50, 10);
  EXPECT_EQ(ShapeOf(empty), (std::vector<Shape>{{kLSoundCacheItemSilence, 60, 0}}));
  EXPECT_EQ(empty.Segments().front().gain, 1.0f);
}

TEST_F(CutListTest, InsertsLandInsideAtBoundariesPastTheEndAndBeforeZero) {
  LSoundCacheItemHandle a = TaggedItem(1, 100);
  LSoundCacheItemHandle b = TaggedItem(2, 10);
  const LCutListAudio x = ListOver(b, 10);
  const Model old = ModelOf(1, 0, 100);
  const Model mx = ModelOf(2, 0, 10);

  LCutListAudio past = ListOver(a, 100);
  past.EfInsert(120, x);
  EXPECT_EQ(ReadList(past), Render(Concat({old, ModelSilence(20), mx}), kChannels));

  LCutListAudio negative = ListOver(a, 100);
  negative.EfInsert(-7, x);
  EXPECT_EQ(ReadList(negative), Render(Concat({mx, ModelSilence(7), old}), kChannels));

  LCutListAudio inside = ListOver(a, 100);
  inside.EfInsert(33, x);
  inside.EfInsert(0, x);
  inside.EfInsert(120, x);  // exactly at the end: no gap
  EXPECT_EQ(ReadList(inside), Render(Concat({mx, ModelOf(1, 0, 33), mx, ModelOf(1, 33, 67), mx}), kChannels));

  LCutListAudio self = ListOver(a, 100);
  self.EfInsert(50, self);
  EXPECT_EQ(ReadList(self), Render(Concat({ModelOf(1, 0, 50), old, ModelOf(1, 50, 50)}), kChannels));

  // An empty list brings only the padding: the gap past the end, or before zero.
  LCutListAudio padded = ListOver(a, 100);
  padded.EfInsert(150, LCutListAudio());
  padded.EfInsert(-5, LCutListAudio());
  padded.EfInsert(40, LCutListAudio());
  EXPECT_EQ(padded.SegmentCount(), 3);
  EXPECT_EQ(ReadList(padded), Render(Concat({ModelSilence(5), old, ModelSilence(50)}), kChannels));
  EXPECT_EQ(RefCount(b), 1 + SegmentsNaming({&x, &past, &negative, &inside}, b.Number()));
}

TEST_F(CutListTest, CopiesAreExactlyTheRangeWithSilenceOnEitherSide) {
  LSoundCacheItemHandle a = TaggedItem(1, 100);
  const LCutListAudio list = ListOver(a, 100);
  LCutListAudio out;
  list.EfCopy(-10, 10, out);
  EXPECT_EQ(ReadList(out), Render(Concat({ModelSilence(10), ModelOf(1, 0, 10)}), kChannels));
  list.EfCopy(90, 110, out);
  EXPECT_EQ(ReadList(out), Render(Concat({ModelOf(1, 90, 10), ModelSilence(10)}), kChannels));
  list.EfCopy(-5, 105, out);
  EXPECT_EQ(ReadList(out), Render(Concat({ModelSilence(5), ModelOf(1, 0, 100), ModelSilence(5)}), kChannels));
  list.EfCopy(-30, -10, out);
  EXPECT_EQ(ReadList(out), Render(ModelSilence(20), kChannels));
  list.EfCopy(200, 230, out);
  EXPECT_EQ(ReadList(out), Render(ModelSilence(30), kChannels));
  list.EfCopy(50, 40, out);  // backwards: out stays as it was
  EXPECT_EQ(out.GetLength(), 30);
  list.EfCopy(40, 40, out);
  EXPECT_TRUE(out.IsEmpty());

  LCutListAudio empty;
  empty.SetFormat(44100, kChannels);
  empty.EfCopy(-10, 10, out);
  EXPECT_EQ(ReadList(out), Render(ModelSilence(20), kChannels));

  LCutListAudio self = ListOver(a, 100);
  self.EfCopy(20, 30, self);
  EXPECT_EQ(ReadList(self), Render(ModelOf(1, 20, 10), kChannels));
}

TEST_F(CutListTest, TrimKeepsTheRangeAndRepeatLoopPlaysItCountPlusOneTimes) {
  LSoundCacheItemHandle a = TaggedItem(1, 100);
  LCutListAudio trim = ListOver(a, 100);
  trim.EfTrim(10, 30);
  EXPECT_EQ(ReadList(trim), Render(ModelOf(1, 10, 20), kChannels));
  LCutListAudio wide = ListOver(a, 100);
  wide.EfTrim(-10, 500);  // nothing added outside the audio
  EXPECT_EQ(wide.GetLength(), 100);

  LCutListAudio loop = ListOver(a, 100);
  loop.EfRepeatLoop(10, 20, 2);
  EXPECT_EQ(loop.GetLength(), 120);
  EXPECT_EQ(ReadList(loop),
            Render(Concat({ModelOf(1, 0, 20), ModelOf(1, 10, 10), ModelOf(1, 10, 10), ModelOf(1, 20, 80)}), kChannels));
  LCutListAudio none = ListOver(a, 100);
  none.EfRepeatLoop(10, 20, 0);
  EXPECT_EQ(ShapeOf(none), (std::vector<Shape>{{a.Number(), 100, 0}}));
}

TEST_F(CutListTest, TheCopyConstructorClearsTheFlagByteButAssignmentCopiesIt) {
  LSoundCacheItemHandle a = TaggedItem(1, 100);
  LCutListAudio list = ListOver(a, 100);
  list.SetFlags(7);
  list.SetPath("/music/take.wav");
  LCutListAudio constructed(list);
  EXPECT_EQ(constructed.GetFlags(), 0);
  EXPECT_STREQ(constructed.GetPath(), "/music/take.wav");
  LCutListAudio assigned;
  assigned = list;
  EXPECT_EQ(assigned.GetFlags(), 7);
  EXPECT_EQ(ShapeOf(assigned), ShapeOf(list));
  LCutListAudio& alias = assigned;  // self-assignment, past the compiler's warning
  assigned = alias;
  EXPECT_EQ(RefCount(a), 4);

  // A segment of the list itself may become its single segment.
  assigned.EfDelete(20, 30);
  assigned.SetSingleCutListSegment(assigned.Segments().back(), 22050, 1);
  EXPECT_EQ(ShapeOf(assigned), (std::vector<Shape>{{a.Number(), 70, 30}}));
  EXPECT_EQ(assigned.GetSampleRate(), 22050u);
  EXPECT_EQ(assigned.GetChannels(), 1);
}

TEST_F(CutListTest, AfterRandomEditsTheListsReadAsTheModelAndCountsMatchTheLiveSegments) {
  LSoundCacheItemHandle items[3] = {TaggedItem(1, 400), TaggedItem(2, 400), TaggedItem(3, 400)};
  LCutListAudio doc;
  doc.SetFormat(44100, kChannels);
  doc.SegmentAppend(LCutListSegment(items[0], 400, 1.0f, 0));
  doc.SegmentAppend(LCutListSegment(items[1], 200, 1.0f, 100));
  doc.SegmentAppend(LCutListSegment::Silence(50));
  doc.SegmentAppend(LCutListSegment(items[2], 400, 1.0f, 0));
  Model model = Concat({ModelOf(1, 0, 400), ModelOf(2, 100, 200), ModelSilence(50), ModelOf(3, 0, 400)});
  LCutListAudio clip;
  clip.SetFormat(44100, kChannels);
  Model clipModel;
  std::vector<LCutListAudio> undo;
  std::vector<Model> undoModels;

  std::mt19937 random(20240611);
  auto position = [&](long long length) { return std::uniform_int_distribution<long long>(-30, length + 30)(random); };
  for (int step = 0; step < 600; ++step) {
    const long long length = static_cast<long long>(model.size());
    long long p = position(length);
    long long q = position(length);
    const int op = std::uniform_int_distribution<int>(0, 6)(random);
    switch (op) {
      case 0:
        if (random() % 4 != 0 && p > q) std::swap(p, q);
        doc.EfDelete(p, q);
        ModelDelete(model, p, q);
        break;
      case 1: {
        long long n = std::uniform_int_distribution<long long>(-5, 40)(random);
        doc.EfInsertSilence(p, n);
        ModelInsertSilence(model, p, n);
        break;
      }
      case 2:
        doc.EfInsert(p, clip);
        ModelInsert(model, p, clipModel);
        break;
      case 3:
        if (random() % 4 != 0 && p > q) std::swap(p, q);
        q = std::min(q, p + 120);
        doc.EfCopy(p, q, clip);
        if (q >= p) clipModel = ModelCopy(model, p, q);
        break;
      case 4:
        if (p > q) std::swap(p, q);
        if (length > 300) {
          doc.EfTrim(p, q);
          if (p >= 1) {
            ModelDelete(model, 0, p);
            q -= p;
          }
          ModelDelete(model, q, static_cast<long long>(model.size()));
        }
        break;
      case 5: {
        if (p > q) std::swap(p, q);
        q = std::min(q, p + 30);
        const unsigned long count = random() % 3;
        doc.EfRepeatLoop(p, q, count);
        if (count > 0 && q >= p) {
          const Model loop = ModelCopy(model, p, q);
          for (unsigned long i = 0; i < count; ++i) ModelInsert(model, p, loop);
        }
        break;
      }
      case 6:
        undo.push_back(doc);
        undoModels.push_back(model);
        if (undo.size() > 3) {
          undo.erase(undo.begin());
          undoModels.erase(undoModels.begin());
        }
        break;
    }
    if (model.size() > 3000) {  // keep the lists small enough to read after every step
      doc.EfTrim(0, 1000);
      ModelDelete(model, 1000, static_cast<long long>(model.size()));
    }
    ASSERT_EQ(doc.GetLength(), static_cast<long long>(model.size())) << "step " << step << " op " << op;
    for (const LCutListSegment& segment : doc.Segments())
      ASSERT_GT(segment.length, 0) << "step " << step << " op " << op;
    for (const LCutListSegment& segment : clip.Segments())
      ASSERT_GT(segment.length, 0) << "step " << step << " op " << op;
    if (step % 10 == 0 || op != 6) {
      ASSERT_EQ(ReadList(doc), Render(model, kChannels)) << "step " << step << " op " << op;
      ASSERT_EQ(ReadList(clip), Render(clipModel, kChannels)) << "step " << step;
    }
    std::vector<const LCutListAudio*> lists = {&doc, &clip};
    for (const LCutListAudio& snapshot : undo) lists.push_back(&snapshot);
    for (const LSoundCacheItemHandle& item : items)
      ASSERT_EQ(RefCount(item), 1 + SegmentsNaming(lists, item.Number())) << "step " << step;
  }
  for (std::size_t i = 0; i < undo.size(); ++i) EXPECT_EQ(ReadList(undo[i]), Render(undoModels[i], kChannels));
}

TEST_F(CutListTest, WhenTheLastListNamingAnItemGoesItsFilesGo) {
  std::string audio;
  {
    LCutListAudio list;
    {
      LSoundCacheItemHandle a = TaggedItem(1, 100);
      audio = CachePath(a.Number(), kLSoundCacheExtAudio);
      list = ListOver(a, 100);
    }
    LCutListAudio copy(list);
    copy.EfDelete(10, 20);
    list.Clear();
    EXPECT_TRUE(Exists(audio));
    LSoundSource source = copy.OpenSource();
    copy.Clear();
    EXPECT_TRUE(Exists(audio)) << "an open source keeps its segments' items";
    EXPECT_EQ(ReadBlocks(source, 0, 3, 3), Render(ModelOf(1, 0, 3), kChannels));
  }
  EXPECT_FALSE(Exists(audio));
}

TEST_F(CutListTest, RestoreOfWhatSaveWroteGivesTheSameList) {
  LSoundCacheItemHandle a = TaggedItem(1, 100);
  LSoundCacheItemHandle b = TaggedItem(2, 100);
  LCutListAudio list;
  list.SetFormat(48000, kChannels);
  list.SetFlags(3);
  list.SegmentAppend(LCutListSegment(a, 60, 0.5f, 40));
  list.SegmentAppend(LCutListSegment::Silence(12));
  list.SegmentAppend(LCutListSegment(b, 100, 1.0f, 0));
  LMemoryStream stream;
  ASSERT_TRUE(list.Save(stream));
  ASSERT_EQ(stream.Bytes().size(), 10u + 3 * 22);
  // Little-endian fields in their places: the rate, and the second record's silence number.
  EXPECT_EQ(stream.Bytes()[0], 0x80);
  EXPECT_EQ(stream.Bytes()[1], 0xBB);
  EXPECT_EQ(stream.Bytes()[10 + 22], 0xFF);
  EXPECT_EQ(stream.Bytes()[10 + 22 + 1], 0xFF);

  ASSERT_TRUE(stream.Seek(0));
  LCutListAudio restored;
  ASSERT_TRUE(restored.Restore(stream));
  EXPECT_EQ(restored.GetSampleRate(), 48000u);
  EXPECT_EQ(restored.GetChannels(), kChannels);
  EXPECT_EQ(restored.GetFlags(), 3);
  EXPECT_EQ(ShapeOf(restored), ShapeOf(list));
  EXPECT_EQ(restored.Segments().front().gain, 0.5f);
  EXPECT_TRUE(SameBits(ReadList(restored), ReadList(list)));
  EXPECT_EQ(RefCount(a), 3);

  // A large list goes through in pieces.
  LCutListAudio many;
  for (int i = 0; i < 1000; ++i) many.SegmentAppend(LCutListSegment(a, i + 1, 1.0f, i));
  LMemoryStream big;
  ASSERT_TRUE(many.Save(big));
  ASSERT_TRUE(big.Seek(0));
  LCutListAudio back;
  ASSERT_TRUE(back.Restore(big));
  EXPECT_EQ(ShapeOf(back), ShapeOf(many));
}

TEST_F(CutListTest, DamagedPersistedDataNeverCrashesAndKeepsCountsRight) {
  LSoundCacheItemHandle a = TaggedItem(1, 100);
  LCutListAudio list;
  list.SetFormat(44100, kChannels);
  for (int i = 0; i < 5; ++i) list.SegmentAppend(LCutListSegment(a, 10, 1.0f, i * 10));
  LMemoryStream stream;
  ASSERT_TRUE(list.Save(stream));
  const std::vector<unsigned char> good = stream.Bytes();

  // Every truncation: false, with the whole records read so far kept.
  for (std::size_t cut = 0; cut < good.size(); ++cut) {
    LMemoryStream part(good.data(), cut);
    LCutListAudio restored;
    EXPECT_FALSE(restored.Restore(part)) << cut;
    EXPECT_EQ(restored.SegmentCount(), cut < 10 ? 0 : static_cast<long long>((cut - 10) / 22)) << cut;
  }
  EXPECT_EQ(RefCount(a), 1 + 5);

  // A count beyond the data reads the records there, allocates nothing for the rest, and answers false.
  for (std::int32_t count : {6, 257, 1000000, 0x7FFFFFFF}) {
    LCutListAudio hugeList;
    std::vector<unsigned char> huge = good;
    std::memcpy(huge.data() + 6, &count, 4);
    LMemoryStream hugeStream(huge.data(), huge.size());
    EXPECT_FALSE(hugeList.Restore(hugeStream)) << count;
    EXPECT_EQ(ReadList(hugeList), Render(ModelOf(1, 0, 50), kChannels)) << count;
  }

  // A negative count is an empty list. A negative length is an empty segment and a
  // negative offset starts before the item, in silence; the other records stay.
  std::vector<unsigned char> negative = good;
  negative[9] = 0x80;
  LMemoryStream negativeStream(negative.data(), negative.size());
  LCutListAudio negativeList;
  EXPECT_TRUE(negativeList.Restore(negativeStream));
  EXPECT_TRUE(negativeList.IsEmpty());
  std::vector<unsigned char> signedFields = good;
  signedFields[10 + 22 + 9] = 0x80;  // the sign byte of the second record's length
  for (int i = 0; i < 8; ++i) signedFields[10 + 14 + i] = 0xFF;  // the first record's offset: -1
  LMemoryStream badStream(signedFields.data(), signedFields.size());
  LCutListAudio badList;
  EXPECT_TRUE(badList.Restore(badStream));
  EXPECT_EQ(badList.SegmentCount(), 5);
  EXPECT_EQ(ReadList(badList), Render(Concat({ModelSilence(1), ModelOf(1, 0, 9), ModelOf(1, 20, 30)}), kChannels));
  std::vector<unsigned char> farOffset = good;
  farOffset[10 + 21] = 0x7F;  // the top byte of the first record's offset
  LMemoryStream farStream(farOffset.data(), farOffset.size());
  LCutListAudio farList;
  EXPECT_FALSE(farList.Restore(farStream));
  EXPECT_TRUE(farList.IsEmpty());

  EXPECT_EQ(RefCount(a), 1 + 5 + badList.SegmentCount());
}

namespace {

// A pretend MP3 frame layer: item `gMP3Item` holds 80 frames of real audio from frame 0.
unsigned short gMP3Item = kLSoundCacheItemNone;
bool FakeMP3Lookup(unsigned short item, LMP3ItemAttributes* out) {
  if (item != gMP3Item) return false;
  out->firstFrame = 0;
  out->frameCount = 80;
  out->paddingFrames = 20;
  return true;
}

}  // namespace

TEST_F(CutListTest, LeavingLosslessModeDropsMP3PaddingAndLeavesOtherSegmentsAlone) {
  LSoundCacheItemHandle mp3 = TaggedItem(1, 100);
  LSoundCacheItemHandle wave = TaggedItem(2, 100);
  gMP3Item = mp3.Number();
  LMP3ItemAttributesLookupSet(FakeMP3Lookup);
  LMP3LosslessContext context;
  context.ModeSet(true);
  {
    LCutListAudio list(&context);
    list.SegmentAppend(LCutListSegment(wave, 100, 1.0f, 0));
    list.SegmentAppend(LCutListSegment(mp3, 50, 1.0f, 50));
    list.SegmentAppend(LCutListSegment::Silence(10));
    EXPECT_TRUE(list.IsMP3LosslessMode());
    LCutListAudio copy(list);
    EXPECT_EQ(context.ClientCount(), 2);
    context.ModeSet(false);
    EXPECT_FALSE(list.IsMP3LosslessMode());
    EXPECT_EQ(ShapeOf(list),
              (std::vector<Shape>{{wave.Number(), 100, 0}, {mp3.Number(), 30, 50}, {kLSoundCacheItemSilence, 10, 0}}));
    EXPECT_EQ(ShapeOf(copy), ShapeOf(list));
    LCutListAudio other;
    other = copy;
    EXPECT_EQ(other.MP3LosslessContext(), &context);
    EXPECT_EQ(context.ClientCount(), 3);
  }
  EXPECT_EQ(context.ClientCount(), 0);
  LMP3ItemAttributesLookupSet(nullptr);

  // Without the frame layer no item has an MP3 source.
  LCutListSegment segment(mp3, 100, 1.0f, 0);
  segment.SubtractEncoderPadding();
  EXPECT_EQ(segment.length, 100);
}
