#include "formats/raw_file.h"

#include <algorithm>

#include "base/file_stream.h"
#include "base/platform_file.h"
#include "engine/sample_format.h"
#include "formats/raw_data_sink.h"
#include "formats/raw_data_source.h"
#include "formats/vox_adpcm.h"

namespace {

constexpr float kIntegerMaxAmplitude = 32767.0f / 32768.0f;
constexpr float kFloatMaxAmplitude = 16.0f;
constexpr float kG711MaxAmplitude = 1.0f;

template <class Tag>
LSoundSource Raw(std::unique_ptr<LByteStream> stream, const LRawSettings& settings, float maxAmplitude,
                 long long size) {
  return LMakeSource<LRawFileDataSoundSource<Tag>>(std::move(stream),
                                                   static_cast<std::uint32_t>(std::max(0, settings.sampleRate)),
                                                   settings.channels, maxAmplitude, size);
}

template <class Tag>
LSoundSink RawSink(const char* path, const LRawSettings& settings) {
  return LMakeSink<LRawFileDataSoundSink<Tag>>(path, static_cast<std::uint32_t>(std::max(0, settings.sampleRate)),
                                               settings.channels);
}

}  // namespace

LSoundSource LRawFile::OpenSource(const char* path, const LRawSettings& settings) {
  // A file that cannot be opened still gives the reader of the settings, empty and with code 4.
  const int fd = LFileOpen(path, kLFileRead);
  return OpenSource(fd >= 0 ? std::make_unique<LFileStream>(fd) : nullptr, settings);
}

LSoundSource LRawFile::OpenSource(std::unique_ptr<LByteStream> stream, const LRawSettings& settings) {
  const long long size = stream ? std::max(0LL, stream->Size() - std::max(0LL, stream->Tell())) : 0;
  const auto rate = static_cast<std::uint32_t>(std::max(0, settings.sampleRate));
  switch (settings.formatCode) {
    case kLRawVOX:
      return LMakeSource<LSRCVOX>(std::move(stream), rate, size);
    case kLRawMuLaw:
      return Raw<LSFULAW>(std::move(stream), settings, kG711MaxAmplitude, size);
    case kLRawALaw:
      return Raw<LSFALAW>(std::move(stream), settings, kG711MaxAmplitude, size);
    case kLRaw16:
      return Raw<LSF16>(std::move(stream), settings, kIntegerMaxAmplitude, size);
    case kLRawU8:
      return Raw<LSFU8>(std::move(stream), settings, kIntegerMaxAmplitude, size);
    case kLRawS8:
      return Raw<LSFS8>(std::move(stream), settings, kIntegerMaxAmplitude, size);
    case kLRawBE16:
      return Raw<LSFBE16>(std::move(stream), settings, kIntegerMaxAmplitude, size);
    case kLRawFloat:
      return Raw<LSFF32>(std::move(stream), settings, kFloatMaxAmplitude, size);
    case kLRawFloatBE:
      return Raw<LSFFRE32>(std::move(stream), settings, kFloatMaxAmplitude, size);
    default:
      return LSoundSource::Error(kLSourceClosed);
  }
}

LSoundSink LRawFile::OpenSink(const char* path, const LRawSettings& settings) {
  switch (settings.formatCode) {
    case kLRawMuLaw:
      return RawSink<LSFULAW>(path, settings);
    case kLRawALaw:
      return RawSink<LSFALAW>(path, settings);
    case kLRaw16:
      return RawSink<LSF16>(path, settings);
    case kLRawU8:
      return RawSink<LSFU8>(path, settings);
    case kLRawS8:
      return RawSink<LSFS8>(path, settings);
    case kLRawBE16:
      return RawSink<LSFBE16>(path, settings);
    case kLRawFloat:
      return RawSink<LSFF32>(path, settings);
    case kLRawFloatBE:
      return RawSink<LSFFRE32>(path, settings);
    default:
      return LSoundSink::Error();
  }
}
