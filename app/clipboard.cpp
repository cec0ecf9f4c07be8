#include "app/clipboard.h"

#include <cstring>

#include "app/cyclic_clipboard.h"
#include "app/temp_file.h"
#include "base/platform_file.h"
#include "engine/source_to_sink.h"
#include "formats/aiff_file.h"

namespace {

// Name pattern and extension of the rendered audio.
constexpr const char* kAiffFilePattern = "0XXXXXX";
constexpr const char* kAiffFileExtension = ".aif";
// 24 bits keep what the cut list holds well below audibility; every AIFF reader takes them.
constexpr std::uint16_t kAiffBits = 24;

}  // namespace

void SVClipboard::Copy(const LCutListAudio& list) {
  SVCyclicClipboard::Instance().Store(list);
  // Declared without data: the AIFF is promised, our own type is a marker.
  board_.DeclareTypes({kSVClipboardTypeAiff, kSVClipboardTypeInternal}, this);
}

bool SVClipboard::EvRender(SVSystemClipboard& board, const char* type) {
  if (!type || std::strcmp(type, kSVClipboardTypeAiff) != 0) return false;
  const LStringLong path = SVTempFileCreate(kAiffFilePattern, kAiffFileExtension);
  if (path.empty()) return false;
  LSoundSource source = SVCyclicClipboard::Instance().Last().OpenSource();
  LAiffFileFormat format;
  format.sampleRate = source.GetSampleRate();
  format.channels = source.GetChannels();
  format.bitsPerSample = kAiffBits;
  const LProcessResult result = view_.RunProcess(kSVClipboardRenderTitle, [&](LProcessInterface& process) {
    LPRSourceToSink job(kSVClipboardRenderTitle, source, LAiffFile::OpenSink(path.c_str(), format), true);
    return Process(process, job);
  });
  if (result != kLProcessSuccess || !board.DataFileSet(type, path.c_str())) {
    LFileDelete(path.c_str());
    return false;
  }
  return true;
}
