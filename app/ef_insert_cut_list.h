#pragma once
// SVEfInsertCutList: puts other audio (a clip, a file that was loaded) in place
// of the selection; with an empty selection it goes in at the selection's start.
// Audio of another sample rate or channel count is converted into a new cache
// item first; audio of the document's own format goes in as it is, by segment.
#include "app/ef_cut_list_process.h"
#include "base/string_long.h"

// Labels of the commands that insert.
inline constexpr const char* kSVInsertClipLabel = "Einfügen";
inline constexpr const char* kSVInsertFileLabel = "Datei einfügen";
// Progress title of the conversion to the document's format.
inline constexpr const char* kSVInsertConvertTitle = "Audio wird angepasst...";

class SVEfInsertCutList final : public SVEfCutListProcess {
public:
  SVEfInsertCutList(LCutListAudio& list, SVSelection& selection, const LCutListAudio& clip,
                    const char* label = kSVInsertClipLabel)
      : SVEfCutListProcess(list, selection), clip_(clip), label_(label ? label : kSVInsertClipLabel) {}

  [[nodiscard]] const char* GetEffectName() const override { return label_.c_str(); }
  [[nodiscard]] int ProcessCutList(LProcessInterface& process, LCutListAudio& piece) override;

private:
  LCutListAudio clip_;
  LStringLong label_;
};
