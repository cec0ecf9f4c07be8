#include "formats/empty_stream.h"

#include <cstdint>
#include <cstring>
#include <vector>

namespace {

// A source of no frames.
class LSRCEmpty final : public LSoundSourceBase {
public:
  LSRCEmpty(unsigned rate, int channels) : LSoundSourceBase(rate, static_cast<std::uint8_t>(channels)) {}
  void Read(float* buffer, long long frames) override {
    if (frames <= 0) return;
    std::memset(buffer, 0, static_cast<std::size_t>(frames) * GetChannels() * sizeof(float));
    position_ += frames;
  }
  long long GetPositionSample() const override { return position_; }
  long long GetEndSample() const override { return 0; }
  void Seek(long long frame) override { position_ = frame; }

private:
  long long position_ = 0;
};

std::uint32_t LE32(const unsigned char* p) { return p[0] | p[1] << 8 | p[2] << 16 | static_cast<std::uint32_t>(p[3]) << 24; }
std::uint32_t BE32(const unsigned char* p) { return static_cast<std::uint32_t>(p[0]) << 24 | p[1] << 16 | p[2] << 8 | p[3]; }

constexpr std::size_t kOggPageHeader = 27;
constexpr std::uint32_t kOpusRate = 48000;

// Every page parses, the first packet names Vorbis or Opus, and no page carries a granule position of sound.
bool EmptyOgg(const std::vector<unsigned char>& d, unsigned* rate, int* channels, LSoundFileInfo* info) {
  std::size_t at = 0;
  bool first = true;
  while (at < d.size()) {
    if (d.size() - at < kOggPageHeader || std::memcmp(&d[at], "OggS", 4) != 0 || d[at + 4] != 0) return false;
    const unsigned char* granule = &d[at + 6];
    for (int i = 0; i < 8; ++i) {
      if (granule[i] != 0) return false;
    }
    const std::size_t segments = d[at + 26];
    if (d.size() - at - kOggPageHeader < segments) return false;
    std::size_t body = 0;
    for (std::size_t i = 0; i < segments; ++i) body += d[at + kOggPageHeader + i];
    const std::size_t start = at + kOggPageHeader + segments;
    if (d.size() - start < body) return false;
    if (first) {
      const unsigned char* p = &d[start];
      if (body >= 16 && std::memcmp(p, "\x01vorbis", 7) == 0) {
        *channels = p[11];
        *rate = LE32(p + 12);
        info->codecName = "vorbis";
      } else if (body >= 19 && std::memcmp(p, "OpusHead", 8) == 0) {
        *channels = p[9];
        *rate = kOpusRate;
        info->codecName = "opus";
      } else {
        return false;
      }
      info->formatName = "ogg";
      first = false;
    }
    at = start + body;
  }
  return !first;
}

constexpr int kMp3Rates[3] = {44100, 48000, 32000};
constexpr int kMp3Kbits[2][16] = {{0, 32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 0},
                                  {0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160, 0}};
constexpr std::size_t kId3Header = 10;
constexpr std::size_t kXingToLameDelay = 141;
constexpr long long kMp3FrameSamples[2] = {1152, 576};

// An Info (or Xing) frame whose count of frames, less the LAME tag's delay and padding, leaves nothing.
bool EmptyMp3(const std::vector<unsigned char>& d, unsigned* rate, int* channels, LSoundFileInfo* info) {
  std::size_t at = 0;
  if (d.size() >= kId3Header && std::memcmp(d.data(), "ID3", 3) == 0) {
    at = kId3Header + ((d[6] & 0x7F) << 21 | (d[7] & 0x7F) << 14 | (d[8] & 0x7F) << 7 | (d[9] & 0x7F));
    if (d[5] & 0x10) at += kId3Header;  // footer
  }
  if (d.size() < at + 4 || d[at] != 0xFF || (d[at + 1] & 0xE6) != 0xE2) return false;  // sync, layer III
  const int version = (d[at + 1] >> 3) & 3;  // 3 MPEG-1, 2 MPEG-2, 0 MPEG-2.5
  const int rateIndex = (d[at + 2] >> 2) & 3;
  if (version == 1 || rateIndex == 3 || kMp3Kbits[version == 3 ? 0 : 1][d[at + 2] >> 4] == 0) return false;
  const bool mono = (d[at + 3] >> 6) == 3;
  const std::size_t side = version == 3 ? (mono ? 17 : 32) : (mono ? 9 : 17);
  const std::size_t xing = at + 4 + side;
  if (d.size() < xing + kXingToLameDelay + 3) return false;
  if (std::memcmp(&d[xing], "Xing", 4) != 0 && std::memcmp(&d[xing], "Info", 4) != 0) return false;
  const std::uint32_t flags = BE32(&d[xing + 4]);
  if (!(flags & 1) || (flags & 0xF) != 0xF) return false;  // the LAME tag's place is known only with all fields
  const long long frames = BE32(&d[xing + 8]);
  const unsigned char* dp = &d[xing + kXingToLameDelay];
  const long long delay = dp[0] << 4 | dp[1] >> 4, padding = (dp[1] & 0x0F) << 8 | dp[2];
  if (frames * kMp3FrameSamples[version == 3 ? 0 : 1] - delay - padding > 0) return false;
  *rate = static_cast<unsigned>(kMp3Rates[rateIndex] >> (version == 3 ? 0 : version == 2 ? 1 : 2));
  *channels = mono ? 1 : 2;
  info->formatName = info->codecName = "mp3";
  return true;
}

}  // namespace

LSoundSource LOpenEmptyStream(LByteStream& stream, LSoundFileInfo* info) {
  const long long size = stream.Size();
  if (size <= 0 || size > kLEmptyStreamMaxBytes || !stream.Seek(0)) return LSoundSource::Error(kLSourceUnsupported);
  std::vector<unsigned char> d(static_cast<std::size_t>(size));
  if (!stream.ReadAll(d.data(), size)) return LSoundSource::Error(kLSourceUnsupported);
  unsigned rate = 0;
  int channels = 0;
  LSoundFileInfo found;
  if (!EmptyOgg(d, &rate, &channels, &found) && !EmptyMp3(d, &rate, &channels, &found)) {
    return LSoundSource::Error(kLSourceUnsupported);
  }
  if (rate == 0 || channels < 1 || channels > 255) return LSoundSource::Error(kLSourceDamaged);
  found.formatLongName = found.formatName;
  found.codecLongName = found.codecName;
  if (info) *info = found;
  return LSoundSource(new LSRCEmpty(rate, channels));
}
