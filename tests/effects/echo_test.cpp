#include "effects/echo.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <tuple>

#include "effect_test_sdf.h"
#include "effect_test_sources.h"

namespace {

LSRCEcho* EchoOf(const LSoundSource& s) { return dynamic_cast<LSRCEcho*>(s.Get()); }

// y[n] = x[n] + g * y[n - L] over the interleaved samples, zero before the start.
std::vector<float> Recurrence(const std::vector<float>& x, float g, std::size_t length) {
  std::vector<float> y(x.size());
  for (std::size_t n = 0; n < x.size(); ++n) y[n] = (n >= length ? y[n - length] * g : 0.0f) + x[n];
  return y;
}

std::vector<unsigned char> Record(const std::function<void(LSDFWriter&)>& settings) {
  return MakeChainFile([&](LSDFWriter& w) {
    w.StartContainer(kLSPMultiChunkEffect);
    settings(w);
    w.EndContainer(kLSPMultiChunkEffect);
  });
}

void WriteShort(LSDFWriter& w, unsigned short id, std::vector<unsigned char> bytes) {
  w.StartChunk(id, kSDFChunkTypeInt);
  w.WriteData(bytes.data(), bytes.size());
  w.EndChunk(id);
}

}  // namespace

TEST(Echo, TheDelayLineHasATwentySampleMinimumAndLoadedTimesAndGainsOpenAtTheNearestBound) {
  LSPEcho echo;
  echo.SetTime(1);
  LSoundSource input = MakeBufferSource(Staircase(100, 1), 8000, 1);
  EXPECT_EQ(EchoOf(echo.OpenSource(input))->GetDelayLineLength(), 20);
  echo.SetTime(1500);
  LSoundSource stereo = MakeBufferSource(Staircase(100, 2), 44100, 2);
  EXPECT_EQ(EchoOf(echo.OpenSource(stereo))->GetDelayLineLength(), 2 * (44100 + 22050));

  for (const auto& bounds : {std::pair{0LL, 1LL}, {10000LL, 4000LL}, {-7LL, 1LL}, {250LL, 250LL}}) {
    // Plain variables, not a structured binding: a lambda below captures stored.
    const long long stored = bounds.first;
    LSPEcho loaded;
    LoadEffect(loaded, Record([&](LSDFWriter& w) { w.WriteInt64(kLSPEchoChunkTime64, stored); }));
    EXPECT_EQ(loaded.GetTime(), stored);
    EXPECT_EQ(EchoOf(loaded.OpenSource(input))->GetTimeMs(), bounds.second);
  }
  // A gain outside 1 ... 99 % from a file is kept but opens at the nearest bound.
  for (const auto& [stored, feedback] : {std::pair{150, 0.99f}, {-150, 0.01f}, {99, 0.99f}}) {
    LSPEcho loaded;
    LoadEffect(loaded, Record([stored = stored](LSDFWriter& w) { w.WriteInt(kLSPEchoChunkGain, stored); }));
    EXPECT_EQ(loaded.GetGain(), stored);
    EXPECT_EQ(EchoOf(loaded.OpenSource(input))->GetFeedback(), feedback);
  }
}

TEST(Echo, PresetsAreMatchedExactlyAndAnIndexOutOfRangeChangesNothing) {
  LSPEcho echo;
  EXPECT_EQ(echo.GetIndexInPreset(), -1);  // the default, 50 % and 1000 ms, is no preset
  echo.SetPreset(1);
  EXPECT_EQ(echo.GetIndexInPreset(), 1);
  EXPECT_EQ(echo.GetGain(), 40);
  EXPECT_EQ(echo.GetTime(), 400);
  echo.SetPreset(3);
  echo.SetPreset(-1);
  EXPECT_EQ(echo.GetGain(), 40);
  EXPECT_EQ(echo.GetTime(), 400);
  echo.SetGain(41);
  EXPECT_EQ(echo.GetIndexInPreset(), -1);
  echo.SetPreset(2);
  EXPECT_EQ(echo.GetTime(), 750);
  EXPECT_EQ(echo.GetGain(), 75);
}

TEST(Echo, TheTimeIsDescribedAs64BitButSetFrom32Bit) {
  LSPEcho echo;
  LSoundProcessParameter p;
  echo.GetParameterByIndex(1, &p);
  EXPECT_EQ(p.type, kLSPParamInt64);

  // Eight bytes whose low half is 300 and high half garbage: only 32 bits are read.
  long long wide = (0x7FLL << 32) | 300;
  echo.SetParameterByIndex(1, &wide);
  EXPECT_EQ(echo.GetTime(), 300);
  int negative = -2;
  echo.SetParameterByIndex(1, &negative);
  EXPECT_EQ(echo.GetTime(), -2);
  int gain = 30;
  echo.SetParameterByIndex(0, &gain);
  echo.SetParameterByIndex(2, &gain);
  EXPECT_EQ(echo.GetGain(), 30);
}

TEST(Echo, TheOutputIsTheFeedbackRecurrenceSampleForSample) {
  std::vector<float> x = Staircase(3000, 2, 3000.0f);
  for (std::size_t i = 1000; i < x.size(); ++i) x[i] = 0.0f;  // let the echo ring out alone
  LSPEcho echo;
  echo.SetGain(60);
  echo.SetTime(3);  // 24 frames at 8000 Hz
  std::vector<float> expected = Recurrence(x, 60.0f / 100.0f, 48);

  LSoundSource input = MakeBufferSource(x, 8000, 2);
  LSoundSource whole = echo.OpenSource(input);
  EXPECT_EQ(EchoOf(whole)->GetDelayLineLength(), 48);
  EXPECT_EQ(ReadAll(whole, 3000, 3000), expected);

  LSoundSource input2 = MakeBufferSource(x, 8000, 2);
  LSoundSource blocks = echo.OpenSource(input2);
  EXPECT_EQ(ReadAll(blocks, 3000, 234), expected);

  // Seeking clears the line: the same frames come again.
  blocks.Seek(0);
  EXPECT_EQ(ReadAll(blocks, 3000, 1001), expected);
  EXPECT_EQ(blocks.GetEndSample(), 3000);
}

TEST(Echo, SavesBothTimeChunksAfterTheBaseContainer) {
  LSPEcho echo;
  echo.SetGain(12);
  echo.SetTime((1LL << 32) + 5);
  echo.bDisabled = true;
  std::vector<unsigned char> bytes = SaveEffect(echo);
  LMemoryStream stream(bytes);
  LSDFReader reader;
  ASSERT_TRUE(reader.Open(stream, kSDFFileTypeEffectChain));
  LSDFReaderChunkIterator root(reader);
  ASSERT_TRUE(root.StartNextChunk());
  LSDFReaderChunkIterator record(reader, root.Info());
  // (id, type, length, value) of each chunk; the 64-bit time's value is the loader's to check.
  std::vector<std::tuple<unsigned, unsigned, unsigned long long, int>> chunks;
  while (record.StartNextChunk()) {
    int value = -1;
    if (record.Type() == kSDFChunkTypeInt) {
      EXPECT_TRUE(record.Chunk().ReadInt(value));
    }
    chunks.emplace_back(record.Id(), record.Type(), record.Length(), value);
  }
  EXPECT_EQ(chunks, (std::vector<std::tuple<unsigned, unsigned, unsigned long long, int>>{
                        {kLSPChunkBase, kSDFChunkTypeContainer, 13, -1},
                        {kLSPEchoChunkGain, kSDFChunkTypeInt, 4, 12},
                        {kLSPEchoChunkTime, kSDFChunkTypeInt, 4, 5},
                        {kLSPEchoChunkTime64, kSDFChunkTypeInt64, 8, -1}}));

  LSPEcho loaded;
  LoadEffect(loaded, bytes);
  EXPECT_EQ(loaded.GetGain(), 12);
  EXPECT_EQ(loaded.GetTime(), (1LL << 32) + 5);
  EXPECT_TRUE(loaded.bDisabled);
  std::unique_ptr<LSoundProcess> copy(loaded.GetNewCopy());
  EXPECT_FALSE(copy->bDisabled);
  EXPECT_EQ(static_cast<LSPEcho*>(copy.get())->GetTime(), (1LL << 32) + 5);
}

TEST(Echo, LaterChunksWinShortValuesFollowTheirOwnRulesAndTheFlatLayoutLoads) {
  LSPEcho echo;
  LoadEffect(echo, Record([](LSDFWriter& w) {
               w.WriteInt(kLSPEchoChunkTime, 300);
               w.WriteInt64(kLSPEchoChunkTime64, 700);
               w.WriteInt(0x2042, 1);  // unknown, passed over
             }));
  EXPECT_EQ(echo.GetTime(), 700);
  LoadEffect(echo, Record([](LSDFWriter& w) {
               w.WriteInt64(kLSPEchoChunkTime64, 700);
               w.WriteInt(kLSPEchoChunkTime, 300);
             }));
  EXPECT_EQ(echo.GetTime(), 300);

  LSPEcho shortOnes;
  shortOnes.SetGain(33);
  LoadEffect(shortOnes, Record([](LSDFWriter& w) {
               WriteShort(w, kLSPEchoChunkGain, {7, 0});
               WriteShort(w, kLSPEchoChunkTime, {9});
             }));
  EXPECT_EQ(shortOnes.GetGain(), 33);  // kept
  EXPECT_EQ(shortOnes.GetTime(), 0);   // opened later as 1 ms
  shortOnes.SetTime(1000);             // 0x3E8
  LoadEffect(shortOnes, Record([](LSDFWriter& w) { WriteShort(w, kLSPEchoChunkTime64, {0x10, 0, 0, 0}); }));
  EXPECT_EQ(shortOnes.GetTime(), 0x10);  // the four bytes that arrived replace the low half

  // The older flat layout is a gain chunk, then a time chunk.
  LSPEcho flat;
  LoadEffect(flat, Record([](LSDFWriter& w) {
               w.WriteInt(0x0001, 33);
               w.WriteInt(0x0002, 250);
             }), true);
  EXPECT_EQ(flat.GetGain(), 33);
  EXPECT_EQ(flat.GetTime(), 250);
}
