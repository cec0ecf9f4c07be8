#include "formats/ffmpeg_sink.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "base/file_stream.h"
#include "base/platform_file.h"
#include "formats/ffmpeg_source.h"

#ifdef SONVALE_HAVE_FFMPEG
#include "base/array.h"
#include "engine/sample_format.h"
#include "formats/ffmpeg_api.h"
#include "formats/ffmpeg_io.h"
#include "formats/ffmpeg_tag_keys.h"
#include "formats/sound_dither.h"
#endif

namespace {

// What each codec holds (FFmpeg's encoders and containers).
constexpr int kFlacMaxChannels = 8;
constexpr int kVorbisMaxChannels = 8;
constexpr int kOpusMaxChannels = 8;
constexpr int kMaxChannels = 255;
constexpr std::uint32_t kOpusRate = 48000;
constexpr std::uint32_t kFlacMaxRate = 655350;

}  // namespace

std::uint32_t LSNKFFmpeg::SupportedRate(LFFmpegSinkCodec codec, std::uint32_t rate) {
  rate = std::max<std::uint32_t>(rate, 1);
  switch (codec) {
    case LFFmpegSinkCodec::kOpus:
      return kOpusRate;
    case LFFmpegSinkCodec::kFlac:
      return std::min(rate, kFlacMaxRate);
    default:
      return rate;
  }
}

int LSNKFFmpeg::SupportedChannels(LFFmpegSinkCodec codec, int channels) {
  channels = std::clamp(channels, 1, kMaxChannels);
  switch (codec) {
    case LFFmpegSinkCodec::kFlac:
      return std::min(channels, kFlacMaxChannels);
    case LFFmpegSinkCodec::kVorbis:
      return std::min(channels, kVorbisMaxChannels);
    case LFFmpegSinkCodec::kOpus:
      return std::min(channels, kOpusMaxChannels);
    default:
      return channels;
  }
}

LSNKFFmpeg::LSNKFFmpeg(const char* path, const LFFmpegSinkFormat& format, const LFileTagDataAudio* tags)
    : LSoundSinkBase(SupportedRate(format.codec, format.sampleRate),
                     static_cast<std::uint8_t>(SupportedChannels(format.codec, format.channels))) {
  const int fd = path ? LFileOpen(path, kLFileWrite | kLFileCreate | kLFileTruncate, LFileLock::Shared) : -1;
  Start(fd >= 0 ? std::make_unique<LFileStream>(fd) : nullptr, format, tags);
}

LSNKFFmpeg::LSNKFFmpeg(std::unique_ptr<LByteStream> stream, const LFFmpegSinkFormat& format,
                       const LFileTagDataAudio* tags)
    : LSoundSinkBase(SupportedRate(format.codec, format.sampleRate),
                     static_cast<std::uint8_t>(SupportedChannels(format.codec, format.channels))) {
  Start(std::move(stream), format, tags);
}

#ifdef SONVALE_HAVE_FFMPEG

namespace {

// Where the sample count of RF64's ds64 chunk lies: the muxer, told to write RF64
// always, puts ds64 first, after "RF64", the size and "WAVE".
constexpr long long kDs64SampleCountAt = 12 + 8 + 16;

// Frames per encoder call for codecs that take any number.
constexpr int kVariableFrameSize = 4096;

const AVCodec* FindEncoder(LFFmpegSinkCodec codec, int bits, bool floating, bool* experimental) {
  *experimental = false;
  switch (codec) {
    case LFFmpegSinkCodec::kFlac:
      return Av().avcodec_find_encoder(AV_CODEC_ID_FLAC);
    case LFFmpegSinkCodec::kVorbis:
    case LFFmpegSinkCodec::kOpus: {
      const bool vorbis = codec == LFFmpegSinkCodec::kVorbis;
      if (const AVCodec* c = Av().avcodec_find_encoder_by_name(vorbis ? "libvorbis" : "libopus")) return c;
      // FFmpeg's own encoders are marked experimental.
      *experimental = true;
      return Av().avcodec_find_encoder_by_name(vorbis ? "vorbis" : "opus");
    }
    case LFFmpegSinkCodec::kRF64:
      if (floating) return Av().avcodec_find_encoder(AV_CODEC_ID_PCM_F32LE);
      if (bits <= 16) return Av().avcodec_find_encoder(AV_CODEC_ID_PCM_S16LE);
      if (bits <= 24) return Av().avcodec_find_encoder(AV_CODEC_ID_PCM_S24LE);
      return Av().avcodec_find_encoder(AV_CODEC_ID_PCM_S32LE);
  }
  return nullptr;
}

const char* MuxerName(LFFmpegSinkCodec codec) {
  switch (codec) {
    case LFFmpegSinkCodec::kFlac:
      return "flac";
    case LFFmpegSinkCodec::kVorbis:
      return "ogg";
    case LFFmpegSinkCodec::kOpus:
      return "opus";
    case LFFmpegSinkCodec::kRF64:
      return "wav";
  }
  return "";
}

bool Supports(const AVCodec* codec, AVSampleFormat format) {
  if (!codec->sample_fmts) return true;
  for (const AVSampleFormat* f = codec->sample_fmts; *f != AV_SAMPLE_FMT_NONE; ++f) {
    if (*f == format) return true;
  }
  return false;
}

// The encoder's input format: what the stored width asks for, else float, else 16 bits.
AVSampleFormat ChooseFormat(const AVCodec* codec, int bits, bool floating) {
  const AVSampleFormat wanted[] = {
      floating ? AV_SAMPLE_FMT_FLT : (bits > 16 ? AV_SAMPLE_FMT_S32 : AV_SAMPLE_FMT_S16),
      bits > 16 ? AV_SAMPLE_FMT_S32P : AV_SAMPLE_FMT_S16P,
      AV_SAMPLE_FMT_FLT,
      AV_SAMPLE_FMT_FLTP,
      AV_SAMPLE_FMT_S16,
      AV_SAMPLE_FMT_S16P,
      AV_SAMPLE_FMT_S32,
      AV_SAMPLE_FMT_S32P,
  };
  for (AVSampleFormat f : wanted) {
    if (Supports(codec, f)) return f;
  }
  return AV_SAMPLE_FMT_NONE;
}

// Integers take the scaling of our sample formats, as every other writer here
// does: 24 bits travel in the top of 32-bit words, which the encoders shift down,
// so they round exactly as our 24-bit WAVE writer does.
std::int16_t To16(float v) {
  unsigned char b[2];
  LSF16::Out(b, v);
  return lsf_detail::Load<std::int16_t>(b);
}
std::int32_t To32(float v) {
  unsigned char b[4];
  LSF32::Out(b, v);
  return lsf_detail::Load<std::int32_t>(b);
}

}  // namespace

struct LSNKFFmpeg::Encoder {
  ~Encoder();
  [[nodiscard]] bool Open(std::unique_ptr<LByteStream> byteStream, const LFFmpegSinkFormat& format, std::uint32_t rate,
                          int channels, const LFileTagDataAudio* tags);
  // Converts frames into the frame being filled; sends it when full. False on failure.
  bool Put(const float* in, long long frames);
  bool Finish();

  std::unique_ptr<LByteStream> stream;
  std::unique_ptr<LFFmpegIO> io;
  AVFormatContext* oc = nullptr;
  AVCodecContext* enc = nullptr;
  AVStream* st = nullptr;
  AVFrame* frame = nullptr;
  AVPacket* packet = nullptr;
  AVSampleFormat format = AV_SAMPLE_FMT_NONE;
  int channels = 0;
  int frameSize = kVariableFrameSize;
  int filled = 0;
  bool headerWritten = false;
  bool finished = false;
  bool rf64 = false;
  bool wide24 = false;  // 24-bit samples in the top of 32-bit words
  long long pts = 0;
  LSoundDither dither;
  LArray<std::int16_t> scratch16;
  LArray<float> scratchFloat;

private:
  bool Send(AVFrame* f);
  bool PatchSampleCount();
};

LSNKFFmpeg::Encoder::~Encoder() {
  Av().av_frame_free(&frame);
  Av().av_packet_free(&packet);
  Av().avcodec_free_context(&enc);
  if (oc) Av().avformat_free_context(oc);
  io.reset();
}

bool LSNKFFmpeg::Encoder::Open(std::unique_ptr<LByteStream> byteStream, const LFFmpegSinkFormat& f, std::uint32_t rate,
                               int channelCount, const LFileTagDataAudio* tags) {
  stream = std::move(byteStream);
  channels = channelCount;
  rf64 = f.codec == LFFmpegSinkCodec::kRF64;
  dither = LSoundDither(f.dither);
  if (!stream) return false;
  bool experimental = false;
  const AVCodec* codec = FindEncoder(f.codec, f.bitsPerSample, f.floating, &experimental);
  if (!codec) return false;
  if (Av().avformat_alloc_output_context2(&oc, nullptr, MuxerName(f.codec), nullptr) < 0 || !oc) return false;
  io = std::make_unique<LFFmpegIO>(stream.get(), true);
  if (!io->Context()) return false;
  oc->pb = io->Context();

  enc = Av().avcodec_alloc_context3(codec);
  if (!enc) return false;
  format = ChooseFormat(codec, f.bitsPerSample, f.floating);
  if (format == AV_SAMPLE_FMT_NONE) return false;
  enc->sample_fmt = format;
  enc->sample_rate = static_cast<int>(rate);
  // Opus and Vorbis know only the layouts of Vorbis order; FFmpeg's defaults for
  // three and four channels are others (with a low-frequency or a back centre channel).
  const bool vorbisOrder = f.codec == LFFmpegSinkCodec::kOpus || f.codec == LFFmpegSinkCodec::kVorbis;
  if (channels == 3 && vorbisOrder) {
    enc->ch_layout = AV_CHANNEL_LAYOUT_SURROUND;
  } else if (channels == 4 && vorbisOrder) {
    enc->ch_layout = AV_CHANNEL_LAYOUT_QUAD;
  } else {
    Av().av_channel_layout_default(&enc->ch_layout, channels);
  }
  enc->time_base = AVRational{1, static_cast<int>(rate)};
  enc->thread_count = 1;
  wide24 = (format == AV_SAMPLE_FMT_S32 || format == AV_SAMPLE_FMT_S32P) && f.bitsPerSample <= 24;
  if (wide24) enc->bits_per_raw_sample = 24;
  if (f.bitRate > 0) enc->bit_rate = f.bitRate;
  if (f.codec == LFFmpegSinkCodec::kVorbis && f.bitRate <= 0 && f.quality >= -1.0f) {
    enc->flags |= AV_CODEC_FLAG_QSCALE;
    enc->global_quality = static_cast<int>(std::lround(f.quality * FF_QP2LAMBDA));
  }
  if (f.codec == LFFmpegSinkCodec::kFlac && f.compressionLevel >= 0) enc->compression_level = f.compressionLevel;
  if (experimental) enc->strict_std_compliance = FF_COMPLIANCE_EXPERIMENTAL;
  if (oc->oformat->flags & AVFMT_GLOBALHEADER) enc->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
  if (Av().avcodec_open2(enc, codec, nullptr) < 0) return false;

  st = Av().avformat_new_stream(oc, nullptr);
  if (!st || Av().avcodec_parameters_from_context(st->codecpar, enc) < 0) return false;
  st->time_base = enc->time_base;
  if (tags) {
    for (const LFileTag& tag : *tags) {
      const std::string key = LTagKeyToFFmpeg(tag.key.c_str());
      if (key.empty() || tag.value.empty()) continue;
      // FLAC and WAVE take the container's tags, Ogg the stream's.
      Av().av_dict_set(&oc->metadata, key.c_str(), tag.value.c_str(), 0);
      Av().av_dict_set(&st->metadata, key.c_str(), tag.value.c_str(), 0);
    }
  }
  AVDictionary* options = nullptr;
  if (f.codec == LFFmpegSinkCodec::kRF64) Av().av_dict_set(&options, "rf64", "always", 0);
  const int r = Av().avformat_write_header(oc, &options);
  Av().av_dict_free(&options);
  if (r < 0) return false;
  headerWritten = true;

  if (enc->frame_size > 0 && !(codec->capabilities & AV_CODEC_CAP_VARIABLE_FRAME_SIZE)) frameSize = enc->frame_size;
  frame = Av().av_frame_alloc();
  packet = Av().av_packet_alloc();
  if (!frame || !packet) return false;
  frame->format = format;
  frame->nb_samples = frameSize;
  frame->sample_rate = enc->sample_rate;
  if (Av().av_channel_layout_copy(&frame->ch_layout, &enc->ch_layout) < 0 || Av().av_frame_get_buffer(frame, 0) < 0) {
    return false;
  }
  scratch16.resize(static_cast<size_t>(frameSize) * static_cast<size_t>(channels));
  if (dither.IsEnabled()) scratchFloat.resize(scratch16.size());
  return true;
}

bool LSNKFFmpeg::Encoder::Send(AVFrame* f) {
  if (f) {
    f->pts = pts;
    pts += f->nb_samples;
  }
  if (Av().avcodec_send_frame(enc, f) < 0) return false;
  for (;;) {
    const int r = Av().avcodec_receive_packet(enc, packet);
    if (r == AVERROR(EAGAIN) || r == AVERROR_EOF) return true;
    if (r < 0) return false;
    packet->stream_index = st->index;
    Av().av_packet_rescale_ts(packet, enc->time_base, st->time_base);
    if (Av().av_interleaved_write_frame(oc, packet) < 0) return false;
  }
}

bool LSNKFFmpeg::Encoder::Put(const float* in, long long frames) {
  const size_t ch = static_cast<size_t>(channels);
  while (frames > 0) {
    if (filled == 0 && Av().av_frame_make_writable(frame) < 0) return false;
    const int n = static_cast<int>(std::min<long long>(frames, frameSize - filled));
    const size_t at = static_cast<size_t>(filled);
    const size_t count = static_cast<size_t>(n) * ch;
    switch (format) {
      case AV_SAMPLE_FMT_FLT:
        std::memcpy(reinterpret_cast<float*>(frame->data[0]) + at * ch, in, count * sizeof(float));
        break;
      case AV_SAMPLE_FMT_FLTP:
        for (size_t c = 0; c < ch; ++c) {
          auto* out = reinterpret_cast<float*>(frame->extended_data[c]) + at;
          for (int i = 0; i < n; ++i) out[i] = in[static_cast<size_t>(i) * ch + c];
        }
        break;
      case AV_SAMPLE_FMT_S16:
      case AV_SAMPLE_FMT_S16P: {
        std::int16_t* out =
            format == AV_SAMPLE_FMT_S16 ? reinterpret_cast<std::int16_t*>(frame->data[0]) + at * ch : scratch16.data();
        if (dither.IsEnabled()) {
          // The shaped rounding does not clamp: it gets values within full scale.
          for (size_t i = 0; i < count; ++i) scratchFloat[i] = std::clamp(lsf_detail::Finite(in[i]), -1.0f, 1.0f);
          dither.ConvertSamplesOut<LSF16>(out, scratchFloat.data(), n, channels);
        } else {
          for (size_t i = 0; i < count; ++i) out[i] = To16(in[i]);
        }
        if (format == AV_SAMPLE_FMT_S16P) {
          for (size_t c = 0; c < ch; ++c) {
            auto* plane = reinterpret_cast<std::int16_t*>(frame->extended_data[c]) + at;
            for (int i = 0; i < n; ++i) plane[i] = out[static_cast<size_t>(i) * ch + c];
          }
        }
        break;
      }
      case AV_SAMPLE_FMT_S32:
        for (size_t i = 0; i < count; ++i) {
          reinterpret_cast<std::int32_t*>(frame->data[0])[at * ch + i] = To32(in[i]);
        }
        break;
      case AV_SAMPLE_FMT_S32P:
        for (size_t c = 0; c < ch; ++c) {
          auto* out = reinterpret_cast<std::int32_t*>(frame->extended_data[c]) + at;
          for (int i = 0; i < n; ++i) {
            const float v = in[static_cast<size_t>(i) * ch + c];
            out[i] = To32(v);
          }
        }
        break;
      default:
        return false;
    }
    filled += n;
    in += count;
    frames -= n;
    if (filled == frameSize) {
      frame->nb_samples = frameSize;
      filled = 0;
      if (!Send(frame)) return false;
    }
  }
  return true;
}

bool LSNKFFmpeg::Encoder::Finish() {
  if (finished || !headerWritten) return false;
  finished = true;
  bool ok = true;
  if (filled > 0) {
    frame->nb_samples = filled;
    filled = 0;
    ok = Send(frame);
  }
  ok = Send(nullptr) && ok;
  ok = Av().av_write_trailer(oc) >= 0 && ok;
  Av().avio_flush(oc->pb);
  if (ok && rf64) ok = PatchSampleCount();
  return ok;
}

bool LSNKFFmpeg::Encoder::PatchSampleCount() {
  // FFmpeg's muxer leaves an unset count in ds64 when no packet came, and then
  // refuses its own file; the count is the frames we were given.
  unsigned char count[8];
  for (int i = 0; i < 8; ++i) count[i] = static_cast<unsigned char>(static_cast<std::uint64_t>(pts) >> (8 * i));
  const long long end = stream->Size();
  return stream->Seek(kDs64SampleCountAt) && stream->WriteAll(count, 8) && stream->Seek(end);
}

void LSNKFFmpeg::Start(std::unique_ptr<LByteStream> stream, const LFFmpegSinkFormat& format,
                       const LFileTagDataAudio* tags) {
  if (!LFFmpegApi::Load()) {
    SetError();
    return;
  }
  encoder_ = std::make_unique<Encoder>();
  if (!encoder_->Open(std::move(stream), format, GetSampleRate(), GetChannels(), tags)) SetError();
}

LSNKFFmpeg::~LSNKFFmpeg() { Complete(); }

void LSNKFFmpeg::Complete() {
  if (completed_) return;
  completed_ = true;
  if (encoder_ && !HasError() && !encoder_->Finish()) SetError();
}

void LSNKFFmpeg::Write(const float* buffer, long long frames) {
  if (frames <= 0) return;
  if (completed_) {
    SetError();
    return;
  }
  if (!HasError() && !encoder_->Put(buffer, frames)) SetError();
  AdvancePosition(frames);
}

const char* LSNKFFmpeg::MissingEncoder(LFFmpegSinkCodec codec) {
  if (!LFFmpegApi::Load()) return kLFFmpegCodecName;
  bool experimental = false;
  if (FindEncoder(codec, 16, false, &experimental)) return nullptr;
  switch (codec) {
    case LFFmpegSinkCodec::kFlac:
      return "flac";
    case LFFmpegSinkCodec::kVorbis:
      return "vorbis";
    case LFFmpegSinkCodec::kOpus:
      return "opus";
    case LFFmpegSinkCodec::kRF64:
      return "pcm_s16le";
  }
  return "";
}

#else

struct LSNKFFmpeg::Encoder {};

void LSNKFFmpeg::Start(std::unique_ptr<LByteStream>, const LFFmpegSinkFormat&, const LFileTagDataAudio*) { SetError(); }

LSNKFFmpeg::~LSNKFFmpeg() = default;

void LSNKFFmpeg::Complete() { completed_ = true; }

void LSNKFFmpeg::Write(const float*, long long) {}

const char* LSNKFFmpeg::MissingEncoder(LFFmpegSinkCodec) { return kLFFmpegCodecName; }

#endif
