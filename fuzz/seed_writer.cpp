// fuzz_seed_writer FOLDER: writes seed files for every fuzz target into
// FOLDER/<target>/, made by our own writers (and, for the shapes no writer of
// ours makes, from bytes put together here): WAVE files of every format tag the
// reader knows, files of several data chunks and unfinished ones, raw files with
// the prefix the raw target reads, SDF files of every chunk type, effect chains,
// cache item descriptions and persisted cut lists; AIFF and AIFF-C files, the
// formats FFmpeg reads for us, WAVE files with tag chunks (whole and damaged)
// and projects of documents with bookmarks, regions and carried files, saved
// whole and as links. make-seeds.sh adds files that sox writes.
#include <sys/stat.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <numbers>
#include <string>
#include <vector>

#include "app/project.h"
#include "app/project_save.h"
#include "base/memory_stream.h"
#include "base/process_interface.h"
#include "base/sdf_format.h"
#include "base/sdf_writer.h"
#include "effects/echo.h"
#include "effects/effect_chain_file.h"
#include "effects/eq.h"
#include "effects/gain.h"
#include "effects/sound_process_unknown.h"
#include "engine/cut_list_audio.h"
#include "engine/sound_cache.h"
#include "engine/sound_cache_audio_info.h"
#include "engine/sound_cache_item.h"
#include "formats/aiff_file.h"
#include "formats/ffmpeg_sink.h"
#include "formats/gsm_wave.h"
#include "formats/id3_tag_writer.h"
#include "formats/ieee_extended.h"
#include "formats/ima_adpcm.h"
#include "formats/mp3_sink.h"
#include "formats/pcm_file_sink.h"
#include "formats/raw_data_sink.h"
#include "formats/raw_file.h"
#include "formats/riff_tag_chunk.h"
#include "formats/wav_tags.h"
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


// A folder of our own under TMPDIR, for what a writer makes on disk on its way.
std::string TempFolderMake(const char* name) {
  const char* base = std::getenv("TMPDIR");
  std::string pattern = std::string(base && *base ? base : "/tmp") + "/" + name + "-XXXXXX";
  return mkdtemp(pattern.data()) ? pattern : std::string();
}

void PutBE32(Bytes& b, std::uint32_t v) {
  for (int i = 3; i >= 0; --i) b.push_back(static_cast<unsigned char>(v >> (8 * i)));
}
void PutBE16(Bytes& b, std::uint16_t v) {
  b.push_back(static_cast<unsigned char>(v >> 8));
  b.push_back(static_cast<unsigned char>(v));
}
Bytes ChunkBE(const char* id, const Bytes& body) {
  Bytes out(id, id + 4);
  PutBE32(out, static_cast<std::uint32_t>(body.size()));
  out.insert(out.end(), body.begin(), body.end());
  if (body.size() & 1) out.push_back(0);
  return out;
}
Bytes Form(const char* type, const std::vector<Bytes>& chunks) {
  Bytes body(type, type + 4);
  for (const Bytes& c : chunks) body.insert(body.end(), c.begin(), c.end());
  Bytes out = {'F', 'O', 'R', 'M'};
  PutBE32(out, static_cast<std::uint32_t>(body.size()));
  out.insert(out.end(), body.begin(), body.end());
  return out;
}
// COMM of AIFF, or of AIFF-C with a compression type and its name.
Bytes Comm(std::uint16_t channels, std::uint32_t frames, std::uint16_t bits, double rate,
           const char* compression = nullptr) {
  Bytes b;
  PutBE16(b, channels);
  PutBE32(b, frames);
  PutBE16(b, bits);
  unsigned char extended[10];
  LDoubleToExtended(rate, extended);
  b.insert(b.end(), extended, extended + 10);
  if (compression) {
    b.insert(b.end(), compression, compression + 4);
    b.insert(b.end(), {4, 'n', 'a', 'm', 'e', 0});
  }
  return b;
}
Bytes Ssnd(const Bytes& data, std::uint32_t offset = 0) {
  Bytes b;
  PutBE32(b, offset);
  PutBE32(b, 0);
  b.insert(b.end(), offset, 0xA5);
  b.insert(b.end(), data.begin(), data.end());
  return b;
}

void AiffSeeds() {
  const char* t = "fuzz_aiff_reader";
  LFileTagDataAudio tags;
  tags.Set("TITLE", "Klänge");
  tags.Set("ARTIST", "Chor");
  tags.Set("COPYRIGHT", "(c) 2024");
  tags.Set("COMMENT", "Ein Kommentar");
  for (std::uint16_t bits : {8, 16, 24, 32}) {
    for (std::uint8_t channels : {1, 2}) {
      LAiffFileFormat format;
      format.sampleRate = 8000;
      format.channels = channels;
      format.bitsPerSample = bits;
      const Bytes file = Written([&](std::unique_ptr<LByteStream> s) {
        return LAiffFile::OpenSink(std::move(s), format, bits == 16 ? &tags : nullptr);
      }, 150, channels);
      Save(t, "aiff-" + std::to_string(bits) + "-" + std::to_string(channels) + ".aiff", file);
    }
  }
  // Every AIFF-C compression the reader knows, and one it does not.
  const Bytes be16 = [] {
    Bytes b;
    for (int i = 0; i < 64; ++i) PutBE16(b, static_cast<std::uint16_t>(i * 511));
    return b;
  }();
  const Bytes fver = ChunkBE("FVER", {0xA2, 0x80, 0x51, 0x40});
  struct Kind {
    const char* id;
    std::uint16_t bits;
    std::uint16_t bytes;
  };
  const Kind kinds[] = {{"NONE", 16, 2}, {"twos", 16, 2}, {"sowt", 16, 2}, {"in24", 24, 3}, {"in32", 32, 4},
                        {"raw ", 8, 1},  {"fl32", 32, 4}, {"FL64", 64, 8}, {"ulaw", 8, 1},  {"alaw", 8, 1},
                        {"ima4", 16, 2}};
  for (const Kind& kind : kinds) {
    const auto frames = static_cast<std::uint32_t>(be16.size() / kind.bytes);
    std::string name = std::string("aifc-") + kind.id;
    if (name.back() == ' ') name.pop_back();
    Save(t, name + ".aifc", Form("AIFC", {fver, ChunkBE("COMM", Comm(1, frames, kind.bits, 8000.0, kind.id)),
                                          ChunkBE("SSND", Ssnd(be16))}));
  }
  // Markers and texts before the sound, an offset into the sound data, a sound chunk that runs past the end.
  Bytes mark;
  PutBE16(mark, 2);
  PutBE16(mark, 1);
  PutBE32(mark, 10);
  mark.insert(mark.end(), {3, 'E', 'i', 'n'});
  PutBE16(mark, 2);
  PutBE32(mark, 40);
  mark.insert(mark.end(), {4, 'Z', 'w', 'e', 'i', 0});
  Save(t, "marks-first.aiff", Form("AIFF", {ChunkBE("MARK", mark), ChunkBE("NAME", {'T', 'i', 't', 'e', 'l'}),
                                            ChunkBE("ANNO", {'x'}), ChunkBE("SSND", Ssnd(be16, 6)),
                                            ChunkBE("COMM", Comm(2, 32, 16, 44100.0))}));
  Bytes cut = Form("AIFF", {ChunkBE("COMM", Comm(1, 1000, 16, 22050.0)), ChunkBE("SSND", Ssnd(be16))});
  constexpr std::size_t kSsndSizeAt = 12 + 8 + 18 + 4;  // after the FORM header, COMM and the SSND id
  cut[kSsndSizeAt] = 0x7F;                               // the SSND size now claims far more than there is
  Save(t, "unfinished.aiff", cut);
}

void SoundFileSeeds() {
  // Short sounds, so that the decoders behind the sniffing get through many a second.
  const char* t = "fuzz_sound_file";
  Save(t, "pcm16.wav", Written([](std::unique_ptr<LByteStream> s) {
    return LMakeSink<LSNKPCMFile<LSF16>>(std::move(s), 8000u, 1, LWaveHeaderKind::kPlain);
  }, 200, 1));
  LAiffFileFormat aiff;
  aiff.sampleRate = 8000;
  aiff.channels = 1;
  Save(t, "pcm16.aiff", Written([&](std::unique_ptr<LByteStream> s) { return LAiffFile::OpenSink(std::move(s), aiff); },
                                200, 1));
  LFileTagDataAudio tags;
  tags.Set("TITLE", "Klänge");
  if (LSNKMP3::IsAvailable()) {
    LMP3SinkFormat mp3;
    mp3.sampleRate = 8000;
    mp3.channels = 1;
    mp3.bitRate = 8;
    const Bytes file = Written([&](std::unique_ptr<LByteStream> s) {
      return LMakeSink<LSNKMP3>(std::move(s), mp3, &tags);
    }, 1200, 1);
    if (!file.empty()) Save(t, "ours.mp3", file);
  }
  struct Codec {
    LFFmpegSinkCodec codec;
    const char* name;
    std::uint32_t rate;
  };
  const Codec codecs[] = {{LFFmpegSinkCodec::kFlac, "ours.flac", 8000}, {LFFmpegSinkCodec::kVorbis, "ours.ogg", 8000},
                          {LFFmpegSinkCodec::kOpus, "ours.opus", 48000}, {LFFmpegSinkCodec::kRF64, "ours.rf64", 8000}};
  for (const Codec& c : codecs) {
    if (LSNKFFmpeg::MissingEncoder(c.codec)) continue;
    LFFmpegSinkFormat format;
    format.codec = c.codec;
    format.sampleRate = c.rate;
    format.channels = 1;
    const Bytes file = Written([&](std::unique_ptr<LByteStream> s) {
      return LMakeSink<LSNKFFmpeg>(std::move(s), format, &tags);
    }, 400, 1);
    if (!file.empty()) Save(t, c.name, file);
  }
}

// A WAVE file of a few frames with the tags written in by our tag writer.
Bytes Tagged(const LFileTagDataAudio& tags, const std::string& temp, bool id3) {
  const Bytes sound = Written([](std::unique_ptr<LByteStream> s) {
    return LMakeSink<LSNKPCMFile<LSF16>>(std::move(s), 44100u, 2, LWaveHeaderKind::kPlain);
  }, 40, 2);
  LMemoryStream file{Bytes(sound)};
  LWavTagsWriteOptions options;
  options.id3 = id3;
  options.tempFolder = temp;
  return LWavTagsWrite(file, tags, options) == LWavTagsResult::Ok ? file.Bytes() : Bytes();
}

Bytes Text(const char* text) { return Bytes(text, text + std::strlen(text) + 1); }

void RiffTagSeeds() {
  const char* t = "fuzz_riff_tags";
  const std::string temp = TempFolderMake("fuzz_seed_writer");
  LFileTagDataAudio every;
  const char* const values[][2] = {
      {"TITLE", "Abendlied über die Berge"}, {"ARTIST", "Chor"}, {"ALBUMARTIST", "Alle"}, {"ALBUM", "Lieder"},
      {"DATE", "2024-05-01"}, {"COMMENT", "Ein Kommentar"}, {"TRACKNUMBER", "7"}, {"GENRE", "Klassik"},
      {"COPYRIGHT", "(c) 2024"}, {"ENCODEDBY", "Studio"}, {"ENCODER", "Sonvale"}, {"CATEGORY", "Musik"},
      {"BWFVERSION", "2"}, {"ORIGINATOR", "Sonvale"}, {"REFERENCE", "REF-1"}, {"TIME", "12:34:56"},
      {"TIMEREFLOW", "123456789"}, {"TIMEREFHIGH", "1"}, {"UMID", "6,10,43,52,0,255"},
      {"CODINGHISTORY", "A=PCM,F=44100\r\n"}, {"CARTVERSION", "0101"}, {"CUTID", "CUT-1"}, {"CLIENTID", "Kunde"},
      {"CLASSIFICATION", "Werbung"}, {"OUTCUE", "Ende"}, {"ENDDATE", "2024-12-31"}, {"ENDTIME", "23:59:59"},
      {"PRODUCERAPPVERSION", "1.0"}, {"USERDEF", "frei"}, {"LEVELREFERENCE", "-20"}, {"URL", "https://example.org"},
      {"TAGTEXT", "<tags/>"}, {"POSTTIMER1USAGE", "SEG1"}, {"POSTTIMER1VALUE", "1000"}, {"POSTTIMER2USAGE", "SEG2"}};
  for (const auto& [key, value] : values) every.Set(key, value);
  every.MarkerAddSample(0);
  every.MarkerAddSample(20);
  LFileTagDataAudio plain;
  plain.Set("TITLE", "Titel");
  plain.Set("ARTIST", "Künstler");
  LFileTagDataAudio markers;
  markers.MarkerAddMs(1500, 44100);
  markers.MarkerAddMs(20, 44100);
  if (!temp.empty()) {
    const Bytes all = Tagged(every, temp, true);
    if (!all.empty()) Save(t, "every-key-id3.wav", all);
    const Bytes noId3 = Tagged(every, temp, false);
    if (!noId3.empty()) Save(t, "every-key.wav", noId3);
    const Bytes few = Tagged(plain, temp, true);
    if (!few.empty()) Save(t, "title-artist.wav", few);
    const Bytes cues = Tagged(markers, temp, false);
    if (!cues.empty()) Save(t, "markers.wav", cues);
    std::filesystem::remove_all(temp);
  }

  // Shapes other writers make, and damaged ones.
  const Bytes fmt = Chunk("fmt ", Fmt(1, 1, 8000, 16, 2));
  const Bytes data = Chunk("data", Stairs16(10));
  Bytes info = {'I', 'N', 'F', 'O'};
  const Bytes latin = {'K', 'l', 0xE4, 'n', 'g', 'e', 0};  // Latin-1, as older writers left it
  const Bytes title = Chunk("INAM", latin);
  info.insert(info.end(), title.begin(), title.end());
  const Bytes artist = Chunk("IART", Text("Chor"));
  info.insert(info.end(), artist.begin(), artist.end());
  Bytes unpadded = {'I', 'C', 'M', 'T', 3, 0, 0, 0, 'a', 'b', 'c', 'I', 'G', 'N', 'R', 2, 0, 0, 0, 'x', 0};
  info.insert(info.end(), unpadded.begin(), unpadded.end());
  Save(t, "info-latin1.wav", Riff({fmt, Chunk("LIST", info), data}));
  Bytes cue;
  PutLE32(cue, 1000);  // far more points than the chunk holds
  for (std::uint32_t i = 0; i < 3; ++i) {
    PutLE32(cue, i + 1);
    PutLE32(cue, i * 100);
    PutLE32(cue, kLRiffIdData);
    PutLE32(cue, 0);
    PutLE32(cue, 0);
    PutLE32(cue, i * 100);
  }
  Bytes disp;
  PutLE32(disp, kLDispTypeText);
  const Bytes shown = Text("Anzeige");
  disp.insert(disp.end(), shown.begin(), shown.end());
  Bytes bext(kLBextFixedBytes / 2, 0);  // cut short in the middle of its fields
  std::memcpy(bext.data(), "Beschreibung", 12);
  std::memcpy(bext.data() + 256, "Urheber", 7);
  Bytes cart(kLCartFixedBytes + 5, 0);
  std::memcpy(cart.data(), "0101", 4);
  std::memcpy(cart.data() + 684, "SEG1", 4);
  std::memcpy(cart.data() + kLCartFixedBytes, "Text", 4);
  Save(t, "cue-disp-bext-cart.wav", Riff({fmt, Chunk("cue ", cue), data, Chunk("DISP", disp), Chunk("bext", bext),
                                          Chunk("JUNK", Bytes(30, 0)), Chunk("cart", cart)}));
  LFileTagDataAudio id3Tags;
  id3Tags.Set("TITLE", "Aus ID3");
  id3Tags.Set("GENRE", "Jazz");
  LMemoryStream id3;
  if (LId3TagWriter::Write(id3Tags, id3) > 0) {
    Save(t, "upper-id3.wav", Riff({fmt, data, Chunk("ID3 ", id3.Bytes()), Chunk("CSET", Bytes(8, 0))}));
  }
  Bytes truncated = Riff({fmt, data, Chunk("LIST", info)});
  truncated.resize(truncated.size() - 9);
  Save(t, "truncated-info.wav", truncated);
  const Bytes tooMuch = {'I', 'N', 'F', 'O', 'I', 'N', 'A', 'M', 0xFF, 0xFF, 0, 0, 'x', 0};
  Save(t, "info-claims-too-much.wav", Riff({fmt, data, Chunk("LIST", tooMuch)}));
}

void RiffTagWriterSeeds() {
  // The target reads its choices from the bytes; a few lengths and patterns to start from.
  const char* t = "fuzz_riff_tag_writer";
  for (int n = 0; n < 12; ++n) {
    Bytes seed(static_cast<std::size_t>(48 + n * 97));
    for (std::size_t i = 0; i < seed.size(); ++i) seed[i] = static_cast<unsigned char>((i * 131 + n * 17) ^ (i >> 3));
    Save(t, "choices-" + std::to_string(n), seed);
  }
}

// Frames of a staircase, served once.
class StairSource final : public LSoundSourceBase {
public:
  StairSource(long long frames, int channels, std::uint32_t rate)
      : LSoundSourceBase(rate, static_cast<std::uint8_t>(channels)), end_(frames) {}
  void Read(float* buffer, long long frames) override {
    const int channels = GetChannels();
    for (long long i = 0; i < frames; ++i, ++position_) {
      for (int c = 0; c < channels; ++c) {
        const bool inside = position_ >= 0 && position_ < end_;
        buffer[i * channels + c] = inside ? static_cast<float>(position_) / 1024.0f + 0.25f * c : 0.0f;
      }
    }
  }
  long long GetPositionSample() const override { return position_; }
  long long GetEndSample() const override { return end_; }
  void Seek(long long frame) override { position_ = frame; }

private:
  long long end_;
  long long position_ = 0;
};

LCutListAudio StairList(long long frames, int channels, std::uint32_t rate) {
  LProcessInterfaceQuiet process;
  LSoundCacheItemHandle item;
  long long length = 0;
  LCutListAudio list;
  if (LSoundCacheItemAdd(process, LMakeSource<StairSource>(frames, channels, rate), item, length) != kLProcessSuccess) {
    return list;
  }
  list.SetSingleCutListSegment(LCutListSegment(std::move(item), length, 1.0f, 0), static_cast<int>(rate),
                               static_cast<unsigned char>(channels));
  return list;
}

Bytes ProjectSaved(SVProject& project, bool link) {
  LSVSaveProject request(project, "/memory/seed.svp");
  LMemoryStream stream;
  LProcessInterfaceQuiet process;
  return SVProjectWrite(process, request, stream, link) == kLProcessSuccess ? stream.Bytes() : Bytes();
}

void ProjectSeeds() {
  const char* t = "fuzz_project_load";
  const std::string temp = TempFolderMake("fuzz_seed_writer");
  if (temp.empty()) return;
  LSoundCache::Instance().FolderSet((temp + "/cache").c_str());
  {
    SVProject empty;
    Save(t, "empty.svp", ProjectSaved(empty, false));

    // Two short documents with edits, bookmarks, carried files and a region.
    auto a = std::make_shared<SVFile>(StairList(300, 2, 44100));
    a->PathSet("/musik/a.wav");
    a->CutList().EfDelete(50, 80);
    a->CutList().EfInsertSilence(10, 20);
    a->CursorSet(123);
    a->Selection().start = 5;
    a->Selection().end = 90;
    a->View() = {7, 8};
    a->AddBookmark("Eins", 10);
    a->AddBookmark("Zwei", 200);
    a->ModifiedSet(true);
    auto b = std::make_shared<SVFile>(StairList(200, 1, 22050));
    b->PathSet("/musik/b.wav");
    b->AddBookmark("Drei", 3);
    const std::string embed = temp + "/embed";
    std::filesystem::create_directories(embed);
    std::ofstream(embed + "/notiz.txt") << "Notiz";
    {
      LMemoryStream sdf;
      LSDFWriter writer;
      if (writer.Open(sdf, kSDFFileTypeProjectLoaderFile, 1)) {
        writer.WriteString(1, "Zustand");
        writer.Close();
        std::ofstream(embed + "/zustand.sdf", std::ios::binary)
            .write(reinterpret_cast<const char*>(sdf.Bytes().data()), static_cast<std::streamsize>(sdf.Bytes().size()));
      }
    }
    SVFileProjectState& state = b->ProjectState();
    state.embeddingFolder = embed;
    state.associatedFiles["notiz"].path = embed + "/notiz.txt";
    state.associatedFiles["verweis"].path = "/nirgends/verweis.txt";
    state.associatedFiles["sdf/zustand"].path = embed + "/zustand.sdf";

    SVProject project;
    project.DocumentsSet({a, b});
    SVRegion region;
    region.NameSet("Refrain");
    region.SourceFileNameSet("a.wav");
    region.RangeSet(20, 150, 44100);
    region.value = -3;
    a->CutList().EfCopy(20, 150, region.cutList);
    project.Regions().push_back(std::move(region));
    project.RegionListShownSet(true);
    project.UnknownChunks().push_back(LSDFUnknownChunk{7777, kSDFChunkTypeInt, {1, 0, 0, 0}, 3});
    a->RegionListSet(project.RegionListPtr());
    b->RegionListSet(project.RegionListPtr());
    Save(t, "two-documents.svp", ProjectSaved(project, false));
    Save(t, "two-documents-link.svp", ProjectSaved(project, true));
  }
  LSoundCache::Instance().FolderSet("");
  std::filesystem::remove_all(temp);
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
  AiffSeeds();
  SoundFileSeeds();
  RiffTagSeeds();
  RiffTagWriterSeeds();
  ProjectSeeds();
  std::printf("%d seed files in %s\n", gWritten, gFolder.c_str());
  return gWritten > 0 ? 0 : 1;
}
