#include "app/core_utils.h"

#include <cstdio>
#include <cstdlib>

#include "app/app_settings.h"
#include "app/channel_edit.h"
#include "app/frame_time.h"
#include "base/disk_space.h"
#include "base/platform_file.h"
#include "base/user_settings.h"
#include "engine/sound_cache.h"
#include "engine/sound_cache_item.h"

namespace {

// Free space below which the working folder counts as short: a new cache item
// needs this much head-room beyond its own size.
constexpr long long kLowDiskBytes = kLSoundCacheHeadRoomBytes;

}  // namespace

bool SVCoreUtils::StartModifyFile(SVFileGUI* window, const char* description, bool channelEdit) {
  if (!window || !window->File()) return false;
  SVFile& file = *window->File();
  SVWindowManager& manager = window->Manager();
  SVFrontEnd& view = manager.FrontEnd();
  file.SaveForUndo(description);
  file.FlagsSet();
  view.Notify(window, kSVNotifyModified);
  if (channelEdit && window->IsChannelEditing() && !window->HasChannelEditLists()) {
    LCutListAudio channel;
    const LProcessResult result = view.RunProcess(kSVChannelReplaceTitle, [&](LProcessInterface& process) {
      return SVChannelSplit(process, file.CutList(), window->ChannelEditChannel(), channel);
    });
    if (result != kLProcessSuccess) {
      file.UndoEntryDrop();
      manager.UndoMenuUpdate();
      return false;
    }
    window->ChannelEditListsKeep(file.CutList());
    file.CutList() = std::move(channel);
  }
  manager.UndoMenuUpdate();
  return true;
}

bool SVCoreUtils::EndModifyFile(SVFileGUI* window) {
  if (!window || !window->File()) return false;
  SVFile& file = *window->File();
  SVWindowManager& manager = window->Manager();
  SVFrontEnd& view = manager.FrontEnd();

  if (window->HasChannelEditLists()) {
    const LCutListAudio& before = window->ChannelEditBefore();
    const LCutListAudio& edited = file.CutList();
    const long long msBefore = SVFramesToMs(before.GetLength(), before.GetSampleRate());
    const long long msEdited = SVFramesToMs(edited.GetLength(), edited.GetSampleRate());
    if (msBefore != msEdited) {
      char text[1024];
      std::snprintf(text, sizeof text, msEdited < msBefore ? kSVChannelLengthShorter : kSVChannelLengthLonger,
                    static_cast<int>(std::llabs(msEdited - msBefore)));
      const int answer = view.Ask(kSVChannelLengthTitle, text, {kSVChannelLengthContinue, kSVChannelLengthCancel});
      if (answer != 0) return false;
    }
    LCutListAudio merged;
    const LProcessResult result = view.RunProcess(kSVChannelReplaceTitle, [&](LProcessInterface& process) {
      return SVChannelMerge(process, before, edited, window->ChannelEditChannel(), merged);
    });
    if (result != kLProcessSuccess) return false;
    file.CutList() = std::move(merged);
    file.FlagsSet();
    window->ChannelEditListsDrop();
  }

  const LStringLong folder = LSoundCache::Instance().Folder();
  const long long free = LDiskFreeBytes(folder.c_str());
  if (free >= 0 && free < kLowDiskBytes) {
    char text[2048];
    const char* name = file.Path()[0] ? file.Path() : window->Title().c_str();
    std::snprintf(text, sizeof text, kSVLowDiskText, name);
    view.WindowMessage(window, text);
  }
  view.Refresh(window);
  const LStringLong playback =
      LUserSettings::Instance().Get(kLSettingsDomain, kSVSettingsSection, kSVSettingAutoPlayback);
  if (!playback.empty() && playback != "0") view.StartPlayback(window);
  manager.UndoMenuUpdate();
  return true;
}

void SVCoreUtils::CancelModifyFile(SVFileGUI* window) {
  if (!window || !window->File()) return;
  SVFile& file = *window->File();
  if (window->HasChannelEditLists()) {
    // The split-out channel goes; the document is the whole list again.
    file.CutList() = window->ChannelEditBefore();
    window->ChannelEditListsDrop();
  }
  file.UndoEntryDrop();
  window->Manager().UndoMenuUpdate();
}

void SVCoreUtils::RollBackModifyFile(SVFileGUI* window) {
  if (!window || !window->File()) return;
  SVFile& file = *window->File();
  // The snapshot was taken before any channel was split out, so it holds the whole list.
  if (window->HasChannelEditLists()) window->ChannelEditListsDrop();
  file.UndoRollBack();
  SVFrontEnd& view = window->Manager().FrontEnd();
  view.Notify(window, file.IsModified() ? kSVNotifyModified : kSVNotifyClean);
  view.Refresh(window);
  window->Manager().UndoMenuUpdate();
}
