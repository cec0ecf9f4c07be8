#include "formats/aiff_file.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>

#include "base/array.h"
#include "base/file_stream.h"
#include "base/platform_file.h"
#include "engine/sample_format.h"
#include "formats/ieee_extended.h"
#include "formats/raw_data_sink.h"
#include "formats/raw_data_source.h"

namespace {

// A four-character id as the big-endian value read from a file.
constexpr std::uint32_t Id(const char (&id)[5]) {
  return static_cast<std::uint32_t>(static_cast<unsigned char>(id[0])) << 24 |
         static_cast<std::uint32_t>(static_cast<unsigned char>(id[1])) << 16 |
         static_cast<std::uint32_t>(static_cast<unsigned char>(id[2])) << 8 |
         static_cast<std::uint32_t>(static_cast<unsigned char>(id[3]));
}

// Chunk ids and compression types (on disk, never change).
constexpr std::uint32_t kIdForm = Id("FORM");
constexpr std::uint32_t kIdAiff = Id("AIFF");
constexpr std::uint32_t kIdAifc = Id("AIFC");
constexpr std::uint32_t kIdComm = Id("COMM");
constexpr std::uint32_t kIdSsnd = Id("SSND");
constexpr std::uint32_t kIdName = Id("NAME");
constexpr std::uint32_t kIdAuth = Id("AUTH");
constexpr std::uint32_t kIdCopyright = Id("(c) ");
constexpr std::uint32_t kIdAnno = Id("ANNO");
constexpr std::uint32_t kIdMark = Id("MARK");

// Sizes of the fixed parts (on disk, never change).
constexpr int kChunkHeaderBytes = 8;
constexpr int kFormHeaderBytes = 12;
constexpr int kCommBytes = 18;      // channels, frames, bits, rate
constexpr int kCommAifcBytes = 22;  // and the compression type
constexpr int kSsndFixedBytes = 8;  // offset and block size

// Text chunks longer than this are left out rather than read.
constexpr std::uint32_t kMaxTextBytes = 65536;
constexpr int kMaxChannels = 255;
constexpr double kMaxSampleRate = 1536000.0;
// What the readers promise as their largest magnitude.
constexpr float kIntegerMax = 32767.0f / 32768.0f;
constexpr float kFloatMax = 16.0f;
constexpr float kG711Max = 1.0f;

std::uint16_t GetBE16(const unsigned char* p) { return static_cast<std::uint16_t>(p[0] << 8 | p[1]); }
std::uint32_t GetBE32(const unsigned char* p) {
  return static_cast<std::uint32_t>(p[0]) << 24 | static_cast<std::uint32_t>(p[1]) << 16 |
         static_cast<std::uint32_t>(p[2]) << 8 | p[3];
}
void PutBE16(LArray<unsigned char>& out, std::uint16_t v) {
  out.push_back(static_cast<unsigned char>(v >> 8));
  out.push_back(static_cast<unsigned char>(v));
}
void PutBE32(LArray<unsigned char>& out, std::uint32_t v) {
  for (int shift = 24; shift >= 0; shift -= 8) out.push_back(static_cast<unsigned char>(v >> shift));
}
void PutId(LArray<unsigned char>& out, std::uint32_t id) { PutBE32(out, id); }

enum class Layout { kS8, kBE16, kBE24, kBE32, kLE16, kLE24, kLE32, kU8, kFloatBE32, kFloatBE64, kULaw, kALaw };

struct Sound {
  bool haveComm = false;
  bool aifc = false;
  int channels = 0;
  std::uint32_t frames = 0;
  int bits = 0;
  double rate = 0.0;
  std::uint32_t compression = Id("NONE");
  std::string compressionName;
  long long dataStart = -1;
  long long dataSize = 0;
};

template <class Tag>
LSoundSource MakeSource(std::unique_ptr<LByteStream> stream, const Sound& s, float maxAmplitude, long long frames) {
  if (!stream->Seek(s.dataStart)) return LSoundSource::Error(kLSourceDamaged);
  return LMakeSource<LRawFileDataSoundSource<Tag>>(std::move(stream), static_cast<std::uint32_t>(std::lround(s.rate)),
                                                   s.channels, maxAmplitude, frames * s.channels * Tag::kBytes);
}

int BytesPer(Layout layout) {
  switch (layout) {
    case Layout::kS8:
    case Layout::kU8:
    case Layout::kULaw:
    case Layout::kALaw:
      return 1;
    case Layout::kBE16:
    case Layout::kLE16:
      return 2;
    case Layout::kBE24:
    case Layout::kLE24:
      return 3;
    case Layout::kBE32:
    case Layout::kLE32:
    case Layout::kFloatBE32:
      return 4;
    case Layout::kFloatBE64:
      return 8;
  }
  return 1;
}

// The sample layout of the file and the codec name shown for it; false for compressions we do not read.
bool ChooseLayout(const Sound& s, Layout* layout, std::string* codec) {
  const int bits = s.bits;
  const int bytes = (bits + 7) / 8;
  switch (s.compression) {
    case Id("NONE"):
    case Id("twos"):
      if (bytes < 1 || bytes > 4) return false;
      *layout = bytes == 1 ? Layout::kS8 : bytes == 2 ? Layout::kBE16 : bytes == 3 ? Layout::kBE24 : Layout::kBE32;
      *codec = bytes == 1 ? "pcm_s8" : "pcm_s" + std::to_string(bytes * 8) + "be";
      return true;
    case Id("sowt"):
      if (bytes < 1 || bytes > 4) return false;
      *layout = bytes == 1 ? Layout::kS8 : bytes == 2 ? Layout::kLE16 : bytes == 3 ? Layout::kLE24 : Layout::kLE32;
      *codec = bytes == 1 ? "pcm_s8" : "pcm_s" + std::to_string(bytes * 8) + "le";
      return true;
    case Id("in24"):
      *layout = Layout::kBE24;
      *codec = "pcm_s24be";
      return true;
    case Id("in32"):
      *layout = Layout::kBE32;
      *codec = "pcm_s32be";
      return true;
    case Id("raw "):
      *layout = Layout::kU8;
      *codec = "pcm_u8";
      return true;
    case Id("fl32"):
    case Id("FL32"):
      *layout = Layout::kFloatBE32;
      *codec = "pcm_f32be";
      return true;
    case Id("fl64"):
    case Id("FL64"):
      *layout = Layout::kFloatBE64;
      *codec = "pcm_f64be";
      return true;
    case Id("ulaw"):
    case Id("ULAW"):
      *layout = Layout::kULaw;
      *codec = "pcm_mulaw";
      return true;
    case Id("alaw"):
    case Id("ALAW"):
      *layout = Layout::kALaw;
      *codec = "pcm_alaw";
      return true;
    default:
      return false;
  }
}

std::string FourCC(std::uint32_t id) {
  std::string s(4, ' ');
  for (int i = 0; i < 4; ++i) s[static_cast<size_t>(i)] = static_cast<char>(id >> (24 - 8 * i));
  return s;
}

void ReadMarkers(LByteStream& stream, std::uint32_t size, LFileTagDataAudio& tags) {
  LArray<unsigned char> body(std::min(size, kMaxTextBytes));
  if (body.size() < 2 || !stream.ReadAll(body.data(), static_cast<long long>(body.size()))) return;
  const unsigned count = GetBE16(body.data());
  size_t at = 2;
  for (unsigned i = 0; i < count && at + 7 <= body.size(); ++i) {
    const std::uint32_t position = GetBE32(body.data() + at + 2);
    const size_t nameBytes = body[at + 6];
    // A Pascal string padded to an even total with its count byte.
    at += 6 + ((1 + nameBytes + 1) & ~static_cast<size_t>(1));
    tags.MarkerAddSample(position);
  }
}

void ReadText(LByteStream& stream, std::uint32_t size, const char* key, LFileTagDataAudio& tags) {
  if (size == 0 || size > kMaxTextBytes) return;
  std::string text(size, '\0');
  if (!stream.ReadAll(text.data(), size)) return;
  text.resize(std::strlen(text.c_str()));
  if (!text.empty()) tags.Set(key, text.c_str());
}

}  // namespace

bool LAiffFile::IsAiff(const unsigned char* head, std::size_t n) {
  if (n < static_cast<std::size_t>(kFormHeaderBytes) || GetBE32(head) != kIdForm) return false;
  const std::uint32_t form = GetBE32(head + 8);
  return form == kIdAiff || form == kIdAifc;
}

LSoundSource LAiffFile::OpenSource(const char* path, LSoundFileInfo* info) {
  const int fd = path ? LFileOpen(path, kLFileRead, LFileLock::Shared) : -1;
  if (fd < 0) return LSoundSource::Error(kLSourceCannotOpen);
  return OpenSource(std::make_unique<LFileStream>(fd), info);
}

LSoundSource LAiffFile::OpenSource(std::unique_ptr<LByteStream> stream, LSoundFileInfo* info) {
  if (!stream) return LSoundSource::Error(kLSourceCannotOpen);
  unsigned char head[kFormHeaderBytes];
  if (!stream->Seek(0) || !stream->ReadAll(head, sizeof head)) return LSoundSource::Error(kLSourceDamaged);
  if (!IsAiff(head, sizeof head)) return LSoundSource::Error(kLSourceUnsupported);
  const long long fileSize = stream->Size();
  Sound s;
  s.aifc = GetBE32(head + 8) == kIdAifc;
  LFileTagDataAudio tags;

  // Every chunk is looked at: COMM may follow SSND, and text chunks may be anywhere.
  long long at = kFormHeaderBytes;
  unsigned char header[kChunkHeaderBytes];
  while ((fileSize < 0 || at + kChunkHeaderBytes <= fileSize) && stream->Seek(at) &&
         stream->ReadAll(header, sizeof header)) {
    const std::uint32_t id = GetBE32(header);
    const std::uint32_t size = GetBE32(header + 4);
    const long long body = at + kChunkHeaderBytes;
    if (id == kIdComm) {
      unsigned char comm[kCommAifcBytes + 256] = {};
      const long long want = std::min<long long>(size, sizeof comm);
      if (size < static_cast<std::uint32_t>(kCommBytes) || !stream->ReadAll(comm, want)) {
        return LSoundSource::Error(kLSourceDamaged);
      }
      s.haveComm = true;
      s.channels = GetBE16(comm);
      s.frames = GetBE32(comm + 2);
      s.bits = GetBE16(comm + 6);
      s.rate = LExtendedToDouble(comm + 8);
      if (s.aifc && want >= kCommAifcBytes) {
        s.compression = GetBE32(comm + kCommBytes);
        if (want > kCommAifcBytes) {
          const size_t n = std::min<size_t>(comm[kCommAifcBytes], static_cast<size_t>(want - kCommAifcBytes - 1));
          s.compressionName.assign(reinterpret_cast<const char*>(comm + kCommAifcBytes + 1), n);
        }
      }
    } else if (id == kIdSsnd) {
      unsigned char fixed[kSsndFixedBytes];
      if (size < static_cast<std::uint32_t>(kSsndFixedBytes) || !stream->ReadAll(fixed, sizeof fixed)) {
        return LSoundSource::Error(kLSourceDamaged);
      }
      s.dataStart = body + kSsndFixedBytes + GetBE32(fixed);
      s.dataSize = static_cast<long long>(size) - kSsndFixedBytes - GetBE32(fixed);
      // A chunk that claims more than the file holds was cut short: its data go to the end of the file.
      if (fileSize >= 0 && (s.dataStart + s.dataSize > fileSize || s.dataSize < 0)) {
        s.dataSize = std::max(0LL, fileSize - s.dataStart);
      }
    } else if (id == kIdName) {
      ReadText(*stream, size, "TITLE", tags);
    } else if (id == kIdAuth) {
      ReadText(*stream, size, "ARTIST", tags);
    } else if (id == kIdCopyright) {
      ReadText(*stream, size, "COPYRIGHT", tags);
    } else if (id == kIdAnno) {
      ReadText(*stream, size, "COMMENT", tags);
    } else if (id == kIdMark) {
      ReadMarkers(*stream, size, tags);
    }
    at = body + size + (size & 1);
  }

  if (!s.haveComm || s.dataStart < 0) return LSoundSource::Error(kLSourceDamaged);
  if (s.channels < 1 || s.channels > kMaxChannels || !(s.rate >= 1.0 && s.rate <= kMaxSampleRate)) {
    return LSoundSource::Error(kLSourceDamaged);
  }
  Layout layout = Layout::kBE16;
  std::string codec;
  const bool known = ChooseLayout(s, &layout, &codec);
  if (info) {
    info->formatName = "aiff";
    info->formatLongName = s.aifc ? "AIFF-C" : "Audio Interchange File Format";
    info->codecName = known ? codec : (s.compressionName.empty() ? FourCC(s.compression) : s.compressionName);
    info->codecLongName = s.compressionName.empty() ? info->codecName : s.compressionName;
    info->bitsPerSample = known ? BytesPer(layout) * 8 : s.bits;
    info->bitRate = static_cast<long long>(std::lround(s.rate)) * s.channels * info->bitsPerSample;
    info->tags = tags;
  }
  if (!known) return LSoundSource::Error(s.compression == Id("NONE") ? kLSourceUnsupported : kLSourceCodecMissing);

  const long long frameBytes = static_cast<long long>(BytesPer(layout)) * s.channels;
  long long frames = s.dataSize / frameBytes;
  // A count of 0 is what a writer that never finished leaves behind; the data then tell.
  if (s.frames > 0) frames = std::min<long long>(frames, s.frames);
  switch (layout) {
    case Layout::kS8:
      return MakeSource<LSFS8>(std::move(stream), s, kIntegerMax, frames);
    case Layout::kU8:
      return MakeSource<LSFU8>(std::move(stream), s, kIntegerMax, frames);
    case Layout::kBE16:
      return MakeSource<LSFBE16>(std::move(stream), s, kIntegerMax, frames);
    case Layout::kBE24:
      return MakeSource<LSFBE24>(std::move(stream), s, kIntegerMax, frames);
    case Layout::kBE32:
      return MakeSource<LSFBE32>(std::move(stream), s, kIntegerMax, frames);
    case Layout::kLE16:
      return MakeSource<LSF16>(std::move(stream), s, kIntegerMax, frames);
    case Layout::kLE24:
      return MakeSource<LSFLE24>(std::move(stream), s, kIntegerMax, frames);
    case Layout::kLE32:
      return MakeSource<LSF32>(std::move(stream), s, kIntegerMax, frames);
    case Layout::kFloatBE32:
      return MakeSource<LSFFRE32>(std::move(stream), s, kFloatMax, frames);
    case Layout::kFloatBE64:
      return MakeSource<LSFFRE64>(std::move(stream), s, kFloatMax, frames);
    case Layout::kULaw:
      return MakeSource<LSFULAW>(std::move(stream), s, kG711Max, frames);
    case Layout::kALaw:
      return MakeSource<LSFALAW>(std::move(stream), s, kG711Max, frames);
  }
  return LSoundSource::Error(kLSourceUnsupported);
}

namespace {

// A text chunk with its pad byte.
void PutText(LArray<unsigned char>& out, std::uint32_t id, const char* text) {
  if (!text || !*text) return;
  const auto size = static_cast<std::uint32_t>(std::min<size_t>(std::strlen(text), kMaxTextBytes));
  PutId(out, id);
  PutBE32(out, size);
  out.insert(out.end(), text, text + size);
  if (size & 1) out.push_back(0);
}

// The bytes before the samples, for the frames written so far.
LRawFileHeader MakeHeader(int bits, const LFileTagDataAudio* tags) {
  LArray<unsigned char> text;
  if (tags) {
    PutText(text, kIdName, tags->Get("TITLE"));
    PutText(text, kIdAuth, tags->Get("ARTIST"));
    PutText(text, kIdCopyright, tags->Get("COPYRIGHT"));
    PutText(text, kIdAnno, tags->Get("COMMENT"));
  }
  return [bits, text](std::uint32_t rate, int channels, long long frames) {
    const long long dataBytes = frames * channels * (bits / 8);
    const long long ssndSize = kSsndFixedBytes + dataBytes;
    const long long formSize = 4 + kChunkHeaderBytes + kCommBytes + static_cast<long long>(text.size()) +
                               kChunkHeaderBytes + ssndSize + (ssndSize & 1);
    LArray<unsigned char> out;
    PutId(out, kIdForm);
    PutBE32(out, static_cast<std::uint32_t>(std::min<long long>(formSize, 0xFFFFFFFFLL)));
    PutId(out, kIdAiff);
    PutId(out, kIdComm);
    PutBE32(out, kCommBytes);
    PutBE16(out, static_cast<std::uint16_t>(channels));
    PutBE32(out, static_cast<std::uint32_t>(std::min<long long>(frames, 0xFFFFFFFFLL)));
    PutBE16(out, static_cast<std::uint16_t>(bits));
    unsigned char rate80[10];
    LDoubleToExtended(rate, rate80);
    out.insert(out.end(), rate80, rate80 + 10);
    out.insert(out.end(), text.begin(), text.end());
    PutId(out, kIdSsnd);
    PutBE32(out, static_cast<std::uint32_t>(std::min<long long>(ssndSize, 0xFFFFFFFFLL)));
    PutBE32(out, 0);  // offset
    PutBE32(out, 0);  // block size
    return out;
  };
}

template <class Stream>
LSoundSink MakeSink(Stream&& target, const LAiffFileFormat& format, const LFileTagDataAudio* tags) {
  const int bytes = std::clamp((format.bitsPerSample + 7) / 8, 1, 4);
  LRawFileHeader header = MakeHeader(bytes * 8, tags);
  const std::uint32_t rate = format.sampleRate;
  const int channels = format.channels;
  switch (bytes) {
    case 1:
      return LMakeSink<LRawFileDataSoundSink<LSFS8>>(std::forward<Stream>(target), rate, channels, std::move(header));
    case 2:
      return LMakeSink<LRawFileDataSoundSink<LSFBE16>>(std::forward<Stream>(target), rate, channels, std::move(header));
    case 3:
      return LMakeSink<LRawFileDataSoundSink<LSFBE24>>(std::forward<Stream>(target), rate, channels, std::move(header));
    default:
      return LMakeSink<LRawFileDataSoundSink<LSFBE32>>(std::forward<Stream>(target), rate, channels, std::move(header));
  }
}

}  // namespace

LSoundSink LAiffFile::OpenSink(const char* path, const LAiffFileFormat& format, const LFileTagDataAudio* tags) {
  if (!path) return LSoundSink::Error();
  return MakeSink(path, format, tags);
}

LSoundSink LAiffFile::OpenSink(std::unique_ptr<LByteStream> stream, const LAiffFileFormat& format,
                               const LFileTagDataAudio* tags) {
  if (!stream) return LSoundSink::Error();
  return MakeSink(std::move(stream), format, tags);
}
