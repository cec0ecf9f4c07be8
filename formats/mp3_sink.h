#pragma once
// LSNKMP3: the MP3 writer, on LAME.
//
// MPEG audio holds nine sample rates and one or two channels: the sink takes the
// nearest rate and at most two channels and answers them through GetSampleRate
// and GetChannels; its feeder converts to them. The tags go into an ID3v2 tag at
// the start. LAME's first frame is an info frame (Xing/LAME) that is written
// again with the final counts when the sink is destroyed: it records the
// encoder's delay and padding, so that a decoder that honours it gives back
// exactly the frames that were written, in the same place. LAME is loaded by
// the first sink; LAME missing from the machine or the build and every failure
// raise the error flag. Complete (or destruction) flushes the
// encoder and writes the info frame.
#include <cstdint>
#include <memory>

#include "base/array.h"
#include "base/byte_stream.h"
#include "engine/sound_sink.h"
#include "formats/file_tag_data_audio.h"

// The codec named when LAME is missing from the machine or the build.
inline constexpr const char* kLMP3EncoderName = "LAME (MP3)";

struct LMP3SinkFormat {
  std::uint32_t sampleRate = 44100;
  std::uint8_t channels = 2;
  // Constant bit rate in kbit/s; 0 for variable bit rate at vbrQuality.
  int bitRate = 0;
  // 0 (best) to 9.
  int vbrQuality = 2;
};

class LSNKMP3 final : public LSoundSinkBase {
public:
  LSNKMP3(const char* path, const LMP3SinkFormat& format, const LFileTagDataAudio* tags = nullptr);
  LSNKMP3(std::unique_ptr<LByteStream> stream, const LMP3SinkFormat& format, const LFileTagDataAudio* tags = nullptr);
  ~LSNKMP3() override;

  void Write(const float* buffer, long long frames) override;
  void Complete() override;

  // The MPEG rate nearest to rate.
  [[nodiscard]] static std::uint32_t SupportedRate(std::uint32_t rate);
  // False when LAME cannot be loaded; the first call loads it.
  [[nodiscard]] static bool IsAvailable();

private:
  void Start(std::unique_ptr<LByteStream> stream, const LMP3SinkFormat& format, const LFileTagDataAudio* tags);

  std::unique_ptr<LByteStream> stream_;
  void* lame_ = nullptr;
  // Where the info frame goes: after the ID3v2 tag.
  long long infoFrameAt_ = 0;
  LArray<unsigned char> out_;
  bool completed_ = false;
};
