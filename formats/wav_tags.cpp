#include "formats/wav_tags.h"

#include "base/file_stream.h"
#include "base/platform_file.h"
#include "formats/wav_tag_iterator.h"
#include "formats/wav_tag_writer.h"

namespace {

LWavTagsResult FromWriteResult(LRiffTagWriteResult result) {
  switch (result) {
    case LRiffTagWriteResult::Ok:
      return LWavTagsResult::Ok;
    case LRiffTagWriteResult::NotRiff:
      return LWavTagsResult::NotWave;
    case LRiffTagWriteResult::Damaged:
      return LWavTagsResult::Damaged;
    case LRiffTagWriteResult::WriteFailed:
      break;
  }
  return LWavTagsResult::WriteFailed;
}

// Markers in milliseconds without a rate of their own would be taken for sample frames.
bool MarkersNeedRate(const LFileTagDataAudio& tags) {
  long long type = -1;
  long long rate = 0;
  return tags.MarkerCount() > 0 && LTagValueNumberGet(tags.Get(kLTagMarkerPosType), &type) &&
         type == kLMarkerPosTypeMs && !(LTagValueNumberGet(tags.Get(kLTagMarkerSampleRate), &rate) && rate >= 1);
}

}  // namespace

LStringLong LWavTagsResultMessage(LWavTagsResult result, const char* path) {
  const LStringLong name = path ? path : "";
  switch (result) {
    case LWavTagsResult::Ok:
      return {};
    case LWavTagsResult::CannotOpen:
      return "Die Datei \"" + name + "\" kann nicht geöffnet werden. Überprüfen Sie, ob diese existiert und Sie " +
             "Zugriff darauf haben.";
    case LWavTagsResult::NotWave:
      return "Die Datei \"" + name + "\" ist keine WAVE-Datei.";
    case LWavTagsResult::Damaged:
      return "Die Datei \"" + name + "\" kann nicht geöffnet werden, da sie beschädigt ist.";
    case LWavTagsResult::WriteFailed:
      break;
  }
  return "Die Metadaten der Datei \"" + name + "\" konnten nicht vollständig geschrieben werden.";
}

LWavTagsResult LWavTagsWrite(LByteStream& file, const LFileTagDataAudio& tags, std::uint32_t sampleRate,
                             const LWavTagsWriteOptions& options) {
  if (!MarkersNeedRate(tags)) {
    LWavTagWriter writer(file, tags, options.tempFolder, options.id3);
    return FromWriteResult(writer.Write());
  }
  if (sampleRate == 0) {
    LWavTagIterator reader(file);
    if (!reader.Open()) return LWavTagsResult::NotWave;
    sampleRate = reader.SampleRate();
  }
  LFileTagDataAudio withRate = tags;
  if (sampleRate > 0) withRate.SetNumber(kLTagMarkerSampleRate, sampleRate);
  LWavTagWriter writer(file, withRate, options.tempFolder, options.id3);
  return FromWriteResult(writer.Write());
}

LWavTagsResult LWavTagsWrite(const char* path, const LFileTagDataAudio& tags, std::uint32_t sampleRate,
                             const LWavTagsWriteOptions& options) {
  const int fd = LFileOpen(path, kLFileWrite, LFileLock::Exclusive);
  if (fd < 0) return LWavTagsResult::CannotOpen;
  LFileStream file(fd);
  return LWavTagsWrite(file, tags, sampleRate, options);
}

LWavTagsResult LWavTagsRead(LByteStream& file, LFileTagDataAudio* tags) {
  LWavTagIterator reader(file);
  if (!reader.Open()) return LWavTagsResult::NotWave;
  *tags = reader.Tags();
  return LWavTagsResult::Ok;
}

LWavTagsResult LWavTagsRead(const char* path, LFileTagDataAudio* tags) {
  const int fd = LFileOpen(path, kLFileRead, LFileLock::Shared);
  if (fd < 0) return LWavTagsResult::CannotOpen;
  LFileStream file(fd);
  return LWavTagsRead(file, tags);
}
