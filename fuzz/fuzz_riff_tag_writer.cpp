// The WAVE writers and the RIFF tag writer driven together: a sound of fuzzed
// format and length is written, then an older tag set and over it a newer one,
// of fuzzed keys (every key a WAVE file carries, marker keys and made-up ones)
// and values (any bytes, invalid UTF-8 included, numbers, byte lists, texts far
// wider than their fields, up to past a megabyte) and up to thousands of
// markers in samples or milliseconds. The file then opens with exactly the
// frames written, and its tags read back as the writer promises for the newer
// set, with nothing of the older one left.
#include <fuzzer/FuzzedDataProvider.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "base/memory_stream.h"
#include "formats/pcm_file_sink.h"
#include "formats/wav_tag_iterator.h"
#include "formats/wav_tag_keys.h"
#include "formats/wav_tags.h"
#include "formats/wave_file.h"
#include "fuzz_check.h"
#include "tag_round_trip.h"

namespace {

enum Writer : int { kPCM8, kPCM16, kPCM24, kFloatFact, kWriters };

constexpr int kMostChannels = 4;
constexpr long long kMostFrames = 4000;
constexpr int kMostTags = 48;
constexpr int kFewMarkers = 8;
constexpr int kMostMarkers = 3000;
constexpr std::size_t kMostShortValue = 96;
// Texts past what the reader takes of a chunk (1 MiB), now and then.
constexpr std::size_t kMostHugeValue = (1 << 20) + 4096;
constexpr std::size_t kMostLongValue = 5000;
// Rates of the sound: what the WAVE reader opens.
constexpr std::uint32_t kRates[] = {1, 8000, 11025, 22050, 44100, 48000, 96000, 196000};
constexpr std::uint32_t kMostRate = 196000;
// Rates of markers in milliseconds and of the writer's argument: any.
constexpr std::uint32_t kMarkerRates[] = {0, 1, 8000, 44100, 48000, 96000, 0x7FFFFFFFu, 0xFFFFFFFFu};

const char* const kMarkerKeys[] = {kLTagMarkerCount, kLTagMarkerPosType, kLTagMarkerSampleRate, "marker_0_pos",
                                   "marker_1_pos", "marker_2_pos"};

const std::string& TempFolder() {
  // Never destroyed: the exit handler that removes the folder, registered while it
  // is made, runs after its destructor would.
  static const std::string& folder = *[] {
    const char* base = std::getenv("TMPDIR");
    auto* pattern = new std::string(std::string(base && *base ? base : "/tmp") + "/fuzz_riff_tag_writer-XXXXXX");
    FuzzCheck(mkdtemp(pattern->data()) != nullptr, "a temporary folder can be made");
    std::atexit([] { std::filesystem::remove_all(TempFolder()); });
    return pattern;
  }();
  return folder;
}

// Every key a WAVE file carries.
std::vector<std::string> ValidKeys() {
  std::vector<std::string> keys;
  for (const LWavInfoKey& entry : kLWavInfoKeys) keys.emplace_back(entry.key);
  for (const LWavField& field : kLWavBextFields) keys.emplace_back(field.key);
  for (const LWavField& field : kLWavCartFields) keys.emplace_back(field.key);
  return keys;
}

std::string Key(FuzzedDataProvider& in) {
  static const std::vector<std::string> valid = ValidKeys();
  switch (in.ConsumeIntegralInRange<int>(0, 5)) {
    case 0:
      return in.PickValueInArray(kMarkerKeys);
    case 1:
      return in.ConsumeRandomLengthString(12);
    default:
      return valid[in.ConsumeIntegralInRange<std::size_t>(0, valid.size() - 1)];
  }
}

std::string Value(FuzzedDataProvider& in) {
  switch (in.ConsumeIntegralInRange<int>(0, 7)) {
    case 0:
      return {};
    case 1:
      return std::to_string(in.ConsumeIntegral<long long>() >> in.ConsumeIntegralInRange<int>(0, 63));
    case 2: {
      // A list of byte values, now and then with more than a UMID holds.
      std::string list;
      const int n = in.ConsumeIntegralInRange<int>(1, 70);
      for (int i = 0; i < n; ++i) list += (i ? "," : "") + std::to_string(in.ConsumeIntegral<std::uint8_t>());
      return list;
    }
    case 3: {
      // A piece repeated to a length wider than any field, now and then past a megabyte.
      std::string piece = in.ConsumeRandomLengthString(8);
      if (piece.empty()) piece = "\xC3\xA4";
      const std::size_t most = in.ConsumeIntegralInRange<int>(0, 31) == 0 ? kMostHugeValue : kMostLongValue;
      const std::size_t length = in.ConsumeIntegralInRange<std::size_t>(0, most);
      std::string value;
      value.reserve(length + piece.size());
      while (value.size() < length) value += piece;
      value.resize(length);
      return value;
    }
    default:
      return in.ConsumeRandomLengthString(kMostShortValue);
  }
}

void AddMarkers(FuzzedDataProvider& in, LFileTagDataAudio& tags) {
  // Mostly a few, which keeps runs fast; now and then thousands.
  const int most = in.ConsumeIntegralInRange<int>(0, 7) == 0 ? kMostMarkers : kFewMarkers;
  const int n = in.ConsumeIntegralInRange<int>(0, most);
  for (int i = 0; i < n; ++i) {
    // Positions of every size, past 32 bits and past 63 bits included.
    const std::uint64_t position = in.ConsumeIntegral<std::uint64_t>() >> in.ConsumeIntegralInRange<int>(0, 63);
    if (in.ConsumeBool()) {
      tags.MarkerAddSample(position);
    } else {
      tags.MarkerAddMs(position, in.PickValueInArray(kMarkerRates));
    }
  }
}

LFileTagDataAudio Tags(FuzzedDataProvider& in) {
  LFileTagDataAudio tags;
  const int n = in.ConsumeIntegralInRange<int>(0, kMostTags);
  for (int i = 0; i < n && in.remaining_bytes() > 0; ++i) {
    const std::string key = Key(in);
    const std::string value = Value(in);
    tags.Set(key.c_str(), value.c_str());
  }
  if (in.ConsumeBool()) AddMarkers(in, tags);
  return tags;
}

LSoundSink OpenSink(int writer, std::unique_ptr<LByteStream> stream, std::uint32_t rate, int channels) {
  switch (writer) {
    case kPCM8: return LMakeSink<LSNKPCMFile<LSFU8>>(std::move(stream), rate, channels, LWaveHeaderKind::kPlain);
    case kPCM16: return LMakeSink<LSNKPCMFile<LSF16>>(std::move(stream), rate, channels, LWaveHeaderKind::kPlain);
    case kPCM24: return LMakeSink<LSNKPCMFile<LSFLE24>>(std::move(stream), rate, channels, LWaveHeaderKind::kPlain);
    default: return LMakeSink<LSNKPCMFile<LSFF32>>(std::move(stream), rate, channels, LWaveHeaderKind::kFloatFact);
  }
}

template <class Tag>
float Stored(float x) {
  unsigned char bytes[Tag::kBytes];
  Tag::Out(bytes, x);
  return Tag::In(bytes);
}

float StoredBy(int writer, float x) {
  switch (writer) {
    case kPCM8: return Stored<LSFU8>(x);
    case kPCM16: return Stored<LSF16>(x);
    case kPCM24: return Stored<LSFLE24>(x);
    default: return Stored<LSFF32>(x);
  }
}

// A ramp over the whole range, with a step that is no multiple of any block.
float Sample(long long i) { return static_cast<float>((i * 7919) % 65536 - 32768) / 32768.0f; }

// Writes the tags, reads them back and compares with what the writer promises.
void WriteTags(std::vector<unsigned char>& file, const LFileTagDataAudio& tags, std::uint32_t fileRate, bool id3) {
  bool looseUmid = false;
  const FuzzTagMap expected = FuzzTagsAfterWrite(tags, fileRate, &looseUmid);
  LMemoryStream stream{std::vector<unsigned char>(file)};
  LWavTagsWriteOptions options;
  options.id3 = id3;
  options.tempFolder = TempFolder();
  FuzzCheck(LWavTagsWrite(stream, tags, options) == LWavTagsResult::Ok,
            "a file our writer wrote takes any tags");
  std::error_code error;
  FuzzCheck(std::filesystem::is_empty(TempFolder(), error) && !error, "the writer leaves no temporary file behind");
  file = stream.Bytes();
  LMemoryStream in(file.data(), file.size());
  LFileTagDataAudio back;
  FuzzCheck(LWavTagsRead(in, &back) == LWavTagsResult::Ok, "the tagged file reads");
  FuzzTagsCheckSame(FuzzTagsRead(back), expected, looseUmid, "the tags read back as the writer promises");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider in(data, size);
  const int writer = in.ConsumeIntegralInRange<int>(0, kWriters - 1);
  const int channels = in.ConsumeIntegralInRange<int>(1, kMostChannels);
  const std::uint32_t rate =
      in.ConsumeBool() ? in.PickValueInArray(kRates) : in.ConsumeIntegralInRange<std::uint32_t>(1, kMostRate);
  const long long frames = in.ConsumeIntegralInRange<long long>(0, kMostFrames);

  LMemoryStream sound;
  {
    LSoundSink sink = OpenSink(writer, std::make_unique<FuzzBorrowedStream>(sound), rate, channels);
    FuzzCheck(!sink.HasError(), "a writer on memory opens");
    std::vector<float> samples(static_cast<std::size_t>(frames * channels));
    for (std::size_t i = 0; i < samples.size(); ++i) samples[i] = Sample(static_cast<long long>(i));
    sink.Write(samples.data(), frames);
    sink.Complete();
    FuzzCheck(!sink.HasError(), "a writer on memory never fails");
  }
  std::vector<unsigned char> file = sound.Bytes();
  std::uint32_t fileRate = 0;
  {
    LMemoryStream probe(file.data(), file.size());
    LWavTagIterator reader(probe);
    FuzzCheck(reader.Open(), "what the writer wrote is a RIFF/WAVE file");
    fileRate = reader.SampleRate();
  }

  const bool older = in.ConsumeBool();
  const LFileTagDataAudio old = older ? Tags(in) : LFileTagDataAudio();
  const bool oldId3 = in.ConsumeBool();
  const bool newId3 = in.ConsumeBool();
  const LFileTagDataAudio tags = Tags(in);
  if (older) WriteTags(file, old, fileRate, oldId3);
  WriteTags(file, tags, fileRate, newId3);

  // The sound is untouched.
  LSoundSource back = LWaveFile::OpenSource(std::make_unique<LMemoryStream>(file.data(), file.size()));
  FuzzCheck(!back.IsError(), "the tagged file opens");
  FuzzCheck(back.GetChannels() == channels && back.GetSampleRate() == rate, "the format comes back");
  FuzzCheck(back.GetEndSample() == frames, "the file holds exactly the frames written");
  std::vector<float> read(static_cast<std::size_t>(frames * channels));
  back.Read(read.data(), frames);
  for (std::size_t i = 0; i < read.size(); ++i) {
    FuzzCheck(read[i] == StoredBy(writer, Sample(static_cast<long long>(i))), "the samples come back as stored");
  }
  return 0;
}
