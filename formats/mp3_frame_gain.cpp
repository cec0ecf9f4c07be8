#include "formats/mp3_frame_gain.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

namespace {

constexpr long long kBlockBytes = 1 << 16;
constexpr int kBitRates[2][16] = {{0, 32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 0},
                                  {0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160, 0}};
constexpr int kSampleRates[3] = {44100, 48000, 32000};

struct Header {
  bool mpeg1;
  bool mono;
  bool crc;
  long long size;      // the whole frame in bytes
  std::uint32_t kind;  // version, layer and rate bits, the same in every frame of a stream
  int sideBytes;
};

bool ParseHeader(const unsigned char* h, Header* out) {
  if (h[0] != 0xFF || (h[1] & 0xE0) != 0xE0) return false;
  const int version = (h[1] >> 3) & 3;  // 3 MPEG-1, 2 MPEG-2, 0 MPEG-2.5
  const int layer = (h[1] >> 1) & 3;    // 1 Layer III
  const int bitIndex = h[2] >> 4, rateIndex = (h[2] >> 2) & 3;
  if (version == 1 || layer != 1 || bitIndex == 0 || bitIndex == 15 || rateIndex == 3) return false;
  out->mpeg1 = version == 3;
  out->mono = (h[3] >> 6) == 3;
  out->crc = (h[1] & 1) == 0;
  const int rate = kSampleRates[rateIndex] >> (version == 3 ? 0 : version == 2 ? 1 : 2);
  const int kbits = kBitRates[out->mpeg1 ? 0 : 1][bitIndex];
  out->size = (out->mpeg1 ? 144000LL : 72000LL) * kbits / rate + ((h[2] >> 1) & 1);
  out->kind = static_cast<std::uint32_t>(h[1]) << 8 | (h[2] & 0x0C);
  out->sideBytes = out->mpeg1 ? (out->mono ? 17 : 32) : (out->mono ? 9 : 17);
  return out->size > 4 + (out->crc ? 2 : 0) + out->sideBytes;
}

unsigned GetBits(const unsigned char* p, int at, int count) {
  unsigned value = 0;
  for (int i = 0; i < count; ++i, ++at) value = value << 1 | ((p[at >> 3] >> (7 - (at & 7))) & 1);
  return value;
}

void SetBits(unsigned char* p, int at, int count, unsigned value) {
  for (int i = count - 1; i >= 0; --i, ++at) {
    const unsigned char mask = static_cast<unsigned char>(0x80 >> (at & 7));
    p[at >> 3] = static_cast<unsigned char>(((value >> i) & 1) ? p[at >> 3] | mask : p[at >> 3] & ~mask);
  }
}

// The CRC-16 (polynomial 0x8005, start 0xFFFF) that protected frames carry.
std::uint16_t Crc16(std::uint16_t crc, const unsigned char* p, int bytes) {
  for (int i = 0; i < bytes; ++i) {
    crc ^= static_cast<std::uint16_t>(p[i] << 8);
    for (int b = 0; b < 8; ++b) crc = static_cast<std::uint16_t>(crc & 0x8000 ? (crc << 1) ^ 0x8005 : crc << 1);
  }
  return crc;
}

bool IsInfoFrame(const unsigned char* frame, const Header& h) {
  const unsigned char* tag = frame + 4 + (h.crc ? 2 : 0) + h.sideBytes;
  return h.size >= 4 + (h.crc ? 2 : 0) + h.sideBytes + 4 &&
         (std::memcmp(tag, "Xing", 4) == 0 || std::memcmp(tag, "Info", 4) == 0);
}

// Moves every granule's global_gain of one frame by steps.
void FrameGainMove(unsigned char* frame, const Header& h, int steps, long long* clipped) {
  unsigned char* side = frame + 4 + (h.crc ? 2 : 0);
  const int channels = h.mono ? 1 : 2;
  const int granules = h.mpeg1 ? 2 : 1;
  // Bits before the first granule: main_data_begin, private bits, and for MPEG-1 the scfsi.
  const int base = h.mpeg1 ? 9 + (h.mono ? 5 : 3) + 4 * channels : 8 + (h.mono ? 1 : 2);
  const int granuleBits = h.mpeg1 ? 59 : 63;
  constexpr int kGainAt = 21;  // after part2_3_length (12) and big_values (9)
  for (int g = 0; g < granules; ++g) {
    for (int c = 0; c < channels; ++c) {
      const int at = base + (g * channels + c) * granuleBits + kGainAt;
      const int moved = static_cast<int>(GetBits(side, at, 8)) + steps;
      if (moved < 0 || moved > 255) ++*clipped;
      SetBits(side, at, 8, static_cast<unsigned>(std::clamp(moved, 0, 255)));
    }
  }
  if (h.crc) {
    std::uint16_t crc = Crc16(0xFFFF, frame + 2, 2);
    crc = Crc16(crc, side, h.sideBytes);
    frame[4] = static_cast<unsigned char>(crc >> 8);
    frame[5] = static_cast<unsigned char>(crc & 0xFF);
  }
}

// A window on the input: bytes [pos, have) of buf are read and not yet written.
class Window {
public:
  Window(LByteStream& in, LByteStream& out) : in_(in), out_(out), buf_(2 * kBlockBytes) {}

  // At least n bytes from pos, unless the input ends first; false on a read error.
  bool Ensure(long long n) {
    if (have_ - pos_ >= n || ended_) return true;
    std::memmove(buf_.data(), buf_.data() + pos_, static_cast<std::size_t>(have_ - pos_));
    have_ -= pos_;
    pos_ = 0;
    while (have_ < n && !ended_) {
      const long long got = in_.Read(buf_.data() + have_, static_cast<long long>(buf_.size()) - have_);
      if (got < 0) return false;
      if (got == 0) ended_ = true;
      have_ += got;
    }
    return true;
  }
  long long Available() const { return have_ - pos_; }
  unsigned char* At() { return buf_.data() + pos_; }
  bool Pass(long long n) {
    if (!out_.WriteAll(At(), n)) return false;
    pos_ += n;
    done_ += n;
    return true;
  }
  long long Done() const { return done_; }

private:
  LByteStream& in_;
  LByteStream& out_;
  std::vector<unsigned char> buf_;
  long long pos_ = 0, have_ = 0, done_ = 0;
  bool ended_ = false;
};

}  // namespace

int LMP3GainSteps(double db) { return std::isfinite(db) ? static_cast<int>(std::lround(db / kLMP3GainStepDb)) : 0; }

LMP3GainStatus LMP3GainRewrite(LProcessInterface& process, LByteStream& in, LByteStream& out, int steps,
                               LMP3GainReport* report) {
  LMP3GainReport counted;
  const long long total = in.Size();
  if (!in.Seek(0)) return LMP3GainStatus::kReadFailed;
  Window w(in, out);
  // An ID3v2 tag at the start passes as it is.
  if (!w.Ensure(10)) return LMP3GainStatus::kReadFailed;
  if (w.Available() >= 10 && std::memcmp(w.At(), "ID3", 3) == 0) {
    const unsigned char* t = w.At();
    long long tag = 10 + ((t[6] & 0x7F) << 21 | (t[7] & 0x7F) << 14 | (t[8] & 0x7F) << 7 | (t[9] & 0x7F));
    if (t[5] & 0x10) tag += 10;
    while (tag > 0) {
      if (!w.Ensure(std::min(tag, kBlockBytes))) return LMP3GainStatus::kReadFailed;
      const long long n = std::min(tag, w.Available());
      if (n == 0) break;
      if (!w.Pass(n)) return LMP3GainStatus::kWriteFailed;
      tag -= n;
    }
  }
  std::uint32_t kind = 0;
  bool first = true;
  for (long long blocks = 0;; ++blocks) {
    if (!w.Ensure(4)) return LMP3GainStatus::kReadFailed;
    if (w.Available() == 0) break;
    if ((blocks & 1023) == 0) {
      if (process.IsCancelled()) return LMP3GainStatus::kCancelled;
      if (total > 0) process.SetProgress(static_cast<double>(w.Done()) / static_cast<double>(total));
    }
    Header h{};
    bool frame = w.Available() >= 4 && ParseHeader(w.At(), &h) && (first || h.kind == kind);
    if (frame) {
      if (!w.Ensure(h.size + 4)) return LMP3GainStatus::kReadFailed;
      frame = w.Available() >= h.size;
      // The first frame must be followed by another (or the end), so a stray sync is not taken for one.
      if (frame && first && w.Available() >= h.size + 4) {
        Header next{};
        frame = ParseHeader(w.At() + h.size, &next) && next.kind == h.kind;
      }
    }
    if (!frame) {
      // The first frame starts the audio: a file that starts otherwise is not taken
      // for MP3, so no other kind of file is ever searched for frames and changed.
      if (first) return LMP3GainStatus::kNotMP3;
      if (!w.Pass(1)) return LMP3GainStatus::kWriteFailed;
      continue;
    }
    if (!(first && IsInfoFrame(w.At(), h))) {
      FrameGainMove(w.At(), h, steps, &counted.clipped);
      ++counted.frames;
    }
    first = false;
    kind = h.kind;
    if (!w.Pass(h.size)) return LMP3GainStatus::kWriteFailed;
  }
  if (report) *report = counted;
  return first ? LMP3GainStatus::kNotMP3 : LMP3GainStatus::kOK;
}

LStringLong LMP3GainMessage(LMP3GainStatus status, const char* path) {
  const LStringLong file = path ? path : "";
  switch (status) {
    case LMP3GainStatus::kOK:
      return {};
    case LMP3GainStatus::kNotMP3:
      return "\"" + file + "\" enthält keine MP3-Frames.";
    case LMP3GainStatus::kReadFailed:
      return "\"" + file + "\" kann nicht gelesen werden.";
    case LMP3GainStatus::kWriteFailed:
      return "Die neue Fassung von \"" + file + "\" kann nicht geschrieben werden; die Datei bleibt, wie sie war.";
    case LMP3GainStatus::kCancelled:
      return "Abgebrochen. \"" + file + "\" bleibt, wie es war.";
  }
  return {};
}
