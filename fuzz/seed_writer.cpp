// fuzz_seed_writer FOLDER: writes seed files for every fuzz target into
// FOLDER/<target>/, made by our own writers (and, for the shapes no writer of
// ours makes, from bytes put together here): WAVE files of every format tag the
// reader knows, files of several data chunks and unfinished ones, raw files with
// the prefix the raw target reads, SDF files of every chunk type, effect chains,
// cache item descriptions and persisted cut lists. make-seeds.sh adds files
// that sox writes.
#include <sys/stat.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <memory>
#include <numbers>
#include <string>
#include <vector>

#include "base/memory_stream.h"
#include "base/sdf_writer.h"
#include "effects/echo.h"
#include "effects/effect_chain_file.h"
#include "effects/eq.h"
#include "effects/gain.h"
#include "effects/sound_process_unknown.h"
#include "engine/cut_list_audio.h"
#include "engine/sound_cache_audio_info.h"
#include "formats/gsm_wave.h"
#include "formats/ima_adpcm.h"
#include "formats/pcm_file_sink.h"
#include "formats/raw_data_sink.h"
#include "formats/raw_file.h"
#include "formats/wave_format.h"
#include "fuzz_check.h"

namespace {

using Bytes = std::vector<unsigned char>;

std::string gFolder;
int gWritten = 0;

bool Save(const char* target, const std::string& name, const Bytes& bytes) {
  const std::string folder = gFolder + "/" + target;
  mkdir(folder.c_str(), 0777);
  FILE* file = std::fopen((folder + "/" + name).c_str(), "wb");
  if (!file) return false;
  const bool ok = std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
  if (ok) ++gWritten;
  return std::fclose(file) == 0 && ok;
}

// A sine with a little of everything: quiet, loud, a few values past full scale.
std::vector<float> Signal(long long frames, int channels) {
  std::vector<float> s(static_cast<std::size_t>(frames * channels));
  for (long long i = 0; i < frames; ++i) {
    for (int c = 0; c < channels; ++c) {
      double v = 0.8 * std::sin(2.0 * std::numbers::pi * 440.0 * static_cast<double>(i + 50 * c) / 8000.0);
      if (i % 97 == 0) v *= 1.5;
      s[static_cast<std::size_t>(i * channels + c)] = static_cast<float>(v);
    }
  }
  return s;
}

// Runs a writer over memory and answers the file it wrote.
template <class MakeSink>
Bytes Written(MakeSink&& make, long long frames, int channels) {
  LMemoryStream file;
  LSoundSink sink = make(std::make_unique<FuzzBorrowedStream>(file));
  if (sink.HasError()) return {};
  const std::vector<float> samples = Signal(frames, channels);
  sink.Write(samples.data(), frames);
  sink.Close();
  return file.Bytes();
}

void PutLE32(Bytes& b, std::uint32_t v) {
  for (int i = 0; i < 4; ++i) b.push_back(static_cast<unsigned char>(v >> (8 * i)));
}
void PutLE16(Bytes& b, std::uint16_t v) {
  b.push_back(static_cast<unsigned char>(v));
  b.push_back(static_cast<unsigned char>(v >> 8));
}
Bytes Chunk(const char* id, const Bytes& body, std::uint32_t size) {
  Bytes out(id, id + 4);
  PutLE32(out, size);
  out.insert(out.end(), body.begin(), body.end());
  if (body.size() & 1) out.push_back(0);
  return out;
}
Bytes Chunk(const char* id, const Bytes& body) { return Chunk(id, body, static_cast<std::uint32_t>(body.size())); }
Bytes Fmt(std::uint16_t tag, std::uint16_t channels, std::uint32_t rate, std::uint16_t bits, std::uint16_t align,
          const Bytes& extra = {}) {
  Bytes b;
  PutLE16(b, tag);
  PutLE16(b, channels);
  PutLE32(b, rate);
  PutLE32(b, rate * align);
  PutLE16(b, align);
  PutLE16(b, bits);
  if (!extra.empty()) {
    PutLE16(b, static_cast<std::uint16_t>(extra.size()));
    b.insert(b.end(), extra.begin(), extra.end());
  }
  return b;
}
Bytes Riff(const std::vector<Bytes>& chunks) {
  Bytes body = {'W', 'A', 'V', 'E'};
  for (const Bytes& c : chunks) body.insert(body.end(), c.begin(), c.end());
  Bytes out = {'R', 'I', 'F', 'F'};
  PutLE32(out, static_cast<std::uint32_t>(body.size()));
  out.insert(out.end(), body.begin(), body.end());
  return out;
}
Bytes Stairs16(int samples) {
  Bytes b;
  for (int i = 0; i < samples; ++i) PutLE16(b, static_cast<std::uint16_t>(i * 97));
  return b;
}

void WaveSeeds() {
  const char* t = "fuzz_wave_reader";
  auto pcm = [](auto tag, int channels, LWaveHeaderKind kind, bool dither = false) {
    using Tag = decltype(tag);
    return Written([&](std::unique_ptr<LByteStream> s) {
      return LMakeSink<LSNKPCMFile<Tag>>(std::move(s), 8000u, channels, kind, dither);
    }, 301, channels);
  };
  Save(t, "pcm8-mono.wav", pcm(LSFU8{}, 1, LWaveHeaderKind::kPlain));
  Save(t, "pcm16-stereo.wav", pcm(LSF16{}, 2, LWaveHeaderKind::kPlain));
  Save(t, "pcm16-shaped.wav", pcm(LSF16{}, 1, LWaveHeaderKind::kPlain, true));
  Save(t, "pcm24-3ch.wav", pcm(LSFLE24{}, 3, LWaveHeaderKind::kPlain));
  Save(t, "pcm32-mono.wav", pcm(LSF32{}, 1, LWaveHeaderKind::kPlain));
  Save(t, "float-46.wav", pcm(LSFF32{}, 2, LWaveHeaderKind::kExtraSize));
  Save(t, "float-fact.wav", pcm(LSFF32{}, 1, LWaveHeaderKind::kFloatFact));
  Save(t, "ima.wav", Written([](std::unique_ptr<LByteStream> s) { return LMakeSink<LIMAWaveSink>(std::move(s), 8000u); },
                             5000, 1));
  const Bytes gsm = Written([](std::unique_ptr<LByteStream> s) { return LGSMWaveOpenSink(std::move(s), 8000u); }, 1000, 1);
  if (!gsm.empty()) Save(t, "gsm.wav", gsm);

  // Shapes no writer of ours makes.
  const Bytes data = Chunk("data", Stairs16(40));
  Save(t, "float64.wav", Riff({Chunk("fmt ", Fmt(kLWaveTagIEEEFloat, 1, 8000, 64, 8)), Chunk("data", Bytes(80, 0x3F))}));
  Save(t, "alaw.wav", Riff({Chunk("fmt ", Fmt(kLWaveTagALaw, 2, 8000, 8, 2)), Chunk("data", Bytes(64, 0xD5))}));
  Save(t, "mulaw.wav", Riff({Chunk("fmt ", Fmt(kLWaveTagMuLaw, 1, 8000, 8, 1)), Chunk("data", Bytes(64, 0x7F))}));
  Bytes sub = {0x10, 0x00, 0x03, 0x00, 0x00, 0x00};  // valid bits, channel mask
  sub.insert(sub.end(), std::begin(kLWaveSubFormatPCM), std::end(kLWaveSubFormatPCM));
  Save(t, "extensible-pcm.wav", Riff({Chunk("fmt ", Fmt(kLWaveTagExtensible, 2, 8000, 16, 4, sub)), data}));
  Bytes floatSub = sub;
  floatSub[6] = 0x03;
  Save(t, "extensible-float.wav", Riff({Chunk("fmt ", Fmt(kLWaveTagExtensible, 2, 8000, 32, 8, floatSub)), data}));
  Save(t, "several-data-chunks.wav",
       Riff({Chunk("fmt ", Fmt(1, 1, 8000, 16, 2)), data, Chunk("data", Stairs16(30)), Chunk("data", Stairs16(7))}));
  Save(t, "unsized-data-chunk.wav", Riff({Chunk("fmt ", Fmt(1, 2, 8000, 16, 4)), data, Chunk("data", Stairs16(20), 0)}));
  Save(t, "provisional.wav", Riff({Chunk("fmt ", Fmt(1, 1, 8000, 16, 2)), Chunk("data", Stairs16(50), 0xFFFFFFDB)}));
  Save(t, "list-before-fmt.wav", Riff({Chunk("LIST", Bytes(9, 'x')), Chunk("fmt ", Fmt(1, 1, 8000, 8, 1)),
                                       Chunk("fact", Bytes(4, 0)), Chunk("data", Bytes(33, 0x80))}));
  Bytes leading = Chunk("junk", Bytes(12, 1));
  const Bytes wave = Riff({Chunk("fmt ", Fmt(1, 1, 8000, 16, 2)), data});
  leading.insert(leading.end(), wave.begin(), wave.end());
  Save(t, "leading-chunk.wav", leading);
  Save(t, "ima-short-block.wav", Riff({Chunk("fmt ", Fmt(kLWaveTagIMAADPCM, 1, 8000, 4, 36)), Chunk("data", Bytes(77, 0x93))}));
  Save(t, "gsm-unsized.wav", Riff({Chunk("fmt ", Fmt(kLWaveTagGSM610, 1, 8000, 0, 65)), Chunk("data", Bytes(140, 0x21), 0xFFFFFFFF)}));
}

void RawSeeds() {
  const char* t = "fuzz_raw_reader";
  for (int code = kLRawVOX; code <= kLRawFloatBE; ++code) {
    for (int channels : {1, 2}) {
      Bytes file = {static_cast<unsigned char>(code), static_cast<unsigned char>(channels)};
      PutLE32(file, 8000);
      Bytes data = Stairs16(100);
      if (code == kLRawFloat || code == kLRawFloatBE) {
        data.clear();
        for (float v : Signal(50, channels)) {
          std::uint32_t bits;
          std::memcpy(&bits, &v, 4);
          PutLE32(data, bits);
        }
      }
      file.insert(file.end(), data.begin(), data.end());
      Save(t, "raw-" + std::to_string(code) + "-" + std::to_string(channels), file);
    }
  }
}

void WriterSeeds() {
  // The writer target reads its choices from the bytes; a few shapes to start from.
  const char* t = "fuzz_wave_writer";
  for (int writer = 0; writer < 14; ++writer) {
    Bytes seed(64 + writer * 16);
    for (std::size_t i = 0; i < seed.size(); ++i) seed[i] = static_cast<unsigned char>(i * 37 + writer);
    seed[0] = static_cast<unsigned char>(writer);
    Save(t, "writer-" + std::to_string(writer), seed);
  }
}

Bytes SDFFile(unsigned int type, unsigned short version, void (*fill)(LSDFWriter&)) {
  LMemoryStream stream;
  LSDFWriter writer;
  if (!writer.Open(stream, type, version)) return {};
  fill(writer);
  writer.Close();
  return stream.Bytes();
}

void SDFSeeds() {
  const char* t = "fuzz_sdf_reader";
  Save(t, "every-type.sdf", SDFFile(kSDFFileTypeProject, kSDFDataVersionProject, [](LSDFWriter& w) {
    w.WriteBool(1, true);
    w.WriteInt(2, -5);
    w.WriteInt64(3, 1LL << 40);
    w.WriteFloat(4, 0.5f);
    w.WriteString(6, "Klänge");
    const unsigned char blob[] = {1, 2, 3, 4, 5};
    w.WriteBlob(7, blob, sizeof blob);
    w.StartContainer(8);
    w.StartChunk(9, kSDFChunkTypeRecord);
    w.WriteData("record", 6);
    w.EndChunk(9);
    w.StartContainer(10);
    w.WriteInt(2, 1);
    w.EndContainer(10);
    w.EndContainer(8);
  }));
  Save(t, "empty.sdf", SDFFile(kSDFFileTypeEffectChain, 1, [](LSDFWriter&) {}));
  LSoundCacheAudioInfo info;
  info.sampleRate = 44100;
  info.channels = 2;
  info.hasOriginal = true;
  info.original.path = "/Musik/Aufnahme.wav";
  info.original.modTime = 1700000000;
  info.original.hasModTime = true;
  info.original.size = 1234567;
  info.original.hasSize = true;
  info.original.attribute = 0100644;
  info.original.hasAttribute = true;
  info.hasLastUse = true;
  info.lastUse = 1700000300;
  info.unknown.push_back(LSDFUnknownChunk{300, kSDFChunkTypeBlob, {1, 2, 3}, 1});
  LMemoryStream audinfo;
  if (LSoundCacheAudioInfoWrite(audinfo, info)) Save(t, "item.audinfo", audinfo.Bytes());
  // The older forms of the time chunks.
  Save(t, "older.audinfo", SDFFile(kSDFFileTypeCacheItemInfo, 1, [](LSDFWriter& w) {
    w.WriteInt(kLSoundCacheInfoSampleRate, 8000);
    w.WriteInt(kLSoundCacheInfoChannels, 1);
    w.WriteInt(kLSoundCacheInfoLastUse32, 1600000000);
    w.StartContainer(kLSoundCacheInfoOriginal);
    w.WriteString(kLSoundCacheInfoOriginalPath, "/a.wav");
    w.WriteInt(kLSoundCacheInfoOriginalModTime32, 1500000000);
    w.EndContainer(kLSoundCacheInfoOriginal);
  }));
}

void ChainSeeds() {
  const char* t = "fuzz_effect_chain";
  LSoundProcessMulti chain;
  auto echo = std::make_unique<LSPEcho>();
  echo->SetPreset(1);
  chain.Append(std::move(echo));
  chain.Append(std::make_unique<LSPGain>(-3.0));
  auto unknown = std::make_unique<LSPUnknown>(99);
  unknown->listChunks.push_back(LSDFUnknownChunk{0x2001, kSDFChunkTypeInt, {1, 0, 0, 0}, 0});
  chain.Append(std::move(unknown));
  LMemoryStream file;
  if (LEffectChainSave(chain, file)) Save(t, "chain.ecf", file.Bytes());
  LSoundProcessMulti disabled;
  auto gain = std::make_unique<LSPGain>(6.0);
  gain->bDisabled = true;
  disabled.Append(std::move(gain));
  LMemoryStream second;
  if (LEffectChainSave(disabled, second)) Save(t, "disabled.ecf", second.Bytes());
  // A point-list equaliser record, which a chain drops on loading, and the older flat echo layout.
  Save(t, "eq-and-flat-echo.ecf", SDFFile(kSDFFileTypeEffectChain, 1, [](LSDFWriter& w) {
    LSPEq eq;
    eq.SetGains({0.0f, -3.0f, 6.0f, 1.5f});
    w.WriteInt(kLSPMultiChunkType, eq.GetSoundProcessType());
    w.StartContainer(kLSPMultiChunkEffect);
    eq.SaveToSDF(w);
    w.EndContainer(kLSPMultiChunkEffect);
    w.WriteInt(kLSPMultiChunkType, 3);
    w.StartContainer(kLSPMultiChunkEffect);
    w.WriteInt(0x2001, 40);
    w.WriteInt(0x2002, 400);
    w.EndContainer(kLSPMultiChunkEffect);
    w.WriteInt(kLSPMultiChunkType, 16384);
    w.StartContainer(kLSPMultiChunkEffect);
    w.EndContainer(kLSPMultiChunkEffect);
  }));
}

void CutListSeeds() {
  const char* t = "fuzz_cut_list_restore";
  LCutListAudio list;
  list.SetFormat(48000, 2);
  list.SegmentAppend(LCutListSegment::Silence(1000));
  list.SegmentAppend(LCutListSegment(LSoundCacheItemHandle(7), 500, 1.0f, 20));
  list.SegmentAppend(LCutListSegment(LSoundCacheItemHandle(7), 300, 0.5f, 700));
  list.SegmentAppend(LCutListSegment(LSoundCacheItemHandle(12), 1LL << 30, -1.0f, 0));
  LMemoryStream file;
  if (list.Save(file)) Save(t, "list.cut", file.Bytes());
  LCutListAudio empty;
  LMemoryStream none;
  if (empty.Save(none)) Save(t, "empty.cut", none.Bytes());
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "Aufruf: fuzz_seed_writer ORDNER\n");
    return 2;
  }
  gFolder = argv[1];
  mkdir(gFolder.c_str(), 0777);
  WaveSeeds();
  RawSeeds();
  WriterSeeds();
  SDFSeeds();
  ChainSeeds();
  CutListSeeds();
  std::printf("%d seed files in %s\n", gWritten, gFolder.c_str());
  return gWritten > 0 ? 0 : 1;
}
