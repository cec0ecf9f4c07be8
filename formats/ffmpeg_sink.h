#pragma once
// LSNKFFmpeg: the writer of the formats that FFmpeg encodes for us: FLAC, Ogg
// Vorbis, Opus (in Ogg) and RF64 WAVE.
//
// A codec holds only some rates and channel counts: the sink takes the nearest
// that it holds (Opus always 48000 Hz) and answers them through GetSampleRate and
// GetChannels, and its feeder converts to them (LSoundFile::Save does). The tags
// go where the format carries them (Vorbis comments in FLAC, Vorbis and Opus; the
// INFO list in RF64). Integers are scaled as our sample formats scale them, so
// what our readers and FFmpeg's give us comes back bit for bit. Complete (or destruction) drains the encoder and writes
// the container's trailer. A codec that this FFmpeg lacks, FFmpeg missing from
// the machine or the build and every failure raise the sink's error flag.
#include <cstdint>
#include <memory>

#include "base/byte_stream.h"
#include "engine/sound_sink.h"
#include "formats/file_tag_data_audio.h"

enum class LFFmpegSinkCodec : std::uint8_t {
  kFlac,
  kVorbis,
  kOpus,
  kRF64,  // PCM or float WAVE with the 64-bit sizes of RF64 from the start
};

struct LFFmpegSinkFormat {
  LFFmpegSinkCodec codec = LFFmpegSinkCodec::kFlac;
  std::uint32_t sampleRate = 44100;
  std::uint8_t channels = 2;
  // FLAC: 16 or 24; RF64: 16, 24 or 32 (float when floating is set).
  int bitsPerSample = 16;
  bool floating = false;
  // Bits per second for Vorbis and Opus; 0 leaves it to quality or the encoder.
  int bitRate = 0;
  // Vorbis quality from -1 to 10 when no bit rate is given; below -1 for the encoder's default.
  float quality = -2.0f;
  // FLAC compression level 0 to 12; -1 for the encoder's default.
  int compressionLevel = -1;
  // Noise-shaped rounding to 16 bits.
  bool dither = false;
};

class LSNKFFmpeg final : public LSoundSinkBase {
public:
  LSNKFFmpeg(const char* path, const LFFmpegSinkFormat& format, const LFileTagDataAudio* tags = nullptr);
  LSNKFFmpeg(std::unique_ptr<LByteStream> stream, const LFFmpegSinkFormat& format,
             const LFileTagDataAudio* tags = nullptr);
  ~LSNKFFmpeg() override;

  void Write(const float* buffer, long long frames) override;
  void Complete() override;

  // The rate and channel count the codec holds that come nearest to those asked for.
  [[nodiscard]] static std::uint32_t SupportedRate(LFFmpegSinkCodec codec, std::uint32_t rate);
  [[nodiscard]] static int SupportedChannels(LFFmpegSinkCodec codec, int channels);
  // The name of the encoder missing for the codec ("FFmpeg" when FFmpeg itself
  // is), or nullptr when there is one.
  [[nodiscard]] static const char* MissingEncoder(LFFmpegSinkCodec codec);

  struct Encoder;

private:
  void Start(std::unique_ptr<LByteStream> stream, const LFFmpegSinkFormat& format, const LFileTagDataAudio* tags);

  std::unique_ptr<Encoder> encoder_;
  bool completed_ = false;
};
