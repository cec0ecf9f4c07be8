#include "app/paste_source.h"

#include "app/cut_list_load.h"
#include "app/cyclic_clipboard.h"
#include "app/temp_file.h"
#include "app/text_to_speech.h"
#include "base/platform_file.h"
#include "formats/aiff_file.h"

namespace {

// Name pattern and extension of the speech file of pasted text.
constexpr const char* kSpeechFilePattern = "0XXXXXX";
constexpr const char* kSpeechFileExtension = ".wav";

// A temporary file that is removed when the scope ends.
class TempFileGuard {
public:
  explicit TempFileGuard(LStringLong path) : path_(std::move(path)) {}
  ~TempFileGuard() {
    if (!path_.empty()) LFileDelete(path_.c_str());
  }
  TempFileGuard(const TempFileGuard&) = delete;
  TempFileGuard& operator=(const TempFileGuard&) = delete;
  const LStringLong& Path() const { return path_; }

private:
  LStringLong path_;
};

LCutListAudio SpeechFromText(SVFrontEnd& view, const LStringLong& text) {
  if (SVTextToSpeechProgram().empty()) {
    view.Alert(kSVPasteErrorTitle, kSVSpeechMissingText);
    return LCutListAudio();
  }
  TempFileGuard file(SVTempFileCreate(kSpeechFilePattern, kSpeechFileExtension));
  if (file.Path().empty() || SVTextToSpeechToWaveFile(text.c_str(), file.Path().c_str()) != SVSpeechResult::kDone) {
    view.Alert(kSVPasteErrorTitle, kSVSpeechFailedText);
    return LCutListAudio();
  }
  LCutListAudio list;
  if (view.RunProcess(kSVPasteSpeechTitle, [&](LProcessInterface& process) {
        return SVCutListLoadFile(process, file.Path().c_str(), list, false);
      }) != kLProcessSuccess)
    return LCutListAudio();
  return list;
}

}  // namespace

LCutListAudio SVPasteSource::GetAudioFromClipboard(SVFrontEnd& view, SVSystemClipboard& board) {
  if (board.HasType(kSVClipboardTypeInternal)) return SVCyclicClipboard::Instance().Last();
  if (board.HasText()) return SpeechFromText(view, board.TextGet());
  if (board.HasType(kSVClipboardTypeAiff)) {
    const LStringLong path = board.DataFileGet(kSVClipboardTypeAiff);
    LCutListAudio list;
    if (path.empty() || view.RunProcess(kSVPasteAiffTitle, [&](LProcessInterface& process) {
                          return SVCutListLoadSource(process, LAiffFile::OpenSource(path.c_str()), path.c_str(),
                                                     list);
                        }) != kLProcessSuccess)
      return LCutListAudio();
    return list;
  }
  return LCutListAudio();
}
