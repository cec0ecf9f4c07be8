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

LWavTagsResult LWavTagsWrite(LByteStream& file, const LFileTagDataAudio& tags, const LWavTagsWriteOptions& options) {
  LWavTagWriter writer(file, tags, options.tempFolder, options.id3);
  return FromWriteResult(writer.Write());
}

LWavTagsResult LWavTagsWrite(const char* path, const LFileTagDataAudio& tags, const LWavTagsWriteOptions& options) {
  const int fd = LFileOpen(path, kLFileWrite, LFileLock::Exclusive);
  if (fd < 0) return LWavTagsResult::CannotOpen;
  LFileStream file(fd);
  return LWavTagsWrite(file, tags, options);
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
