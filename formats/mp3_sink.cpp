#include "formats/mp3_sink.h"

#include <algorithm>

#include "base/file_stream.h"
#include "base/platform_file.h"
#include "formats/id3_tag_writer.h"

#include "formats/lame_api.h"

namespace {

// The rates of MPEG-1, MPEG-2 and MPEG-2.5 layer III.
constexpr std::uint32_t kMpegRates[] = {8000, 11025, 12000, 16000, 22050, 24000, 32000, 44100, 48000};
constexpr int kMaxChannels = 2;
// Frames handed to LAME per call.
constexpr int kBlockFrames = 8192;
// LAME's rule for the output room of a call: 1.25 x samples + 7200 bytes.
constexpr int kOutBytes = kBlockFrames * 5 / 4 + 7200;
constexpr int kMaxQuality = 9;

}  // namespace

std::uint32_t LSNKMP3::SupportedRate(std::uint32_t rate) {
  std::uint32_t best = kMpegRates[0];
  for (std::uint32_t r : kMpegRates) {
    const auto d = [rate](std::uint32_t x) { return x > rate ? x - rate : rate - x; };
    if (d(r) < d(best)) best = r;
  }
  return best;
}

LSNKMP3::LSNKMP3(const char* path, const LMP3SinkFormat& format, const LFileTagDataAudio* tags)
    : LSoundSinkBase(SupportedRate(format.sampleRate),
                     static_cast<std::uint8_t>(std::clamp<int>(format.channels, 1, kMaxChannels))) {
  const int fd = path ? LFileOpen(path, kLFileWrite | kLFileCreate | kLFileTruncate, LFileLock::Shared) : -1;
  Start(fd >= 0 ? std::make_unique<LFileStream>(fd) : nullptr, format, tags);
}

LSNKMP3::LSNKMP3(std::unique_ptr<LByteStream> stream, const LMP3SinkFormat& format, const LFileTagDataAudio* tags)
    : LSoundSinkBase(SupportedRate(format.sampleRate),
                     static_cast<std::uint8_t>(std::clamp<int>(format.channels, 1, kMaxChannels))) {
  Start(std::move(stream), format, tags);
}

#ifdef SONVALE_HAVE_LAME

bool LSNKMP3::IsAvailable() { return LLameApi::Load(); }

void LSNKMP3::Start(std::unique_ptr<LByteStream> stream, const LMP3SinkFormat& format, const LFileTagDataAudio* tags) {
  stream_ = std::move(stream);
  if (!stream_ || !IsAvailable()) {
    SetError();
    return;
  }
  if (tags && LId3TagWriter::HasFrames(*tags)) {
    infoFrameAt_ = LId3TagWriter::Write(*tags, *stream_);
    if (infoFrameAt_ < 0) {
      SetError();
      return;
    }
  }
  lame_t lame = Lame().lame_init();
  lame_ = lame;
  if (!lame) {
    SetError();
    return;
  }
  Lame().lame_set_in_samplerate(lame, static_cast<int>(GetSampleRate()));
  Lame().lame_set_out_samplerate(lame, static_cast<int>(GetSampleRate()));
  Lame().lame_set_num_channels(lame, GetChannels());
  Lame().lame_set_mode(lame, GetChannels() == 1 ? MONO : JOINT_STEREO);
  if (format.bitRate > 0) {
    Lame().lame_set_VBR(lame, vbr_off);
    Lame().lame_set_brate(lame, format.bitRate);
  } else {
    Lame().lame_set_VBR(lame, vbr_default);
    Lame().lame_set_VBR_quality(lame, static_cast<float>(std::clamp(format.vbrQuality, 0, kMaxQuality)));
  }
  // The info frame carries the delay and padding; the ID3 tag is ours.
  Lame().lame_set_bWriteVbrTag(lame, 1);
  Lame().lame_set_write_id3tag_automatic(lame, 0);
  if (Lame().lame_init_params(lame) < 0) {
    SetError();
    return;
  }
  out_.resize(kOutBytes);
}

void LSNKMP3::Write(const float* buffer, long long frames) {
  if (frames <= 0) return;
  if (completed_) {
    SetError();
    return;
  }
  AdvancePosition(frames);
  if (HasError() || !lame_) return;
  auto* lame = static_cast<lame_t>(lame_);
  const int channels = GetChannels();
  while (frames > 0) {
    const int n = static_cast<int>(std::min<long long>(frames, kBlockFrames));
    // The interleaved call always steps by two values, so mono goes through the planar one.
    const int made = channels == 1
                         ? Lame().lame_encode_buffer_ieee_float(lame, buffer, buffer, n, out_.data(), kOutBytes)
                         : Lame().lame_encode_buffer_interleaved_ieee_float(lame, buffer, n, out_.data(), kOutBytes);
    if (made < 0 || !stream_->WriteAll(out_.data(), made)) {
      SetError();
      return;
    }
    buffer += static_cast<long long>(n) * channels;
    frames -= n;
  }
}

void LSNKMP3::Complete() {
  if (completed_) return;
  completed_ = true;
  if (!lame_ || HasError() || out_.empty()) return;
  auto* lame = static_cast<lame_t>(lame_);
  const int made = Lame().lame_encode_flush(lame, out_.data(), kOutBytes);
  if (made < 0 || !stream_->WriteAll(out_.data(), made)) {
    SetError();
    return;
  }
  const long long end = stream_->Tell();
  const size_t info = Lame().lame_get_lametag_frame(lame, out_.data(), out_.size());
  if (info > 0 && info <= out_.size()) {
    if (!stream_->Seek(infoFrameAt_) || !stream_->WriteAll(out_.data(), static_cast<long long>(info))) SetError();
    if (end >= 0) (void)stream_->Seek(end);
  }
}

LSNKMP3::~LSNKMP3() {
  Complete();
  if (lame_) Lame().lame_close(static_cast<lame_t>(lame_));
}

#else

bool LSNKMP3::IsAvailable() { return false; }

void LSNKMP3::Start(std::unique_ptr<LByteStream> stream, const LMP3SinkFormat&, const LFileTagDataAudio*) {
  stream_ = std::move(stream);
  SetError();
}

void LSNKMP3::Write(const float* buffer, long long frames) {
  (void)buffer;
  if (frames > 0) AdvancePosition(frames);
}

void LSNKMP3::Complete() { completed_ = true; }

LSNKMP3::~LSNKMP3() = default;

#endif
