#pragma once
// LFFmpegSource: the reader of every format that FFmpeg decodes and we do not
// read ourselves (MP3, FLAC, Ogg Vorbis, Opus, AAC, WMA, AMR, GSM, CAF, W64,
// RF64, the sound track of video files and the rest).
//
// The first audio stream is decoded to interleaved float at its own rate and
// channel count, integers scaled as our sample formats scale them (16 bits by
// 32767, G.711 at its working scale), so a file reads the same here as through
// our own readers. The length of compressed sound is counted when the file is
// read through once (only the decoder knows for certain how many frames come
// out); uncompressed sound takes the container's count. MP3, FLAC and the like
// stream until a reader from the start reaches the end, which tells the length
// (GetEndSampleKnown grows as they are decoded); GetEndSample, or a reader that
// jumps, has them counted first, so GetEndSample is always exact. The decoder honours the
// encoder delay and padding that the container records (LAME's tag in MP3, the
// pre-skip of Opus, edit lists of MP4), so a file lines up with what it was made
// from. Seek is sample-accurate: the decoder restarts ahead of the target and
// runs up to it. A damaged or truncated file reads as far as it decodes; the
// rest is silence. One decode buffer is kept; the file is never read whole into
// memory.
//
// Opening fails with code 5 for what FFmpeg cannot read, code 7 (the codec named
// in the info) for a codec this FFmpeg lacks, code 3 for a file without one
// decodable frame, code 4 for a file that cannot be opened. FFmpeg is loaded
// when the first file needs it; where its libraries are missing (or the build
// has none), everything answers 7, naming FFmpeg.
#include <memory>

#include "base/byte_stream.h"
#include "engine/sound_source.h"
#include "formats/sound_file_info.h"

// The codec named when FFmpeg itself is missing from the machine or the build.
inline constexpr const char* kLFFmpegCodecName = "FFmpeg";

class LFFmpegSource final : public LSoundSourceBase {
public:
  // info, when given, receives the container, codec, tags and chapters, and on
  // code 7 the name of the missing codec.
  [[nodiscard]] static LSoundSource Open(const char* path, LSoundFileInfo* info = nullptr);
  // name is only a hint for probing (its extension); the stream stands at the file's start.
  [[nodiscard]] static LSoundSource Open(std::unique_ptr<LByteStream> stream, const char* name,
                                         LSoundFileInfo* info = nullptr);
  // Fills info from the container's headers alone, without decoding: what a
  // save needs to keep the file's format. False when FFmpeg cannot read it.
  [[nodiscard]] static bool Describe(std::unique_ptr<LByteStream> stream, const char* name, LSoundFileInfo* info);
  // False when FFmpeg's libraries cannot be loaded; the first call loads them.
  [[nodiscard]] static bool IsAvailable();

  ~LFFmpegSource() override;

  void Read(float* buffer, long long frames) override;
  long long GetPositionSample() const override { return position_; }
  long long GetEndSample() const override;
  long long GetEndSampleKnown() const override;
  long long GetEndSampleEstimate() const override;
  bool IsStreaming() const override;
  void WaitForStreamingData(int milliseconds) override;
  void Seek(long long frame) override { position_ = frame; }

  struct Decoder;

private:
  LFFmpegSource(std::unique_ptr<Decoder> decoder, unsigned rate, int channels);

  std::unique_ptr<Decoder> decoder_;
  long long position_ = 0;
};
