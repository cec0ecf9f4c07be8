#include "formats/aiff_file.h"

#include <algorithm>
#include <cstring>

#include "base/array.h"
#include "engine/sample_format.h"
#include "formats/aiff_format.h"
#include "formats/ieee_extended.h"
#include "formats/raw_data_sink.h"

namespace {

// A text chunk with its pad byte.
void PutText(LArray<unsigned char>& out, std::uint32_t id, const char* text) {
  if (!text || !*text) return;
  const auto size = static_cast<std::uint32_t>(std::min<size_t>(std::strlen(text), kLAiffMaxTextBytes));
  LAiffPutBE32(out, id);
  LAiffPutBE32(out, size);
  out.insert(out.end(), text, text + size);
  if (size & 1) out.push_back(0);
}

// The bytes before the samples, for the frames written so far.
LRawFileHeader MakeHeader(int bits, const LFileTagDataAudio* tags) {
  LArray<unsigned char> text;
  if (tags) {
    PutText(text, kLAiffIdName, tags->Get("TITLE"));
    PutText(text, kLAiffIdAuth, tags->Get("ARTIST"));
    PutText(text, kLAiffIdCopyright, tags->Get("COPYRIGHT"));
    PutText(text, kLAiffIdAnno, tags->Get("COMMENT"));
  }
  return [bits, text](std::uint32_t rate, int channels, long long frames) {
    const long long dataBytes = frames * channels * (bits / 8);
    const long long ssndSize = kLAiffSsndFixedBytes + dataBytes;
    const long long formSize = 4 + kLAiffChunkHeaderBytes + kLAiffCommBytes + static_cast<long long>(text.size()) +
                               kLAiffChunkHeaderBytes + ssndSize + (ssndSize & 1);
    LArray<unsigned char> out;
    LAiffPutBE32(out, kLAiffIdForm);
    LAiffPutBE32(out, static_cast<std::uint32_t>(std::min<long long>(formSize, 0xFFFFFFFFLL)));
    LAiffPutBE32(out, kLAiffIdAiff);
    LAiffPutBE32(out, kLAiffIdComm);
    LAiffPutBE32(out, kLAiffCommBytes);
    LAiffPutBE16(out, static_cast<std::uint16_t>(channels));
    LAiffPutBE32(out, static_cast<std::uint32_t>(std::min<long long>(frames, 0xFFFFFFFFLL)));
    LAiffPutBE16(out, static_cast<std::uint16_t>(bits));
    unsigned char rate80[10];
    LDoubleToExtended(rate, rate80);
    out.insert(out.end(), rate80, rate80 + 10);
    out.insert(out.end(), text.begin(), text.end());
    LAiffPutBE32(out, kLAiffIdSsnd);
    LAiffPutBE32(out, static_cast<std::uint32_t>(std::min<long long>(ssndSize, 0xFFFFFFFFLL)));
    LAiffPutBE32(out, 0);  // offset
    LAiffPutBE32(out, 0);  // block size
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
