#include "formats/wave_file.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "base/file_stream.h"
#include "base/platform_file.h"
#include "formats/ffmpeg_source.h"
#include "formats/gsm_wave.h"
#include "formats/ima_adpcm.h"
#include "formats/little_endian.h"
#include "formats/pcm_file_sink.h"
#include "formats/pcm_file_source.h"
#include "formats/raw_data_sink.h"
#include "formats/raw_data_source.h"
#include "formats/riff_chunk_stream.h"
#include "formats/riff_chunk_walker.h"
#include "formats/riff_tag_chunk.h"
#include "formats/wave_header.h"

namespace {

constexpr float kIntegerMaxAmplitude = 32767.0f / 32768.0f;
constexpr float kFloatMaxAmplitude = 16.0f;
constexpr float kG711MaxAmplitude = 1.0f;
constexpr int kG711HeaderBytes = 58;
constexpr std::uint32_t kMaxSize32 = 0xFFFFFFFFu;
// Dither is not worth its noise at telephone rates and below.
constexpr int kDitherAboveRate = 8000;

// Our reading of a file's sound must not rest on a guess, so the walk takes
// every pad byte as present and a chunk larger than 2^31 - 1 bytes as damage.
constexpr std::uint64_t kMaxSkippedChunk = 0x7FFFFFFF;

struct Headers {
  LRiffChunk fmt;
  LRiffChunk data;
  long long factFrames = -1;
};

// The fmt chunk and the first data chunk after it, and the frame count of a
// fact chunk between them. Data before fmt is not looked for.
bool FindHeaders(LByteStream& stream, Headers* found) {
  LRiffChunkWalker walker(stream, LRiffPadRule::kAlways);
  if (!walker.Start()) return false;
  bool haveFmt = false;
  LRiffChunk chunk;
  while (walker.Next(&chunk)) {
    if (!haveFmt && chunk.id == kLRiffIdFmt) {
      found->fmt = chunk;
      haveFmt = true;
    } else if (haveFmt && chunk.id == kLRiffIdData) {
      found->data = chunk;
      return true;
    } else if (LRiffPadded(chunk.size) > kMaxSkippedChunk) {
      return false;
    } else if (haveFmt && chunk.id == kLRiffIdFact && chunk.available >= 4) {
      unsigned char count[4];
      if (!stream.Seek(chunk.BodyOffset()) || !stream.ReadAll(count, sizeof count)) return false;
      found->factFrames = LGetLE32(count);
    }
  }
  return false;
}

template <class Tag>
LSoundSource PCM(std::unique_ptr<LByteStream> stream, std::uint32_t rate, int channels, float maxAmplitude,
                 std::uint32_t dataSize) {
  return LMakeSource<LSRCPCMFile<Tag>>(std::move(stream), rate, channels, maxAmplitude, dataSize);
}

template <class Tag>
LSoundSource G711(std::unique_ptr<LByteStream> stream, std::uint32_t rate, int channels, std::uint32_t dataSize) {
  // A provisional size (a writer into a pipe puts all ones) is no length: the PCM reader follows the file instead.
  if (dataSize >= kLWaveProvisionalDataSize) {
    return PCM<Tag>(std::move(stream), rate, channels, kG711MaxAmplitude, dataSize);
  }
  return LMakeSource<LRawFileDataSoundSource<Tag>>(std::move(stream), rate, channels, kG711MaxAmplitude,
                                                   static_cast<long long>(dataSize));
}

// The 58-byte header of the G.711 writer. Bytes per second (the sample rate) and
// block align (8) do not follow the channel count; that is deliberate and kept.
LRawFileHeader G711Header(std::uint16_t tag) {
  return [tag](std::uint32_t sampleRate, int channels, long long frames) {
    LWaveHeaderLayout layout;
    layout.tag = tag;
    layout.channels = static_cast<std::uint16_t>(channels);
    layout.sampleRate = sampleRate;
    layout.bytesPerSecond = sampleRate;
    layout.blockAlign = 8;
    layout.bitsPerSample = 8;
    layout.fmtBytes = 18;
    layout.fact = true;
    const auto data =
        static_cast<std::uint32_t>(std::min<long long>(frames * channels, kMaxSize32 - (kG711HeaderBytes - 8)));
    LArray<unsigned char> bytes(kG711HeaderBytes);
    LWaveHeaderMake(layout, data + (kG711HeaderBytes - 8), data,
                    static_cast<std::uint32_t>(std::min<long long>(frames, kMaxSize32)), bytes.data());
    return bytes;
  };
}

}  // namespace

LSoundSource LWaveFile::OpenSource(const char* path, LWaveFileFormat* format) {
  const int fd = LFileOpen(path, kLFileRead);
  if (fd < 0) return LSoundSource::Error(kLSourceCannotOpen);
  return OpenSource(std::make_unique<LFileStream>(fd), format);
}

LSoundSource LWaveFile::OpenSource(std::unique_ptr<LByteStream> stream, LWaveFileFormat* format) {
  if (!stream) return LSoundSource::Error(kLSourceCannotOpen);
  Headers headers;
  if (!FindHeaders(*stream, &headers)) return LSoundSource::Error(kLSourceDamaged);
  const LRiffChunk& fmtChunk = headers.fmt;
  if (fmtChunk.size < kLWaveFmtMinBytes || fmtChunk.size > kLWaveFmtMaxBytes) {
    return LSoundSource::Error(kLSourceDamaged);
  }
  // An odd-sized fmt body is refused as damage, deliberately: no writer we know makes one.
  if (fmtChunk.size & 1) return LSoundSource::Error(kLSourceDamaged);
  unsigned char fmt[kLWaveFmtMaxBytes] = {};
  if (!stream->Seek(fmtChunk.BodyOffset()) || !stream->ReadAll(fmt, fmtChunk.size)) {
    return LSoundSource::Error(kLSourceDamaged);
  }
  std::uint16_t tag = LGetLE16(fmt);
  const std::uint16_t channels = LGetLE16(fmt + 2);
  const std::uint32_t rate = LGetLE32(fmt + 4);
  const std::uint16_t blockAlign = LGetLE16(fmt + 12);
  const std::uint16_t bits = LGetLE16(fmt + 14);
  const std::uint16_t extra = fmtChunk.size >= 18 ? LGetLE16(fmt + 16) : 0;
  // Only the PCM sub-format is honoured; extensible float stays unsupported.
  if (tag == kLWaveTagExtensible && extra >= kLWaveExtensibleExtraBytes &&
      fmtChunk.size >= kLWaveFmtSubFormatOffset + sizeof kLWaveSubFormatPCM &&
      std::memcmp(fmt + kLWaveFmtSubFormatOffset, kLWaveSubFormatPCM, sizeof kLWaveSubFormatPCM) == 0) {
    tag = kLWaveTagPCM;
  }
  if (format) *format = LWaveFileFormat{tag, channels, rate, bits, false};

  const long long factFrames = headers.factFrames;
  if (channels < 1 || channels > kLWaveMaxChannels || rate < 1 || rate > kLWaveMaxSampleRate) {
    return LSoundSource::Error(kLSourceDamaged);
  }
  const std::uint32_t dataSize = headers.data.size;
  // The readers below start where the stream stands.
  if (!stream->Seek(headers.data.BodyOffset())) return LSoundSource::Error(kLSourceDamaged);

  switch (tag) {
    case kLWaveTagPCM:
      if (bits <= 8) return PCM<LSFU8>(std::move(stream), rate, channels, kIntegerMaxAmplitude, dataSize);
      if (bits <= 16) return PCM<LSF16>(std::move(stream), rate, channels, kIntegerMaxAmplitude, dataSize);
      if (bits <= 24) return PCM<LSFLE24>(std::move(stream), rate, channels, kIntegerMaxAmplitude, dataSize);
      return PCM<LSF32>(std::move(stream), rate, channels, kIntegerMaxAmplitude, dataSize);
    case kLWaveTagIEEEFloat:
      if (bits == 32) return PCM<LSFF32>(std::move(stream), rate, channels, kFloatMaxAmplitude, dataSize);
      if (bits == 64) return PCM<LSFF64>(std::move(stream), rate, channels, kFloatMaxAmplitude, dataSize);
      return LSoundSource::Error(kLSourceUnsupported);
    case kLWaveTagALaw:
      return G711<LSFALAW>(std::move(stream), rate, channels, dataSize);
    case kLWaveTagMuLaw:
      return G711<LSFULAW>(std::move(stream), rate, channels, dataSize);
    case kLWaveTagIMAADPCM:
      if (channels != 1) return LSoundSource::Error(kLSourceCodecMissing);
      return LIMASoundSource::Open(std::move(stream), rate, blockAlign, dataSize, factFrames);
    case kLWaveTagGSM610:
      return LGSMWaveOpenSource(std::move(stream), rate, dataSize, factFrames);
    case kLWaveTagMPEGLayer3: {
      // The data chunk holds plain MP3 frames: our MP3 reader takes them as an MP3 file.
      const long long begin = stream->Tell();
      const long long size = dataSize >= kLWaveProvisionalDataSize ? -1 : static_cast<long long>(dataSize);
      return LFFmpegSource::Open(std::make_unique<LRiffChunkStream>(std::move(stream), begin, size), "data.mp3");
    }
    case kLWaveTagTrueSpeech:
    case kLWaveTagSharpG726:
      return LSoundSource::Error(kLSourceCodecMissing);
    default:
      return LSoundSource::Error(kLSourceUnsupported);
  }
}

bool LWaveFile::HasContainer(LByteStream& stream) {
  LRiffChunkWalker walker(stream, LRiffPadRule::kAlways);
  return walker.Start(true);
}

LSoundSource LWaveFile::OpenSourceDeletingFileWhenClosed(const char* path) {
  return LMakeSource<LWavSourceDeleteWhenClosed>(OpenSource(path), path);
}

LSoundSink LWaveFile::OpenSink(const char* path, const LWaveFileFormat& format) {
  const int channels = format.channels;
  switch (format.tag) {
    case kLWaveTagPCM:
      return OpenSinkPCM(path, static_cast<int>(format.sampleRate),
                         static_cast<unsigned char>(std::min(channels, kLWaveMaxChannels)), format.bitsPerSample, 0,
                         format.dither);
    case kLWaveTagIEEEFloat:
      if (format.bitsPerSample != 32) return LSoundSink::Error();
      return LMakeSink<LSNKPCMFile<LSFF32>>(path, format.sampleRate, channels, LWaveHeaderKind::kExtraSize);
    case kLWaveTagALaw:
      return LMakeSink<LRawFileDataSoundSink<LSFALAW>>(path, format.sampleRate, channels, G711Header(kLWaveTagALaw));
    case kLWaveTagMuLaw:
      return LMakeSink<LRawFileDataSoundSink<LSFULAW>>(path, format.sampleRate, channels, G711Header(kLWaveTagMuLaw));
    case kLWaveTagIMAADPCM:
      // The block coders write mono only.
      if (channels != 1) return LSoundSink::Error();
      return LMakeSink<LIMAWaveSink>(path, format.sampleRate);
    case kLWaveTagGSM610:
      if (channels != 1) return LSoundSink::Error();
      return LGSMWaveOpenSink(path, format.sampleRate);
    default:
      return LSoundSink::Error();
  }
}

LSoundSink LWaveFile::OpenSinkPCM(const char* path, int sampleRate, unsigned char channels, unsigned short bits,
                                  long long, bool dither) {
  const auto rate = static_cast<std::uint32_t>(std::max(0, sampleRate));
  const bool shaped = dither && sampleRate > kDitherAboveRate;
  if (bits <= 8) return LMakeSink<LSNKPCMFile<LSFU8>>(path, rate, channels, LWaveHeaderKind::kPlain, shaped);
  if (bits <= 16) return LMakeSink<LSNKPCMFile<LSF16>>(path, rate, channels, LWaveHeaderKind::kPlain, shaped);
  if (bits <= 24) return LMakeSink<LSNKPCMFile<LSFLE24>>(path, rate, channels, LWaveHeaderKind::kPlain);
  return LMakeSink<LSNKPCMFile<LSF32>>(path, rate, channels, LWaveHeaderKind::kPlain);
}

LSoundSink LWaveFile::OpenSinkFloatExport(const char* path, int sampleRate, unsigned char channels) {
  return LMakeSink<LSNKPCMFile<LSFF32>>(path, static_cast<std::uint32_t>(std::max(0, sampleRate)), channels,
                                        LWaveHeaderKind::kFloatFact);
}

LWavSourceDeleteWhenClosed::LWavSourceDeleteWhenClosed(LSoundSource source, const char* path)
    : LSoundSourceBase(source.GetSampleRate(), source.GetChannels()),
      source_(std::move(source)),
      path_(path ? path : "") {
  SetErrorCode(source_.GetErrorCode());
  SetMaxAmplitude(source_.GetMaxAmplitude());
}

LWavSourceDeleteWhenClosed::~LWavSourceDeleteWhenClosed() {
  if (!path_.empty()) LFileDelete(path_.c_str());
}
