#include "formats/ffmpeg_source.h"

#include <algorithm>
#include <cstring>
#include <mutex>
#include <string>

#include "base/file_stream.h"
#include "base/platform_file.h"
#include "formats/read_in_steps.h"

#ifdef SONVALE_HAVE_FFMPEG

#include "base/array.h"
#include "engine/sample_format.h"
#include "formats/ffmpeg_api.h"
#include "formats/ffmpeg_io.h"
#include "formats/ffmpeg_tag_keys.h"

extern "C" {
#include <libavutil/intreadwrite.h>
}

namespace {

// Forward distances up to this many seconds are decoded through rather than sought.
constexpr long long kForwardDecodeSeconds = 2;
// Audio decoded ahead of a seek target, so that the decoder's state has settled
// (the MP3 bit reservoir, overlapping transforms, the pre-roll Opus asks for).
constexpr long long kPrerollDivisor = 2;  // half a second
constexpr long long kPrerollMinFrames = 4096;
// Attempts with a longer pre-roll each before decoding from the start.
constexpr int kSeekAttempts = 3;
constexpr int kPrerollGrowth = 8;
// Frames looked at after a seek for one whose place is certain.
constexpr int kAnchorFrames = 8;
constexpr int kMaxFailures = 1000;
constexpr int kMaxChannels = 255;
constexpr int kMaxSampleRate = 1536000;

// A damaged header can make a demuxer ask for gigabytes (a tag "of 1.6 GB" in a
// file of 125 bytes); nothing an audio decoder keeps needs a block this large.
constexpr std::size_t kMaxFFmpegAllocation = 128u << 20;

// FFmpeg's complaints about damaged files would otherwise go to the terminal.
void QuietLogs() {
  static std::once_flag once;
  std::call_once(once, [] {
    Av().av_log_set_level(AV_LOG_FATAL);
    Av().av_max_alloc(kMaxFFmpegAllocation);
  });
}

std::int64_t PacketTime(const AVPacket* p) { return p->pts != AV_NOPTS_VALUE ? p->pts : p->dts; }

// Only a time stamp that came with the packet is exact; guessed ones are not used.
std::int64_t FrameTime(const AVFrame* f) { return f->pts; }

// The encoder delay and padding a packet asks the decoder to drop; false when it asks nothing.
bool PacketSkip(const AVPacket* p, long long* start, long long* end) {
  size_t size = 0;
  const std::uint8_t* data = Av().av_packet_get_side_data(p, AV_PKT_DATA_SKIP_SAMPLES, &size);
  *start = *end = 0;
  if (!data || size < 10) return false;
  *start = AV_RL32(data);
  *end = AV_RL32(data + 4);
  return true;
}

// Tags already there (from the container) win over the stream's.
void AddTags(LFileTagDataAudio& tags, const AVDictionary* dict) {
  const AVDictionaryEntry* e = nullptr;
  while ((e = Av().av_dict_get(dict, "", e, AV_DICT_IGNORE_SUFFIX))) {
    const std::string key = LTagKeyFromFFmpeg(e->key);
    if (!tags.Has(key.c_str())) tags.Set(key.c_str(), e->value);
  }
}

}  // namespace

struct LFFmpegSource::Decoder {
  ~Decoder() {
    Close();
    Av().av_channel_layout_uninit(&layout_);
  }

  [[nodiscard]] unsigned char Open(std::unique_ptr<LByteStream> byteStream, const char* hint, LSoundFileInfo* info);
  // The container and decoder only.
  [[nodiscard]] unsigned char Describe(std::unique_ptr<LByteStream> byteStream, const char* hint,
                                       LSoundFileInfo* info) {
    QuietLogs();
    stream_ = std::move(byteStream);
    hint_ = hint ? hint : "";
    if (!stream_) return kLSourceCannotOpen;
    return OpenInput(info);
  }
  long long Fetch(float* out, long long pos, long long n);

  int Rate() const { return rate_; }
  int Channels() const { return channels_; }
  // The exact length; a file still being counted by reading is counted to its end first.
  long long FrameCount();
  bool LengthKnown() const { return lengthKnown_; }
  // While the length is being learnt, the frames decoded so far.
  long long FramesKnown() const { return lengthKnown_ ? frameCount_ : at_ + static_cast<long long>(queueFrames_); }
  long long FramesEstimated() const { return lengthKnown_ ? frameCount_ : std::max(estimate_, FramesKnown()); }
  // Decodes a buffer's worth ahead of a reader that follows the stream.
  void ReadAhead();

private:
  struct Entry {
    std::int64_t pts;
    long long index;
  };
  // The time stamp that the first packet at a file offset had when read from the start.
  struct Landmark {
    std::int64_t pos;
    std::int64_t pts;
  };

  // Opens the container and the decoder of the chosen stream (any stream when index_ < 0).
  [[nodiscard]] unsigned char OpenInput(LSoundFileInfo* info);
  void Close();
  [[nodiscard]] unsigned char OpenDecoder();
  // Counts the frames the decoder gives (uncompressed sound: takes the container's count).
  void Count();
  // True when the container's count is taken as it is.
  bool CountFromContainer() const;
  // The end was reached while reading from the start: the frames read are the length.
  void LengthLearnt();
  // Readies the decoder so that the next frame it gives is frame 0.
  void Rewind();
  void ResetDecoder();
  // The next decoded frame into frame_; false at the end.
  bool NextFrame();
  // Converts frame_ to float at the end of the queue, with the scaling of our sample formats.
  bool Append();
  // Interleaved float from samples of the format (planes or one packed run), frames × channels_ of them.
  bool ToFloat(std::uint8_t* const* data, AVSampleFormat format, size_t frames, float* out) const;
  // Drops n frames; false when the decoder ends first.
  bool Skip(long long n);
  void SeekTo(long long target);
  // Keeps landmarks while counting; after a seek, learns the time stamp correction.
  void NotePacket();
  // The frame index of frame_ from its time stamp, or -1 when it cannot be told.
  long long IndexOf(const AVFrame* f) const;

  std::unique_ptr<LByteStream> stream_;
  std::unique_ptr<LFFmpegIO> io_;
  std::string hint_;
  AVFormatContext* fmt_ = nullptr;
  AVCodecContext* dec_ = nullptr;
  SwrContext* swr_ = nullptr;
  AVPacket* packet_ = nullptr;
  AVFrame* frame_ = nullptr;
  int index_ = -1;
  AVRational timeBase_{1, 1};
  int rate_ = 0;
  int channels_ = 0;
  AVChannelLayout layout_{};
  // The input shape the converter was made for.
  int swrFormat_ = -1;
  int swrRate_ = 0;
  AVChannelLayout swrLayout_{};
  LArray<std::uint8_t> reshaped_;

  long long frameCount_ = 0;
  // False while a file read from its start learns its length as it goes; a
  // reader that jumps ahead has it counted first.
  bool lengthKnown_ = true;
  long long estimate_ = 0;
  // Decoded frames waiting, from queueHead_ on; the first stands for frame at_.
  LArray<float> queue_;
  size_t queueHead_ = 0;
  size_t queueFrames_ = 0;
  long long at_ = 0;
  bool inputDone_ = false;
  bool drained_ = false;
  bool broken_ = false;
  // Decoder failures in a row; a decoder that keeps failing is taken to have ended.
  int failures_ = 0;

  // The first packet as the count saw it: where it is, its time and what it skips.
  bool sawFirstPacket_ = false;
  std::int64_t firstPacketTime_ = AV_NOPTS_VALUE;
  std::int64_t firstPacketPos_ = -1;
  long long firstSkipStart_ = 0;
  long long firstSkipEnd_ = 0;
  bool firstHadSkip_ = false;
  std::int64_t basePts_ = AV_NOPTS_VALUE;
  // Time stamps coarser than a frame (Matroska, ASF) are looked up per packet.
  bool coarse_ = false;
  LArray<Entry> table_;
  // Some demuxers stamp the packets after a seek wrongly, by a constant (Ogg
  // Vorbis); the first packet after a seek is found among the landmarks by its
  // file offset and the difference is taken off every time stamp that follows.
  LArray<Landmark> landmarks_;
  std::int64_t lastPacketPos_ = -1;
  bool counting_ = false;
  bool awaitLandmark_ = false;
  std::int64_t ptsCorrection_ = 0;
};

void LFFmpegSource::Decoder::Close() {
  Av().swr_free(&swr_);
  Av().avcodec_free_context(&dec_);
  Av().avformat_close_input(&fmt_);
  io_.reset();
  Av().av_packet_free(&packet_);
  Av().av_frame_free(&frame_);
  Av().av_channel_layout_uninit(&swrLayout_);
  swrFormat_ = -1;
}

unsigned char LFFmpegSource::Decoder::OpenInput(LSoundFileInfo* info) {
  if (!packet_) packet_ = Av().av_packet_alloc();
  if (!frame_) frame_ = Av().av_frame_alloc();
  if (!stream_->Seek(0)) return kLSourceCannotOpen;
  io_ = std::make_unique<LFFmpegIO>(stream_.get(), false);
  fmt_ = Av().avformat_alloc_context();
  if (!packet_ || !frame_ || !io_->Context() || !fmt_) return kLSourceCannotOpen;
  fmt_->pb = io_->Context();
  fmt_->flags |= AVFMT_FLAG_CUSTOM_IO;
  // Only the bytes we hand over are read: playlists and references to other files or the network are not followed.
  AVDictionary* options = nullptr;
  Av().av_dict_set(&options, "protocol_whitelist", "none", 0);
  int r = Av().avformat_open_input(&fmt_, hint_.c_str(), nullptr, &options);
  Av().av_dict_free(&options);
  if (r < 0) return kLSourceUnsupported;  // avformat_open_input has freed the context
  if (Av().avformat_find_stream_info(fmt_, nullptr) < 0 && fmt_->nb_streams == 0) return kLSourceUnsupported;

  if (index_ < 0) {
    index_ = Av().av_find_best_stream(fmt_, AVMEDIA_TYPE_AUDIO, -1, -1, nullptr, 0);
    if (index_ < 0) return kLSourceUnsupported;
  }
  if (index_ >= static_cast<int>(fmt_->nb_streams)) return kLSourceDamaged;
  AVStream* st = fmt_->streams[index_];
  const AVCodecParameters* par = st->codecpar;
  for (unsigned i = 0; i < fmt_->nb_streams; ++i) {
    if (static_cast<int>(i) != index_) fmt_->streams[i]->discard = AVDISCARD_ALL;
  }
  if (info) {
    info->formatName = fmt_->iformat->name ? fmt_->iformat->name : "";
    info->formatLongName = fmt_->iformat->long_name ? fmt_->iformat->long_name : info->formatName;
    info->codecName = Av().avcodec_get_name(par->codec_id);
    const AVCodecDescriptor* descriptor = Av().avcodec_descriptor_get(par->codec_id);
    info->codecLongName = descriptor && descriptor->long_name ? descriptor->long_name : info->codecName;
    info->bitRate = par->bit_rate > 0 ? par->bit_rate : std::max<std::int64_t>(0, fmt_->bit_rate);
    info->bitsPerSample =
        par->bits_per_raw_sample > 0 ? par->bits_per_raw_sample : Av().av_get_exact_bits_per_sample(par->codec_id);
    for (unsigned i = 0; i < fmt_->nb_streams; ++i) {
      const AVStream* s = fmt_->streams[i];
      if (s->codecpar->codec_type == AVMEDIA_TYPE_VIDEO && !(s->disposition & AV_DISPOSITION_ATTACHED_PIC)) {
        info->hasVideo = true;
      }
    }
  }
  if (par->codec_id == AV_CODEC_ID_NONE) return kLSourceUnsupported;
  if (unsigned char code = OpenDecoder(); code != kLSourceOK) return code;
  timeBase_ = st->time_base;
  if (timeBase_.num <= 0 || timeBase_.den <= 0) timeBase_ = AVRational{1, std::max(1, dec_->sample_rate)};
  const int rate = dec_->sample_rate > 0 ? dec_->sample_rate : par->sample_rate;
  const int channels = dec_->ch_layout.nb_channels > 0 ? dec_->ch_layout.nb_channels : par->ch_layout.nb_channels;
  if (rate <= 0 || rate > kMaxSampleRate || channels <= 0 || channels > kMaxChannels) return kLSourceDamaged;
  if (rate_ == 0) {
    rate_ = rate;
    channels_ = channels;
    Av().av_channel_layout_uninit(&layout_);
    if (dec_->ch_layout.nb_channels == channels && dec_->ch_layout.order != AV_CHANNEL_ORDER_UNSPEC) {
      Av().av_channel_layout_copy(&layout_, &dec_->ch_layout);
    } else {
      Av().av_channel_layout_default(&layout_, channels);
    }
  }
  coarse_ = static_cast<std::int64_t>(timeBase_.num) * rate_ > timeBase_.den;
  if (info) {
    AddTags(info->tags, fmt_->metadata);
    AddTags(info->tags, st->metadata);
    for (unsigned i = 0; i < fmt_->nb_chapters; ++i) {
      const AVChapter* c = fmt_->chapters[i];
      LSoundFileChapter marker;
      marker.start = Av().av_rescale_q(c->start, c->time_base, AVRational{1, rate_});
      marker.end = Av().av_rescale_q(c->end, c->time_base, AVRational{1, rate_});
      if (const AVDictionaryEntry* title = Av().av_dict_get(c->metadata, "title", nullptr, 0))
        marker.title = title->value;
      info->chapters.push_back(std::move(marker));
    }
  }
  return kLSourceOK;
}

unsigned char LFFmpegSource::Decoder::OpenDecoder() {
  const AVStream* st = fmt_->streams[index_];
  const AVCodec* codec = Av().avcodec_find_decoder(st->codecpar->codec_id);
  if (!codec) return kLSourceCodecMissing;
  dec_ = Av().avcodec_alloc_context3(codec);
  if (!dec_ || Av().avcodec_parameters_to_context(dec_, st->codecpar) < 0) return kLSourceDamaged;
  dec_->pkt_timebase = st->time_base;
  dec_->thread_count = 1;
  if (Av().avcodec_open2(dec_, codec, nullptr) < 0) return kLSourceDamaged;
  return kLSourceOK;
}

unsigned char LFFmpegSource::Decoder::Open(std::unique_ptr<LByteStream> byteStream, const char* hint,
                                           LSoundFileInfo* info) {
  QuietLogs();
  stream_ = std::move(byteStream);
  hint_ = hint ? hint : "";
  if (!stream_) return kLSourceCannotOpen;
  unsigned char code = OpenInput(info);
  if (code != kLSourceOK) return code;
  // Copying into the cache reads from the start to the end, so MP3 and FLAC are
  // counted as they are copied instead of being decoded twice. Ogg (a last block
  // cut by its granule position) and coarse time stamps need the count first.
  if (!CountFromContainer() && !coarse_ && std::strcmp(fmt_->iformat->name, "ogg") != 0) {
    const AVStream* st = fmt_->streams[index_];
    if (st->duration > 0) {
      estimate_ = Av().av_rescale_q(st->duration, timeBase_, AVRational{1, rate_});
    } else if (fmt_->duration > 0) {
      estimate_ = Av().av_rescale_q(fmt_->duration, AV_TIME_BASE_Q, AVRational{1, rate_});
    }
    lengthKnown_ = false;
    counting_ = true;
    at_ = 0;
    if (!NextFrame()) {
      if (broken_ || sawFirstPacket_ || !inputDone_) return kLSourceDamaged;
      LengthLearnt();
      return kLSourceOK;
    }
    if (!Append()) return kLSourceDamaged;
    basePts_ = FrameTime(frame_);
    return kLSourceOK;
  }
  Count();
  Rewind();
  // The first frame fixes the time stamp of frame 0. A file without one is damaged,
  // unless its container ended cleanly before any packet: it holds no sound (as
  // an empty file we wrote does).
  if (broken_) return kLSourceDamaged;
  if (!NextFrame()) {
    if (sawFirstPacket_ || !inputDone_ || frameCount_ != 0) return kLSourceDamaged;
    at_ = 0;
    return kLSourceOK;
  }
  if (!Append()) return kLSourceDamaged;
  basePts_ = FrameTime(frame_);
  at_ = 0;
  return kLSourceOK;
}

bool LFFmpegSource::Decoder::CountFromContainer() const {
  // Uncompressed samples are as many as the container says; a file that holds
  // fewer reads the rest as silence.
  const AVStream* st = fmt_->streams[index_];
  const AVCodecID id = st->codecpar->codec_id;
  return id >= AV_CODEC_ID_FIRST_AUDIO && id < AV_CODEC_ID_ADPCM_IMA_QT && st->duration > 0 && !coarse_;
}

void LFFmpegSource::Decoder::LengthLearnt() {
  frameCount_ = at_ + static_cast<long long>(queueFrames_);
  lengthKnown_ = true;
  counting_ = false;
  std::sort(landmarks_.begin(), landmarks_.end(), [](const Landmark& a, const Landmark& b) { return a.pos < b.pos; });
}

long long LFFmpegSource::Decoder::FrameCount() {
  if (!lengthKnown_) {
    // Asked before the end was reached: counted from the start, as at opening.
    Rewind();
    Count();
    lengthKnown_ = true;
    Rewind();
  }
  return frameCount_;
}

void LFFmpegSource::Decoder::ReadAhead() {
  while (!lengthKnown_ && queueFrames_ < static_cast<size_t>(kLFileBufferFrames)) {
    if (!NextFrame()) {
      LengthLearnt();
      return;
    }
    Append();
  }
}

void LFFmpegSource::Decoder::Count() {
  const AVStream* st = fmt_->streams[index_];
  const AVCodecID id = st->codecpar->codec_id;
  if (CountFromContainer()) {
    frameCount_ = Av().av_rescale_q(st->duration, timeBase_, AVRational{1, rate_});
    return;
  }
  // Otherwise only the decoder knows for certain how many frames come out:
  // containers disagree on whether packet durations include the encoder's delay and padding.
  frameCount_ = 0;
  table_.clear();
  landmarks_.clear();
  counting_ = true;
  while (!broken_ && NextFrame()) {
    const std::int64_t pts = FrameTime(frame_);
    if (coarse_ && pts != AV_NOPTS_VALUE) table_.push_back({pts, frameCount_});
    if (!Append()) continue;
    frameCount_ += static_cast<long long>(queueFrames_);
    queueHead_ = queueFrames_ = 0;
  }
  counting_ = false;
  // Vorbis in Ogg ends where the last page's granule position says, which may
  // be inside the last decoded block.
  if (id == AV_CODEC_ID_VORBIS && st->duration > 0 && std::strcmp(fmt_->iformat->name, "ogg") == 0) {
    frameCount_ = Av().av_rescale_q(st->duration, timeBase_, AVRational{1, rate_});
  }
  std::sort(table_.begin(), table_.end(), [](const Entry& a, const Entry& b) { return a.pts < b.pts; });
  std::sort(landmarks_.begin(), landmarks_.end(), [](const Landmark& a, const Landmark& b) { return a.pos < b.pos; });
}

void LFFmpegSource::Decoder::ResetDecoder() {
  // A new decoder rather than a flushed one: some keep state across a flush, and
  // a reading from the start must give the same frames every time.
  Av().avcodec_free_context(&dec_);
  Av().swr_free(&swr_);
  swrFormat_ = -1;
  queueHead_ = queueFrames_ = 0;
  inputDone_ = false;
  drained_ = false;
  failures_ = 0;
  if (!broken_ && OpenDecoder() != kLSourceOK) broken_ = true;
}

void LFFmpegSource::Decoder::Rewind() {
  ResetDecoder();
  at_ = 0;
  if (broken_) return;
  // Back to the first packet, if the demuxer finds it again; the skip it carried is put back.
  if (firstPacketTime_ != AV_NOPTS_VALUE &&
      Av().av_seek_frame(fmt_, index_, firstPacketTime_, AVSEEK_FLAG_BACKWARD) >= 0) {
    while (Av().av_read_frame(fmt_, packet_) >= 0) {
      if (packet_->stream_index != index_) {
        Av().av_packet_unref(packet_);
        continue;
      }
      const bool same = PacketTime(packet_) == firstPacketTime_ && packet_->pos == firstPacketPos_;
      if (same) {
        // New side data of a kind replaces what the packet carries of it; even
        // a skip of nothing would override a decoder's own, so none is given then.
        if (!firstHadSkip_) {
          Av().av_packet_shrink_side_data(packet_, AV_PKT_DATA_SKIP_SAMPLES, 0);
        } else if (std::uint8_t* skip = Av().av_packet_new_side_data(packet_, AV_PKT_DATA_SKIP_SAMPLES, 10)) {
          std::memset(skip, 0, 10);
          AV_WL32(skip, static_cast<std::uint32_t>(firstSkipStart_));
          AV_WL32(skip + 4, static_cast<std::uint32_t>(firstSkipEnd_));
        }
        Av().avcodec_send_packet(dec_, packet_);
        Av().av_packet_unref(packet_);
        return;
      }
      Av().av_packet_unref(packet_);
      break;
    }
  }
  // The demuxer cannot go back by itself: open the file again.
  const int index = index_;
  Close();
  index_ = index;
  if (OpenInput(nullptr) != kLSourceOK) broken_ = true;
}

bool LFFmpegSource::Decoder::NextFrame() {
  if (broken_) return false;
  for (;;) {
    if (drained_) return false;
    int r = Av().avcodec_receive_frame(dec_, frame_);
    if (r == 0) {
      failures_ = 0;
      return true;
    }
    if (r == AVERROR_EOF || (r != AVERROR(EAGAIN) && ++failures_ > kMaxFailures)) {
      drained_ = true;
      return false;
    }
    if (r != AVERROR(EAGAIN)) continue;  // a frame that did not decode is left out
    if (inputDone_) {
      drained_ = true;
      return false;
    }
    if (Av().av_read_frame(fmt_, packet_) < 0) {
      inputDone_ = true;
      Av().avcodec_send_packet(dec_, nullptr);
      continue;
    }
    if (packet_->stream_index == index_) {
      NotePacket();
      if (!sawFirstPacket_) {
        sawFirstPacket_ = true;
        firstPacketTime_ = PacketTime(packet_);
        firstPacketPos_ = packet_->pos;
        firstHadSkip_ = PacketSkip(packet_, &firstSkipStart_, &firstSkipEnd_);
      }
      // A damaged packet is dropped; decoding goes on with the next.
      (void)Av().avcodec_send_packet(dec_, packet_);
    }
    Av().av_packet_unref(packet_);
  }
}

void LFFmpegSource::Decoder::NotePacket() {
  const std::int64_t pos = packet_->pos;
  const std::int64_t pts = PacketTime(packet_);
  if (counting_) {
    if (pos >= 0 && pos != lastPacketPos_ && pts != AV_NOPTS_VALUE) landmarks_.push_back({pos, pts});
    lastPacketPos_ = pos;
    return;
  }
  if (!awaitLandmark_) return;
  awaitLandmark_ = false;
  ptsCorrection_ = 0;
  auto it = std::lower_bound(landmarks_.begin(), landmarks_.end(), pos,
                             [](const Landmark& l, std::int64_t p) { return l.pos < p; });
  if (pos >= 0 && pts != AV_NOPTS_VALUE && it != landmarks_.end() && it->pos == pos) ptsCorrection_ = it->pts - pts;
}

bool LFFmpegSource::Decoder::Append() {
  const int inRate = frame_->sample_rate > 0 ? frame_->sample_rate : rate_;
  const auto format = static_cast<AVSampleFormat>(frame_->format);
  const bool sameShape = inRate == rate_ && frame_->ch_layout.nb_channels == channels_;
  const size_t ch = static_cast<size_t>(channels_);
  // Frames already taken make room at the front.
  if (queueHead_ > 0) {
    std::memmove(queue_.data(), queue_.data() + queueHead_ * ch, queueFrames_ * ch * sizeof(float));
    queueHead_ = 0;
  }
  if (sameShape && frame_->nb_samples >= 0) {
    const size_t n = static_cast<size_t>(frame_->nb_samples);
    if (queue_.size() < (queueFrames_ + n) * ch) queue_.resize((queueFrames_ + n) * ch);
    if (!ToFloat(frame_->extended_data, format, n, queue_.data() + queueFrames_ * ch)) return false;
    queueFrames_ += n;
    return true;
  }
  // A stream that changes its rate or channels midway is brought to the first's
  // by the resampler, in its own sample format, so the scaling stays ours.
  const AVSampleFormat packed = Av().av_get_packed_sample_fmt(format);
  if (!swr_ || frame_->format != swrFormat_ || inRate != swrRate_ ||
      Av().av_channel_layout_compare(&frame_->ch_layout, &swrLayout_) != 0) {
    Av().swr_free(&swr_);
    Av().av_channel_layout_uninit(&swrLayout_);
    Av().av_channel_layout_copy(&swrLayout_, &frame_->ch_layout);
    swrFormat_ = frame_->format;
    swrRate_ = inRate;
    AVChannelLayout in{};
    if (frame_->ch_layout.nb_channels <= 0) {
      Av().av_channel_layout_copy(&in, &layout_);
    } else if (frame_->ch_layout.order == AV_CHANNEL_ORDER_UNSPEC) {
      Av().av_channel_layout_default(&in, frame_->ch_layout.nb_channels);
    } else {
      Av().av_channel_layout_copy(&in, &frame_->ch_layout);
    }
    int r = Av().swr_alloc_set_opts2(&swr_, &layout_, packed, rate_, &in, format, inRate, 0, nullptr);
    Av().av_channel_layout_uninit(&in);
    if (r < 0 || Av().swr_init(swr_) < 0) {
      Av().swr_free(&swr_);
      return false;
    }
  }
  const int room = Av().swr_get_out_samples(swr_, frame_->nb_samples);
  if (room < 0) return false;
  const size_t bytes = static_cast<size_t>(room) * ch * static_cast<size_t>(Av().av_get_bytes_per_sample(packed));
  if (reshaped_.size() < bytes) reshaped_.resize(bytes);
  std::uint8_t* out = reshaped_.data();
  const int made =
      Av().swr_convert(swr_, &out, room, const_cast<const std::uint8_t**>(frame_->extended_data), frame_->nb_samples);
  if (made < 0) return false;
  const size_t n = static_cast<size_t>(made);
  if (queue_.size() < (queueFrames_ + n) * ch) queue_.resize((queueFrames_ + n) * ch);
  std::uint8_t* planes[1] = {out};
  if (!ToFloat(planes, packed, n, queue_.data() + queueFrames_ * ch)) return false;
  queueFrames_ += n;
  return true;
}

bool LFFmpegSource::Decoder::ToFloat(std::uint8_t* const* data, AVSampleFormat format, size_t frames,
                                     float* out) const {
  const size_t ch = static_cast<size_t>(channels_);
  const bool planar = Av().av_sample_fmt_is_planar(format) != 0;
  // Packed samples convert as one run; planes one channel at a time into the interleaved order.
  auto run = [&](auto in) {
    if (!planar) {
      for (size_t i = 0; i < frames * ch; ++i) out[i] = in(data[0], i);
      return true;
    }
    for (size_t c = 0; c < ch; ++c) {
      for (size_t i = 0; i < frames; ++i) out[i * ch + c] = in(data[c], i);
    }
    return true;
  };
  switch (Av().av_get_packed_sample_fmt(format)) {
    case AV_SAMPLE_FMT_U8:
      return run([](const std::uint8_t* p, size_t i) { return LSFU8::In(p + i); });
    case AV_SAMPLE_FMT_S16:
      // G.711 decoders give 16-bit linear values; ours read the same codes at the 516096 working scale.
      if (dec_ && (dec_->codec_id == AV_CODEC_ID_PCM_ALAW || dec_->codec_id == AV_CODEC_ID_PCM_MULAW)) {
        return run([](const std::uint8_t* p, size_t i) {
          return static_cast<float>(lsf_detail::Load<std::int16_t>(p + 2 * i) * 16 / 516096.0);
        });
      }
      return run([](const std::uint8_t* p, size_t i) { return LSF16::In(p + 2 * i); });
    case AV_SAMPLE_FMT_S32:
      return run([](const std::uint8_t* p, size_t i) { return LSF32::In(p + 4 * i); });
    case AV_SAMPLE_FMT_S64:
      return run([](const std::uint8_t* p, size_t i) {
        return static_cast<float>(static_cast<double>(lsf_detail::Load<std::int64_t>(p + 8 * i)) /
                                  9223372036854775807.0);
      });
    case AV_SAMPLE_FMT_FLT:
      return run([](const std::uint8_t* p, size_t i) { return LSFF32::In(p + 4 * i); });
    case AV_SAMPLE_FMT_DBL:
      return run([](const std::uint8_t* p, size_t i) { return LSFF64::In(p + 8 * i); });
    default:
      return false;
  }
}

bool LFFmpegSource::Decoder::Skip(long long n) {
  while (n > 0) {
    if (queueFrames_ == 0) {
      if (!NextFrame()) return false;
      Append();
      continue;
    }
    const long long k = std::min<long long>(n, static_cast<long long>(queueFrames_));
    queueHead_ += static_cast<size_t>(k);
    queueFrames_ -= static_cast<size_t>(k);
    at_ += k;
    n -= k;
  }
  return true;
}

long long LFFmpegSource::Decoder::IndexOf(const AVFrame* f) const {
  if (FrameTime(f) == AV_NOPTS_VALUE || basePts_ == AV_NOPTS_VALUE) return -1;
  const std::int64_t pts = FrameTime(f) + ptsCorrection_;
  if (coarse_) {
    // Only the time stamps the count saw are exact; a trimmed frame's is not.
    auto it =
        std::lower_bound(table_.begin(), table_.end(), pts, [](const Entry& e, std::int64_t p) { return e.pts < p; });
    return it != table_.end() && it->pts == pts ? it->index : -1;
  }
  const long long index = Av().av_rescale_q_rnd(pts - basePts_, timeBase_, AVRational{1, rate_},
                                                static_cast<AVRounding>(AV_ROUND_NEAR_INF | AV_ROUND_PASS_MINMAX));
  return std::max(0LL, index);
}

void LFFmpegSource::Decoder::SeekTo(long long target) {
  if (target > at_ && target - at_ <= kForwardDecodeSeconds * rate_) {
    Skip(target - at_);
    return;
  }
  long long preroll = std::max(kPrerollMinFrames, static_cast<long long>(rate_) / kPrerollDivisor);
  for (int attempt = 0; attempt < kSeekAttempts && basePts_ != AV_NOPTS_VALUE && !broken_; ++attempt) {
    const long long want = target - preroll;
    preroll *= kPrerollGrowth;
    if (want <= 0) break;
    const std::int64_t ts = basePts_ + Av().av_rescale_q(want, AVRational{1, rate_}, timeBase_);
    if (Av().avformat_seek_file(fmt_, index_, INT64_MIN, ts, ts, 0) < 0) break;
    ResetDecoder();
    awaitLandmark_ = true;
    ptsCorrection_ = 0;
    // The first frames may have been trimmed by a decoder that starts afresh;
    // the first frame whose place is certain anchors the count.
    long long index = -1;
    for (int tries = 0; tries < kAnchorFrames && index < 0 && NextFrame(); ++tries) index = IndexOf(frame_);
    if (index < 0 || index > target) continue;
    if (!Append()) continue;
    at_ = index;
    Skip(target - at_);
    return;
  }
  Rewind();
  Skip(target);
}

long long LFFmpegSource::Decoder::Fetch(float* out, long long pos, long long n) {
  // A reader that leaves the straight way from the start needs the length to find its place.
  if (!lengthKnown_ && pos != at_) FrameCount();
  if (broken_ || (lengthKnown_ && pos >= frameCount_)) return 0;
  if (lengthKnown_) n = std::min(n, frameCount_ - pos);
  if (pos != at_) {
    // A decoder that ended early is not restarted for the silence after its end.
    if (drained_ && queueFrames_ == 0 && pos > at_) return 0;
    SeekTo(pos);
    if (at_ != pos) return 0;
  }
  const size_t ch = static_cast<size_t>(channels_);
  long long got = 0;
  while (got < n) {
    if (queueFrames_ == 0) {
      if (!NextFrame()) {
        if (!lengthKnown_) LengthLearnt();
        break;
      }
      Append();
      continue;
    }
    const long long k = std::min<long long>(n - got, static_cast<long long>(queueFrames_));
    std::memcpy(out + got * channels_, queue_.data() + queueHead_ * ch, static_cast<size_t>(k) * ch * sizeof(float));
    queueHead_ += static_cast<size_t>(k);
    queueFrames_ -= static_cast<size_t>(k);
    at_ += k;
    got += k;
  }
  return got;
}

LFFmpegSource::LFFmpegSource(std::unique_ptr<Decoder> decoder, unsigned rate, int channels)
    : LSoundSourceBase(rate, static_cast<std::uint8_t>(channels)), decoder_(std::move(decoder)) {}

LFFmpegSource::~LFFmpegSource() = default;

bool LFFmpegSource::IsAvailable() { return LFFmpegApi::Load(); }

bool LFFmpegSource::Describe(std::unique_ptr<LByteStream> stream, const char* name, LSoundFileInfo* info) {
  if (!info || !IsAvailable()) return false;
  Decoder decoder;
  return decoder.Describe(std::move(stream), name, info) == kLSourceOK;
}

LSoundSource LFFmpegSource::Open(std::unique_ptr<LByteStream> stream, const char* name, LSoundFileInfo* info) {
  if (!IsAvailable()) {
    if (info) info->codecName = info->codecLongName = kLFFmpegCodecName;
    return LSoundSource::Error(kLSourceCodecMissing);
  }
  auto decoder = std::make_unique<Decoder>();
  LSoundFileInfo scratch;
  unsigned char code = decoder->Open(std::move(stream), name, info ? info : &scratch);
  if (code != kLSourceOK) return LSoundSource::Error(code);
  const unsigned rate = static_cast<unsigned>(decoder->Rate());
  const int channels = decoder->Channels();
  return LSoundSource(new LFFmpegSource(std::move(decoder), rate, channels));
}

void LFFmpegSource::Read(float* out, long long frames) {
  LReadInSteps(out, frames, GetChannels(), position_,
               [&](float* dst, long long at, long long n) { return decoder_->Fetch(dst, at, n); });
}

long long LFFmpegSource::GetEndSample() const { return decoder_->FrameCount(); }
long long LFFmpegSource::GetEndSampleKnown() const { return decoder_->FramesKnown(); }
long long LFFmpegSource::GetEndSampleEstimate() const { return decoder_->FramesEstimated(); }
bool LFFmpegSource::IsStreaming() const { return !decoder_->LengthKnown(); }
void LFFmpegSource::WaitForStreamingData(int) { decoder_->ReadAhead(); }

#else

struct LFFmpegSource::Decoder {};

LFFmpegSource::LFFmpegSource(std::unique_ptr<Decoder> decoder, unsigned rate, int channels)
    : LSoundSourceBase(rate, static_cast<std::uint8_t>(channels)), decoder_(std::move(decoder)) {}
LFFmpegSource::~LFFmpegSource() = default;
bool LFFmpegSource::IsAvailable() { return false; }
bool LFFmpegSource::Describe(std::unique_ptr<LByteStream>, const char*, LSoundFileInfo*) { return false; }

LSoundSource LFFmpegSource::Open(std::unique_ptr<LByteStream>, const char*, LSoundFileInfo* info) {
  if (info) info->codecName = info->codecLongName = kLFFmpegCodecName;
  return LSoundSource::Error(kLSourceCodecMissing);
}

void LFFmpegSource::Read(float* out, long long frames) {
  std::memset(out, 0, static_cast<size_t>(frames * GetChannels()) * sizeof(float));
  position_ += frames;
}

long long LFFmpegSource::GetEndSample() const { return 0; }
long long LFFmpegSource::GetEndSampleKnown() const { return 0; }
long long LFFmpegSource::GetEndSampleEstimate() const { return 0; }
bool LFFmpegSource::IsStreaming() const { return false; }
void LFFmpegSource::WaitForStreamingData(int) {}

#endif

LSoundSource LFFmpegSource::Open(const char* path, LSoundFileInfo* info) {
  const int fd = path ? LFileOpen(path, kLFileRead, LFileLock::Shared) : -1;
  if (fd < 0) return LSoundSource::Error(kLSourceCannotOpen);
  return Open(std::make_unique<LFileStream>(fd), path, info);
}
