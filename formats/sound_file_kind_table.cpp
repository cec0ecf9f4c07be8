#include "formats/sound_file_kind_table.h"

#include <algorithm>
#include <climits>
#include <iterator>

#include "formats/aiff_file.h"
#include "formats/ffmpeg_sink.h"
#include "formats/ffmpeg_tag_keys.h"
#include "formats/id3_frame_table.h"
#include "formats/mp3_sink.h"
#include "formats/raw_file.h"
#include "formats/wav_tag_keys.h"
#include "formats/wav_tags.h"
#include "formats/wave_file.h"
#include "formats/wave_format.h"

// A kind without its case below is a build error, not a file written in another format.
#pragma GCC diagnostic error "-Wswitch"

namespace {

using L = LSoundFileLayout;

constexpr std::uint16_t Bit(L layout) { return static_cast<std::uint16_t>(1u << static_cast<unsigned>(layout)); }
constexpr std::uint16_t kAllLayouts = Bit(L::kPcm8) | Bit(L::kPcm16) | Bit(L::kPcm24) | Bit(L::kPcm32) |
                                      Bit(L::kFloat) | Bit(L::kALaw) | Bit(L::kULaw) | Bit(L::kIma) | Bit(L::kGsm);

// GSM 6.10 is defined at this rate.
constexpr std::uint32_t kGsmRate = 8000;
constexpr int kKbit = 1000;
// Transparent for most listeners at a size well below the lossless one.
constexpr int kDefaultMp3Quality = 2;
constexpr int kDefaultVorbisQuality = 5;
constexpr int kDefaultOpusKbitPerChannel = 64;

int LayoutBits(L layout) {
  switch (layout) {
    case L::kPcm8:
    case L::kALaw:
    case L::kULaw:
      return 8;
    case L::kPcm24:
      return 24;
    case L::kPcm32:
    case L::kFloat:
      return 32;
    case L::kPcm16:
    case L::kIma:
    case L::kGsm:
      return 16;
  }
  return 16;
}

std::string WaveCodecName(const LWaveFileFormat& f) {
  switch (f.tag) {
    case kLWaveTagPCM:
      if (f.bitsPerSample <= 8) return "pcm_u8";
      if (f.bitsPerSample <= 16) return "pcm_s16le";
      if (f.bitsPerSample <= 24) return "pcm_s24le";
      return "pcm_s32le";
    case kLWaveTagIEEEFloat:
      return f.bitsPerSample == 64 ? "pcm_f64le" : "pcm_f32le";
    case kLWaveTagALaw:
      return "pcm_alaw";
    case kLWaveTagMuLaw:
      return "pcm_mulaw";
    case kLWaveTagIMAADPCM:
      return "adpcm_ima_wav";
    case kLWaveTagGSM610:
      return "gsm_ms";
    default:
      if (const char* name = LWaveCodecName(f.tag)) return name;
      return "0x" + std::to_string(f.tag);
  }
}

// --- WAVE ---

bool WaveSniff(const unsigned char*, std::size_t, LByteStream& stream) {
  // Also behind a leading chunk of another kind, whatever the name says.
  return LWaveFile::HasContainer(stream);
}

LSoundSource WaveOpen(const LSoundFileOpener& opener, LSoundFileInfo* info) {
  auto stream = opener();
  if (!stream) return LSoundSource::Error(kLSourceCannotOpen);
  LWaveFileFormat format;
  format.tag = 0;
  LSoundSource source = LWaveFile::OpenSource(std::move(stream), &format);
  info->formatName = "wav";
  info->formatLongName = "WAVE";
  info->codecName = info->codecLongName = WaveCodecName(format);
  info->bitsPerSample = format.bitsPerSample;
  // In 64 unsigned bits the product of the three fields cannot overflow; a damaged header may make it huge.
  const unsigned long long bitRate =
      static_cast<unsigned long long>(format.sampleRate) * format.channels * format.bitsPerSample;
  info->bitRate = static_cast<long long>(std::min<unsigned long long>(bitRate, LLONG_MAX));
  if (!source.IsError()) {
    if (auto tags = opener()) (void)LWavTagsRead(*tags, &info->tags);
  }
  return source;
}

LSoundSink WaveSink(const char* path, const LSoundFileFormat& format, std::uint32_t rate, int channels) {
  LWaveFileFormat wave;
  wave.sampleRate = rate;
  wave.channels = static_cast<std::uint16_t>(channels);
  wave.dither = format.dither;
  switch (format.layout) {
    case L::kFloat:
      return LWaveFile::OpenSinkFloatExport(path, static_cast<int>(rate), static_cast<unsigned char>(channels));
    case L::kALaw:
      wave.tag = kLWaveTagALaw;
      wave.bitsPerSample = 8;
      return LWaveFile::OpenSink(path, wave);
    case L::kULaw:
      wave.tag = kLWaveTagMuLaw;
      wave.bitsPerSample = 8;
      return LWaveFile::OpenSink(path, wave);
    case L::kIma:
      // The block coders write mono.
      wave.tag = kLWaveTagIMAADPCM;
      wave.channels = 1;
      wave.bitsPerSample = 4;
      return LWaveFile::OpenSink(path, wave);
    case L::kGsm:
      wave.tag = kLWaveTagGSM610;
      wave.channels = 1;
      wave.sampleRate = kGsmRate;
      wave.bitsPerSample = 0;
      return LWaveFile::OpenSink(path, wave);
    case L::kPcm8:
    case L::kPcm16:
    case L::kPcm24:
    case L::kPcm32:
      break;
  }
  return LWaveFile::OpenSinkPCM(path, static_cast<int>(rate), static_cast<unsigned char>(channels),
                                static_cast<unsigned short>(LayoutBits(format.layout)), 0, format.dither);
}

bool WaveHoldsTag(const std::string& key) {
  for (const auto& k : kLWavInfoKeys)
    if (key == k.key) return true;
  for (const auto& k : kLWavBextFields)
    if (key == k.key) return true;
  for (const auto& k : kLWavCartFields)
    if (key == k.key) return true;
  return false;
}

// --- AIFF ---

bool AiffSniff(const unsigned char* head, std::size_t size, LByteStream&) { return LAiffFile::IsAiff(head, size); }

LSoundSource AiffOpen(const LSoundFileOpener& opener, LSoundFileInfo* info) {
  auto stream = opener();
  if (!stream) return LSoundSource::Error(kLSourceCannotOpen);
  return LAiffFile::OpenSource(std::move(stream), info);
}

LSoundSink AiffSink(const char* path, const LSoundFileFormat& format, std::uint32_t rate, int channels) {
  LAiffFileFormat aiff;
  aiff.sampleRate = rate;
  aiff.channels = static_cast<std::uint8_t>(channels);
  aiff.bitsPerSample = static_cast<std::uint16_t>(LayoutBits(format.layout));
  return LAiffFile::OpenSink(path, aiff, &format.tags);
}

bool AiffHoldsTag(const std::string& key) {
  return key == "TITLE" || key == "ARTIST" || key == "COPYRIGHT" || key == "COMMENT";
}

// --- headerless ---

LSoundSink RawSink(const char* path, const LSoundFileFormat& format, std::uint32_t rate, int channels) {
  LRawSettings raw = format.raw;
  raw.sampleRate = static_cast<std::int32_t>(rate);
  raw.channels = static_cast<std::uint8_t>(channels);
  return LRawFile::OpenSink(path, raw);
}

bool HoldsNoTag(const std::string&) { return false; }

// --- MP3 (LAME) ---

LSoundSink Mp3Sink(const char* path, const LSoundFileFormat& format, std::uint32_t rate, int channels) {
  LMP3SinkFormat mp3;
  mp3.sampleRate = rate;
  mp3.channels = static_cast<std::uint8_t>(std::min(channels, 2));
  mp3.bitRate = format.bitRate;
  mp3.vbrQuality = format.quality >= 0 ? format.quality : kDefaultMp3Quality;
  return LMakeSink<LSNKMP3>(path, mp3, &format.tags);
}

const char* Mp3Missing() { return LSNKMP3::IsAvailable() ? nullptr : kLMP3EncoderName; }

bool Mp3HoldsTag(const std::string& key) { return LId3FrameOfKey(key.c_str()) != nullptr; }

// --- the kinds FFmpeg encodes ---

LFFmpegSinkFormat FFmpegFormat(LFFmpegSinkCodec codec, const LSoundFileFormat& format, std::uint32_t rate,
                               int channels) {
  LFFmpegSinkFormat ff;
  ff.codec = codec;
  ff.sampleRate = rate;
  ff.channels = static_cast<std::uint8_t>(channels);
  ff.dither = format.dither;
  ff.bitRate = format.bitRate * kKbit;
  return ff;
}

LSoundSink Rf64Sink(const char* path, const LSoundFileFormat& format, std::uint32_t rate, int channels) {
  LFFmpegSinkFormat ff = FFmpegFormat(LFFmpegSinkCodec::kRF64, format, rate, channels);
  ff.floating = format.layout == L::kFloat;
  ff.bitsPerSample = std::max(16, LayoutBits(format.layout));
  return LMakeSink<LSNKFFmpeg>(path, ff, &format.tags);
}

LSoundSink FlacSink(const char* path, const LSoundFileFormat& format, std::uint32_t rate, int channels) {
  LFFmpegSinkFormat ff = FFmpegFormat(LFFmpegSinkCodec::kFlac, format, rate, channels);
  ff.bitsPerSample = LayoutBits(format.layout) > 16 ? 24 : 16;
  return LMakeSink<LSNKFFmpeg>(path, ff, &format.tags);
}

LSoundSink OggSink(const char* path, const LSoundFileFormat& format, std::uint32_t rate, int channels) {
  LFFmpegSinkFormat ff = FFmpegFormat(LFFmpegSinkCodec::kVorbis, format, rate, channels);
  ff.quality = static_cast<float>(format.quality >= -1 ? format.quality : kDefaultVorbisQuality);
  return LMakeSink<LSNKFFmpeg>(path, ff, &format.tags);
}

LSoundSink OpusSink(const char* path, const LSoundFileFormat& format, std::uint32_t rate, int channels) {
  LFFmpegSinkFormat ff = FFmpegFormat(LFFmpegSinkCodec::kOpus, format, rate, channels);
  if (ff.bitRate <= 0) ff.bitRate = kDefaultOpusKbitPerChannel * kKbit * std::min(channels, 8);
  return LMakeSink<LSNKFFmpeg>(path, ff, &format.tags);
}

const char* NoCodecNeeded() { return nullptr; }
const char* Rf64Missing() { return LSNKFFmpeg::MissingEncoder(LFFmpegSinkCodec::kRF64); }
const char* FlacMissing() { return LSNKFFmpeg::MissingEncoder(LFFmpegSinkCodec::kFlac); }
const char* OggMissing() { return LSNKFFmpeg::MissingEncoder(LFFmpegSinkCodec::kVorbis); }
const char* OpusMissing() { return LSNKFFmpeg::MissingEncoder(LFFmpegSinkCodec::kOpus); }

// Vorbis comments hold any key; RF64's INFO list what FFmpeg maps.
bool FFmpegHoldsTag(const std::string& key) { return !LTagKeyToFFmpeg(key.c_str()).empty(); }

using K = LSoundFileKind;
constexpr std::uint16_t kRf64Layouts = Bit(L::kPcm16) | Bit(L::kPcm24) | Bit(L::kPcm32) | Bit(L::kFloat);
constexpr std::uint16_t kAiffLayouts = Bit(L::kPcm8) | Bit(L::kPcm16) | Bit(L::kPcm24) | Bit(L::kPcm32);
constexpr std::uint16_t kFlacLayouts = Bit(L::kPcm16) | Bit(L::kPcm24);

// clang-format off
constexpr LSoundFileKindRow kWave {K::kWave, {"wav", "wave"},        kAllLayouts,  WaveSniff, WaveOpen, WaveSink, NoCodecNeeded, WaveHoldsTag};
constexpr LSoundFileKindRow kRF64 {K::kRF64, {"rf64"},               kRf64Layouts, nullptr,   nullptr,  Rf64Sink, Rf64Missing,   FFmpegHoldsTag};
constexpr LSoundFileKindRow kRaw  {K::kRaw,  {"raw", "pcm"},         kAllLayouts,  nullptr,   nullptr,  RawSink,  NoCodecNeeded, HoldsNoTag};
constexpr LSoundFileKindRow kAiff {K::kAiff, {"aiff", "aif", "aifc"}, kAiffLayouts, AiffSniff, AiffOpen, AiffSink, NoCodecNeeded, AiffHoldsTag};
constexpr LSoundFileKindRow kMP3  {K::kMP3,  {"mp3"},                0,            nullptr,   nullptr,  Mp3Sink,  Mp3Missing,    Mp3HoldsTag};
constexpr LSoundFileKindRow kFlac {K::kFlac, {"flac"},               kFlacLayouts, nullptr,   nullptr,  FlacSink, FlacMissing,   FFmpegHoldsTag};
constexpr LSoundFileKindRow kOgg  {K::kOgg,  {"ogg", "oga"},         0,            nullptr,   nullptr,  OggSink,  OggMissing,    FFmpegHoldsTag};
constexpr LSoundFileKindRow kOpus {K::kOpus, {"opus"},               0,            nullptr,   nullptr,  OpusSink, OpusMissing,   FFmpegHoldsTag};
// clang-format on

// AIFF first: its first bytes decide, while the WAVE search looks past leading chunks.
constexpr const LSoundFileKindRow* kRows[] = {&kAiff, &kWave, &kRF64, &kRaw, &kMP3, &kFlac, &kOgg, &kOpus};

// A value outside the enumeration: no reader, and a writer that refuses.
LSoundSink NoSink(const char*, const LSoundFileFormat&, std::uint32_t, int) { return LSoundSink::Error(); }
constexpr LSoundFileKindRow kNoKind{K::kWave, {""}, 0, nullptr, nullptr, NoSink, NoCodecNeeded, HoldsNoTag};

}  // namespace

const LSoundFileKindRow& LSoundFileKindRowOf(LSoundFileKind kind) {
  switch (kind) {
    case K::kWave: return kWave;
    case K::kRF64: return kRF64;
    case K::kRaw: return kRaw;
    case K::kAiff: return kAiff;
    case K::kMP3: return kMP3;
    case K::kFlac: return kFlac;
    case K::kOgg: return kOgg;
    case K::kOpus: return kOpus;
  }
  return kNoKind;
}

std::span<const LSoundFileKindRow* const> LSoundFileKindRows() { return kRows; }
