#pragma once
// LWaveFile: opening WAVE files for reading and writing.
//
// OpenSource never fails by exception: a file it cannot read comes back as an
// error source whose code tells why (kLSourceCannotOpen, kLSourceDamaged,
// kLSourceUnsupported, kLSourceCodecMissing). A writer that cannot open its file
// comes back as a sink with its error flag raised.
#include <cstdint>
#include <memory>
#include <string>

#include "base/byte_stream.h"
#include "engine/sound_sink.h"
#include "engine/sound_source.h"
#include "formats/wave_format.h"

struct LWaveFileFormat {
  std::uint16_t tag = kLWaveTagPCM;
  std::uint16_t channels = 2;
  std::uint32_t sampleRate = 44100;
  std::uint16_t bitsPerSample = 16;
  bool dither = false;
};

class LWaveFile {
 public:
  // format, when given, receives the file's fmt fields as far as they were read
  // (the tag after resolving extensible PCM), also when the open fails later.
  [[nodiscard]] static LSoundSource OpenSource(const char* path, LWaveFileFormat* format = nullptr);
  // The same over bytes in memory or any other stream (it stands at the file's start).
  [[nodiscard]] static LSoundSource OpenSource(std::unique_ptr<LByteStream> stream, LWaveFileFormat* format = nullptr);
  // True when the stream holds a RIFF/WAVE container at its start or behind a few
  // top-level chunks of other kinds, as OpenSource finds it.
  [[nodiscard]] static bool HasContainer(LByteStream& stream);
  // The reader of a temporary file that is removed when the source is destroyed.
  [[nodiscard]] static LSoundSource OpenSourceDeletingFileWhenClosed(const char* path);

  // The writer for the format's tag: PCM (1), 32-bit float (3) with the 46-byte
  // header that says tag 1, A-law (6), µ-law (7), IMA ADPCM (17), GSM 6.10 (49).
  [[nodiscard]] static LSoundSink OpenSink(const char* path, const LWaveFileFormat& format);
  // Integer PCM with the 44-byte header; frames is not used. Dither applies to 8
  // and 16 bits above 8000 Hz only.
  [[nodiscard]] static LSoundSink OpenSinkPCM(const char* path, int sampleRate, unsigned char channels,
                                              unsigned short bits, long long frames, bool dither);
  // 32-bit float marked as such (tag 3 with a fact chunk), for files that other programs read.
  [[nodiscard]] static LSoundSink OpenSinkFloatExport(const char* path, int sampleRate, unsigned char channels);
};

// Forwards everything to the reader it holds and removes the file when destroyed.
class LWavSourceDeleteWhenClosed final : public LSoundSourceBase {
 public:
  LWavSourceDeleteWhenClosed(LSoundSource source, const char* path);
  ~LWavSourceDeleteWhenClosed() override;

  void Read(float* buffer, long long frames) override { source_.Read(buffer, frames); }
  long long GetPositionSample() const override { return source_.GetPositionSample(); }
  long long GetEndSample() const override { return source_.GetEndSample(); }
  void Seek(long long frame) override { source_.Seek(frame); }
  int ControlMessage(int code, long* value) override { return source_.ControlMessage(code, value); }
  long long AdjustRelativeOffset(long long offset, long long reference) override {
    return source_.AdjustRelativeOffset(offset, reference);
  }
  bool IsStreaming() const override { return source_.IsStreaming(); }
  void WaitForStreamingData(int milliseconds) override { source_.WaitForStreamingData(milliseconds); }

 private:
  LSoundSource source_;
  std::string path_;
};
