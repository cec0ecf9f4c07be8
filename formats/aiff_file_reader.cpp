#include "formats/aiff_file.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>

#include "base/array.h"
#include "base/file_stream.h"
#include "base/platform_file.h"
#include "engine/sample_format.h"
#include "formats/aiff_chunk_walker.h"
#include "formats/aiff_format.h"
#include "formats/ieee_extended.h"
#include "formats/raw_data_source.h"

namespace {

// Limits of what the reader takes.
constexpr int kMaxChannels = 255;
constexpr double kMaxSampleRate = 1536000.0;
// What the readers promise as their largest magnitude.
constexpr float kIntegerMax = 32767.0f / 32768.0f;
constexpr float kFloatMax = 16.0f;
constexpr float kG711Max = 1.0f;

enum class Layout { kS8, kBE16, kBE24, kBE32, kLE16, kLE24, kLE32, kU8, kFloatBE32, kFloatBE64, kULaw, kALaw };

struct Sound {
  bool haveComm = false;
  bool aifc = false;
  int channels = 0;
  std::uint32_t frames = 0;
  int bits = 0;
  double rate = 0.0;
  std::uint32_t compression = LAiffId("NONE");
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
    case LAiffId("NONE"):
    case LAiffId("twos"):
      if (bytes < 1 || bytes > 4) return false;
      *layout = bytes == 1 ? Layout::kS8 : bytes == 2 ? Layout::kBE16 : bytes == 3 ? Layout::kBE24 : Layout::kBE32;
      *codec = bytes == 1 ? "pcm_s8" : "pcm_s" + std::to_string(bytes * 8) + "be";
      return true;
    case LAiffId("sowt"):
      if (bytes < 1 || bytes > 4) return false;
      *layout = bytes == 1 ? Layout::kS8 : bytes == 2 ? Layout::kLE16 : bytes == 3 ? Layout::kLE24 : Layout::kLE32;
      *codec = bytes == 1 ? "pcm_s8" : "pcm_s" + std::to_string(bytes * 8) + "le";
      return true;
    case LAiffId("in24"):
      *layout = Layout::kBE24;
      *codec = "pcm_s24be";
      return true;
    case LAiffId("in32"):
      *layout = Layout::kBE32;
      *codec = "pcm_s32be";
      return true;
    case LAiffId("raw "):
      *layout = Layout::kU8;
      *codec = "pcm_u8";
      return true;
    case LAiffId("fl32"):
    case LAiffId("FL32"):
      *layout = Layout::kFloatBE32;
      *codec = "pcm_f32be";
      return true;
    case LAiffId("fl64"):
    case LAiffId("FL64"):
      *layout = Layout::kFloatBE64;
      *codec = "pcm_f64be";
      return true;
    case LAiffId("ulaw"):
    case LAiffId("ULAW"):
      *layout = Layout::kULaw;
      *codec = "pcm_mulaw";
      return true;
    case LAiffId("alaw"):
    case LAiffId("ALAW"):
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
  LArray<unsigned char> body(std::min(size, kLAiffMaxTextBytes));
  if (body.size() < 2 || !stream.ReadAll(body.data(), static_cast<long long>(body.size()))) return;
  const unsigned count = LAiffGetBE16(body.data());
  size_t at = 2;
  for (unsigned i = 0; i < count && at + 7 <= body.size(); ++i) {
    const std::uint32_t position = LAiffGetBE32(body.data() + at + 2);
    const size_t nameBytes = body[at + 6];
    // A Pascal string padded to an even total with its count byte.
    at += 6 + ((1 + nameBytes + 1) & ~static_cast<size_t>(1));
    tags.MarkerAddSample(position);
  }
}

void ReadText(LByteStream& stream, std::uint32_t size, const char* key, LFileTagDataAudio& tags) {
  if (size == 0 || size > kLAiffMaxTextBytes) return;
  std::string text(size, '\0');
  if (!stream.ReadAll(text.data(), size)) return;
  text.resize(std::strlen(text.c_str()));
  if (!text.empty()) tags.Set(key, text.c_str());
}

}  // namespace

bool LAiffFile::IsAiff(const unsigned char* head, std::size_t n) {
  if (n < static_cast<std::size_t>(kLAiffFormHeaderBytes) || LAiffGetBE32(head) != kLAiffIdForm) return false;
  const std::uint32_t form = LAiffGetBE32(head + 8);
  return form == kLAiffIdAiff || form == kLAiffIdAifc;
}

LSoundSource LAiffFile::OpenSource(const char* path, LSoundFileInfo* info) {
  const int fd = path ? LFileOpen(path, kLFileRead, LFileLock::Shared) : -1;
  if (fd < 0) return LSoundSource::Error(kLSourceCannotOpen);
  return OpenSource(std::make_unique<LFileStream>(fd), info);
}

LSoundSource LAiffFile::OpenSource(std::unique_ptr<LByteStream> stream, LSoundFileInfo* info) {
  if (!stream) return LSoundSource::Error(kLSourceCannotOpen);
  unsigned char head[kLAiffFormHeaderBytes];
  if (!stream->Seek(0) || !stream->ReadAll(head, sizeof head)) return LSoundSource::Error(kLSourceDamaged);
  const long long fileSize = stream->Size();
  Sound s;
  LAiffChunkWalker walker(*stream);
  if (!walker.Start(&s.aifc)) return LSoundSource::Error(kLSourceUnsupported);
  LFileTagDataAudio tags;

  // Every chunk is looked at: COMM may follow SSND, and text chunks may be anywhere.
  LAiffChunk chunk;
  while (walker.Next(&chunk)) {
    const std::uint32_t id = chunk.id;
    const std::uint32_t size = chunk.size;
    const long long body = chunk.BodyOffset();
    if (id == kLAiffIdComm) {
      unsigned char comm[kLAiffCommAifcBytes + 256] = {};
      const long long want = std::min<long long>(size, sizeof comm);
      if (size < static_cast<std::uint32_t>(kLAiffCommBytes) || !stream->ReadAll(comm, want)) {
        return LSoundSource::Error(kLSourceDamaged);
      }
      s.haveComm = true;
      s.channels = LAiffGetBE16(comm);
      s.frames = LAiffGetBE32(comm + 2);
      s.bits = LAiffGetBE16(comm + 6);
      s.rate = LExtendedToDouble(comm + 8);
      if (s.aifc && want >= kLAiffCommAifcBytes) {
        s.compression = LAiffGetBE32(comm + kLAiffCommBytes);
        if (want > kLAiffCommAifcBytes) {
          const size_t n =
              std::min<size_t>(comm[kLAiffCommAifcBytes], static_cast<size_t>(want - kLAiffCommAifcBytes - 1));
          s.compressionName.assign(reinterpret_cast<const char*>(comm + kLAiffCommAifcBytes + 1), n);
        }
      }
    } else if (id == kLAiffIdSsnd) {
      unsigned char fixed[kLAiffSsndFixedBytes];
      if (size < static_cast<std::uint32_t>(kLAiffSsndFixedBytes) || !stream->ReadAll(fixed, sizeof fixed)) {
        return LSoundSource::Error(kLSourceDamaged);
      }
      s.dataStart = body + kLAiffSsndFixedBytes + LAiffGetBE32(fixed);
      s.dataSize = static_cast<long long>(size) - kLAiffSsndFixedBytes - LAiffGetBE32(fixed);
      // A chunk that claims more than the file holds was cut short: its data go to the end of the file.
      if (fileSize >= 0 && (s.dataStart + s.dataSize > fileSize || s.dataSize < 0)) {
        s.dataSize = std::max(0LL, fileSize - s.dataStart);
      }
    } else if (id == kLAiffIdName) {
      ReadText(*stream, size, "TITLE", tags);
    } else if (id == kLAiffIdAuth) {
      ReadText(*stream, size, "ARTIST", tags);
    } else if (id == kLAiffIdCopyright) {
      ReadText(*stream, size, "COPYRIGHT", tags);
    } else if (id == kLAiffIdAnno) {
      ReadText(*stream, size, "COMMENT", tags);
    } else if (id == kLAiffIdMark) {
      ReadMarkers(*stream, size, tags);
    }
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
  if (!known) return LSoundSource::Error(s.compression == LAiffId("NONE") ? kLSourceUnsupported : kLSourceCodecMissing);

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

