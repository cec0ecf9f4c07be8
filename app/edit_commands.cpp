#include "app/edit_commands.h"

#include <functional>

#include "app/core_utils.h"
#include "app/cut_list_load.h"
#include "app/ef_convert_channels.h"
#include "app/ef_insert_cut_list.h"
#include "app/ef_insert_silence.h"
#include "app/file.h"
#include "app/file_modifier.h"
#include "app/main_dialog.h"

namespace {

using Step = std::function<void(SVFile&)>;

bool CanEdit(const SVFileGUI* window) { return window && window->File() && !window->IsClosing(); }

void ScopeApply(SVFile& file, SVEditScope scope) {
  SVSelection& selection = file.Selection();
  const long long length = file.CutList().GetLength();
  switch (scope) {
    case SVEditScope::kSelectionOrWhole:
      if (selection.IsEmpty()) selection = SVSelection{0, length};
      break;
    case SVEditScope::kReplaceSelection:
      selection = selection.IsEmpty() ? SVSelection{file.Cursor(), file.Cursor()}
                                      : SVSelection{selection.start, selection.end};
      break;
    case SVEditScope::kInsertPoint: {
      const long long at = selection.IsEmpty() ? file.Cursor() : selection.start;
      selection = SVSelection{at, at};
      break;
    }
    case SVEditScope::kWhole:
      selection = SVSelection{0, length};
      break;
  }
}

int Commit(SVFileGUI* window) {
  int result = kLProcessSuccess;
  if (!SVCoreUtils::EndModifyFile(window)) {
    // The commit was declined after the audio changed: roll back as LFileModifier does.
    SVCoreUtils::RollBackModifyFile(window);
    result = kLProcessCancelled;
  }
  window->Manager().UndoMenuUpdate();
  return result;
}

int RunSteps(SVFileGUI* window, SVEfCutListProcess& effect, SVEditScope scope, bool channelEdit,
             const Step& prepare, const Step& finish, const char* label = nullptr) {
  if (!CanEdit(window)) return kLProcessFailed;
  SVFile& file = *window->File();
  if (&effect.CutList() != &file.CutList() || &effect.Selection() != &file.Selection()) return kLProcessFailed;

  const bool modified = file.IsModified();
  const bool changed = file.IsChanged();
  if (!label) label = effect.GetEffectName();
  if (!SVCoreUtils::StartModifyFile(window, label, channelEdit)) return kLProcessCancelled;
  const SVSelection before = file.Selection();
  const std::uint32_t rate = file.CutList().GetSampleRate();
  const std::uint8_t channels = file.CutList().GetChannels();
  ScopeApply(file, scope);
  if (prepare) prepare(file);

  SVFrontEnd& view = window->Manager().FrontEnd();
  const int result = view.RunProcess(label, [&effect](LProcessInterface& process) {
    return static_cast<LProcessResult>(effect.Render(process));
  });
  if (result != kLProcessSuccess) {
    // The audio was not touched: put back what was set up for it and drop the snapshot.
    file.Selection() = before;
    file.CutList().SetFormat(rate, channels);
    SVCoreUtils::CancelModifyFile(window);
    file.ModifiedSet(modified);
    file.ChangedSet(changed);
    if (!modified) view.Notify(window, kSVNotifyClean);
    window->Manager().UndoMenuUpdate();
    return result;
  }
  effect.Splice();
  // Bookmarks follow the audio; those in a part that went are removed.
  for (const SVFrameShift& shift : effect.Shifts()) file.OffsetBookmarks(shift.from, shift.delta);
  if (finish) finish(file);
  return Commit(window);
}

// An empty document takes the format of the audio put into it.
Step AdoptFormatOf(const LCutListAudio& clip) {
  return [&clip](SVFile& file) {
    if (file.CutList().IsEmpty() && !clip.IsEmpty()) file.CutList().SetFormat(clip.GetSampleRate(), clip.GetChannels());
  };
}

// The cursor goes behind what came in.
void CursorToSelectionEnd(SVFile& file) { file.CursorSet(file.Selection().end); }

}  // namespace

int SVEditCommands::Run(SVFileGUI* window, SVEfCutListProcess& effect, SVEditScope scope, bool channelEdit,
                        const char* label) {
  return RunSteps(window, effect, scope, channelEdit, nullptr, nullptr, label);
}

int SVEditCommands::Change(SVFileGUI* window, const char* label, const std::function<void(SVFile&)>& change) {
  if (!CanEdit(window)) return kLProcessFailed;
  bool committed = false;
  {
    LFileModifier modifier(window);
    if (!modifier.Start(label, false)) return kLProcessCancelled;
    change(*window->File());
    committed = modifier.Commit();
  }
  window->Manager().UndoMenuUpdate();
  return committed ? kLProcessSuccess : kLProcessCancelled;
}

int SVEditCommands::InsertClip(SVFileGUI* window, const LCutListAudio& clip, const char* label, SVEditScope scope) {
  if (!CanEdit(window)) return kLProcessFailed;
  SVFile& file = *window->File();
  SVEfInsertCutList effect(file.CutList(), file.Selection(), clip, label ? label : kSVInsertClipLabel);
  return RunSteps(window, effect, scope, true, AdoptFormatOf(clip), CursorToSelectionEnd);
}

int SVEditCommands::InsertSilence(SVFileGUI* window, long long frames) {
  if (!CanEdit(window) || frames <= 0) return kLProcessFailed;
  SVFile& file = *window->File();
  SVEfInsertSilence effect(file.CutList(), file.Selection(), frames);
  return Run(window, effect, SVEditScope::kInsertPoint);
}

int SVEditCommands::InsertFile(SVFileGUI* window, const char* path) {
  if (!CanEdit(window) || !path || !*path) return kLProcessFailed;
  LCutListAudio clip;
  const LProcessResult loaded = window->Manager().FrontEnd().RunProcess(
      kSVLoadTitle, [&](LProcessInterface& process) { return SVCutListLoadFile(process, path, clip); });
  if (loaded != kLProcessSuccess) return loaded;
  SVFile& file = *window->File();
  SVEfInsertCutList effect(file.CutList(), file.Selection(), clip, kSVInsertFileLabel);
  return RunSteps(window, effect, SVEditScope::kReplaceSelection, true, AdoptFormatOf(clip), CursorToSelectionEnd);
}

int SVEditCommands::ConvertChannels(SVFileGUI* window, int channels) {
  if (!CanEdit(window)) return kLProcessFailed;
  SVFile& file = *window->File();
  SVEfConvertChannels effect(file.CutList(), file.Selection(), channels);
  const Step setFormat = [channels](SVFile& f) {
    f.CutList().SetFormat(f.CutList().GetSampleRate(), static_cast<std::uint8_t>(channels));
  };
  return RunSteps(window, effect, SVEditScope::kWhole, false, nullptr, setFormat);
}

int SVEditCommands::Trim(SVFileGUI* window) {
  return Change(window, kSVTrimLabel, [](SVFile& f) {
    SVSelection& s = f.Selection();
    if (s.IsEmpty()) return;
    const long long length = f.CutList().GetLength();
    f.CutList().EfTrim(s.start, s.end);
    f.OffsetBookmarks(s.end, -(length - s.end));
    f.OffsetBookmarks(0, -s.start);
    f.CursorSet(0);
    s = SVSelection{0, s.end - s.start};
  });
}

int SVEditCommands::Repeat(SVFileGUI* window, unsigned long count) {
  if (count == 0) return kLProcessFailed;
  return Change(window, kSVRepeatLabel, [count](SVFile& f) {
    const SVSelection& s = f.Selection();
    const long long start = s.IsEmpty() ? 0 : s.start;
    const long long end = s.IsEmpty() ? f.CutList().GetLength() : s.end;
    f.CutList().EfRepeatLoop(start, end, count);
    f.OffsetBookmarks(end, (end - start) * static_cast<long long>(count));
  });
}
