// Saving WAVE and raw files when the medium fails: every write, seek and
// truncate of a save is made to fail in turn, and the save must answer failure
// each time; a save that answers success wrote the whole file.
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <set>
#include <string>

#include "base/memory_stream.h"
#include "engine/source_to_sink.h"
#include "formats/gsm_wave.h"
#include "formats/ima_adpcm.h"
#include "formats/pcm_file_sink.h"
#include "formats/raw_data_sink.h"
#include "formats/raw_file.h"
#include "formats/wave_file.h"
#include "support/faulty_stream.h"
#include "support/file_size_limit.h"
#include "support/temp_folder.h"
#include "wave_fixtures.h"

namespace {

// More than two blocks of the pump, and odd, so that 8-bit mono files get a pad byte.
constexpr long long kFrames = 20001;

// A float WAVE in memory holding a ramp, the source of every save.
LSoundSource RampSource(int channels, long long frames) {
  Bytes data;
  for (long long i = 0; i < frames * channels; ++i) {
    float v = -0.9f + 1.8f * static_cast<float>(i) / static_cast<float>(frames * channels);
    std::uint32_t bits;
    std::memcpy(&bits, &v, 4);
    PutLE32(data, bits);
  }
  return OpenWave(WaveFile(kLWaveTagIEEEFloat, static_cast<std::uint16_t>(channels), 8000, 32, data));
}

// What the target held before the save: longer than any header, so a writer
// that forgets to cut it leaves it visible.
Bytes OldContent() { return Bytes(3000, 0xAA); }

LProcessResult Pump(LSoundSource source, LSoundSink sink) {
  LPRSourceToSink job("Speichern", std::move(source), std::move(sink), true);
  LProcessInterfaceQuiet quiet;
  return Process(quiet, job);
}

using StreamSinkMaker = std::function<LSoundSink(std::unique_ptr<LByteStream>)>;

struct StreamWriter {
  const char* name;
  int channels;
  long long frames;
  StreamSinkMaker make;
  // The raw layout the file reads back with; -1 for WAVE.
  int rawCode = -1;
};

template <class Tag>
StreamSinkMaker PCM(int channels, LWaveHeaderKind kind, bool dither = false) {
  return [=](std::unique_ptr<LByteStream> s) {
    return LMakeSink<LSNKPCMFile<Tag>>(std::move(s), 8000u, channels, kind, dither);
  };
}

template <class Tag>
StreamSinkMaker Raw(int channels) {
  return [=](std::unique_ptr<LByteStream> s) { return LMakeSink<LRawFileDataSoundSink<Tag>>(std::move(s), 8000u, channels); };
}

std::vector<StreamWriter> StreamWriters() {
  return {
      {"pcm8_mono_with_pad_byte", 1, kFrames, PCM<LSFU8>(1, LWaveHeaderKind::kPlain)},
      {"pcm16_stereo_dithered", 2, kFrames, PCM<LSF16>(2, LWaveHeaderKind::kPlain, true)},
      {"pcm24_three_channels", 3, kFrames, PCM<LSFLE24>(3, LWaveHeaderKind::kPlain)},
      {"pcm32_mono", 1, kFrames, PCM<LSF32>(1, LWaveHeaderKind::kPlain)},
      {"float_46_byte_header", 2, kFrames, PCM<LSFF32>(2, LWaveHeaderKind::kExtraSize)},
      {"float_with_fact", 1, kFrames, PCM<LSFF32>(1, LWaveHeaderKind::kFloatFact)},
      {"ima_adpcm", 1, kFrames,
       [](std::unique_ptr<LByteStream> s) { return LMakeSink<LIMAWaveSink>(std::move(s), 8000u); }},
      {"gsm610", 1, 10001, [](std::unique_ptr<LByteStream> s) { return LGSMWaveOpenSink(std::move(s), 8000u); }},
      {"raw_alaw", 1, kFrames, Raw<LSFALAW>(1), kLRawALaw},
      {"raw_float_big_endian", 2, kFrames, Raw<LSFFRE32>(2), kLRawFloatBE},
  };
}

struct StreamSave {
  LProcessResult result = kLProcessFailed;
  Bytes bytes;
  FaultCounts counts;
};

StreamSave SaveToStream(const StreamWriter& w, const FaultPlan& plan) {
  LMemoryStream target(OldContent());
  StreamSave out;
  out.result = Pump(RampSource(w.channels, w.frames), w.make(std::make_unique<FaultyStream>(target, out.counts, plan)));
  out.bytes = target.Bytes();
  return out;
}

LSoundSource ReadBack(const StreamWriter& w, const Bytes& bytes) {
  if (w.rawCode < 0) return OpenWave(bytes);
  LRawSettings settings;
  settings.sampleRate = 8000;
  settings.channels = static_cast<std::uint8_t>(w.channels);
  settings.formatCode = w.rawCode;
  return LRawFile::OpenSource(Memory(bytes), settings);
}

void PrintTo(const StreamWriter& w, std::ostream* os) { *os << w.name; }

class WaveWriteFaults : public ::testing::TestWithParam<StreamWriter> {};

}  // namespace

TEST_P(WaveWriteFaults, EveryFailedWriteSeekOrTruncateOfASaveIsReportedAsAFailedSave) {
  const StreamWriter& w = GetParam();
  if (w.make(std::make_unique<LMemoryStream>()).HasError()) GTEST_SKIP() << w.name << " is not built here";

  const StreamSave clean = SaveToStream(w, {});
  ASSERT_EQ(clean.result, kLProcessSuccess) << w.name;
  ASSERT_FALSE(clean.counts.faulted);
  LSoundSource back = ReadBack(w, clean.bytes);
  ASSERT_FALSE(back.IsError()) << w.name;
  // Block codecs round up to whole blocks.
  EXPECT_GE(back.GetEndSample(), w.frames) << w.name;
  if (w.name != std::string("ima_adpcm") && w.name != std::string("gsm610")) {
    EXPECT_EQ(back.GetEndSample(), w.frames);
  }

  const std::vector<FaultPlan> plans = EveryFaultPlan(clean.counts);
  ASSERT_GT(plans.size(), 4u);
  for (const FaultPlan& plan : plans) {
    const StreamSave faulty = SaveToStream(w, plan);
    ASSERT_TRUE(faulty.counts.faulted) << w.name << ": " << Describe(plan);
    EXPECT_EQ(faulty.result, kLProcessFailed) << w.name << ": " << Describe(plan) << " went unnoticed";
  }
}

INSTANTIATE_TEST_SUITE_P(Writers, WaveWriteFaults, ::testing::ValuesIn(StreamWriters()),
                         [](const ::testing::TestParamInfo<StreamWriter>& info) { return info.param.name; });

namespace {

// Writers that only take a path get their faults from a limit on the file size.
struct PathWriter {
  const char* name;
  int channels;
  int headerBytes;
  int bytesPerFrame;
  std::function<LSoundSink(const char*)> open;
};

std::vector<PathWriter> PathWriters() {
  LWaveFileFormat alaw;
  alaw.tag = kLWaveTagALaw;
  alaw.channels = 1;
  alaw.sampleRate = 8000;
  LWaveFileFormat mulaw = alaw;
  mulaw.tag = kLWaveTagMuLaw;
  mulaw.channels = 2;
  LRawSettings raw;
  raw.sampleRate = 8000;
  raw.channels = 1;
  raw.formatCode = kLRaw16;
  return {
      {"wave_alaw_mono", 1, 58, 1, [=](const char* p) { return LWaveFile::OpenSink(p, alaw); }},
      {"wave_mulaw_stereo", 2, 58, 2, [=](const char* p) { return LWaveFile::OpenSink(p, mulaw); }},
      {"wave_pcm8_mono", 1, 44, 1, [](const char* p) { return LWaveFile::OpenSinkPCM(p, 8000, 1, 8, 0, false); }},
      {"raw_pcm16", 1, 0, 2, [=](const char* p) { return LRawFile::OpenSink(p, raw); }},
  };
}

// Limits at which each write of the save is the one that fails: the header, each
// block the pump hands over, the pad byte; and the whole file, which must fit.
std::set<long long> LimitsAtEveryWrite(const PathWriter& w, long long fileBytes) {
  std::set<long long> limits = {0, fileBytes - 1, fileBytes};
  if (w.headerBytes > 0) limits.insert(w.headerBytes - 1);
  const long long data = kFrames * w.bytesPerFrame;
  const long long block = kLPumpBlockFrames * w.bytesPerFrame;
  for (long long end = block; end < data + block; end += block) limits.insert(w.headerBytes + std::min(end, data) - 1);
  return limits;
}

}  // namespace

TEST(WaveWriteFaultsByPath, ASaveThatRunsOutOfRoomAtAnyWriteReportsFailure) {
  TempFolder folder;
  for (const PathWriter& w : PathWriters()) {
    const std::string path = folder.File(std::string(w.name) + ".wav");
    auto save = [&] {
      WriteFileBytes(path, OldContent());
      return Pump(RampSource(w.channels, kFrames), w.open(path.c_str())) == kLProcessSuccess ? 0 : 1;
    };
    ASSERT_EQ(save(), 0) << w.name;
    const Bytes clean = FileBytes(path);
    for (long long limit : LimitsAtEveryWrite(w, static_cast<long long>(clean.size()))) {
      // The old content is put back first, outside the limit.
      WriteFileBytes(path, OldContent());
      const int status = RunWithFileSizeLimit(limit, [&] {
        return Pump(RampSource(w.channels, kFrames), w.open(path.c_str())) == kLProcessSuccess ? 0 : 1;
      });
      if (limit < static_cast<long long>(clean.size())) {
        EXPECT_EQ(status, 1) << w.name << ": a save limited to " << limit << " of " << clean.size()
                             << " bytes went unnoticed";
      } else {
        EXPECT_EQ(status, 0) << w.name;
        EXPECT_EQ(FileBytes(path), clean) << w.name;
      }
    }
  }
}
