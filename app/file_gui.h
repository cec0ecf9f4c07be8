#pragma once
// SVFileGUI: a file window, modelled without a toolkit. It shows one document,
// held through a counted pointer, under a title that is unique among the file
// windows, inside a tab of the main window (SVWindowManager owns the windows).
//
// Single-channel editing: when the document's channel-edit mode word says so
// and the window's switch is on, an edit works on one channel split out of the
// document; the whole list is kept here until the edit is committed or dropped.
#include "app/file.h"
#include "base/counted_ptr.h"
#include "base/string_long.h"
#include "engine/cut_list_audio.h"

class SVWindowManager;

class SVFileGUI {
public:
  SVFileGUI(SVWindowManager& manager, LCountedPtr<SVFile> file) : manager_(manager), file_(std::move(file)) {}
  SVFileGUI(const SVFileGUI&) = delete;
  SVFileGUI& operator=(const SVFileGUI&) = delete;

  [[nodiscard]] SVWindowManager& Manager() const { return manager_; }
  [[nodiscard]] SVFile* File() const { return file_.get(); }
  [[nodiscard]] const LCountedPtr<SVFile>& FilePtr() const { return file_; }

  [[nodiscard]] const LStringLong& Title() const { return title_; }
  void TitleSet(LStringLong title) { title_ = std::move(title); }
  // A closing window takes no more commands.
  [[nodiscard]] bool IsClosing() const { return closing_; }
  void ClosingSet(bool closing) { closing_ = closing; }

  // The window's channel-edit switch and the channel it edits.
  void ChannelEditSwitchSet(bool on, int channel) {
    channelSwitch_ = on;
    channel_ = channel;
  }
  [[nodiscard]] bool ChannelEditSwitch() const { return channelSwitch_; }
  [[nodiscard]] int ChannelEditChannel() const { return channel_; }
  // Edits work on one channel: the document's mode word and the switch agree.
  [[nodiscard]] bool IsChannelEditing() const {
    return file_ && file_->ChannelEditMode() == kSVChannelEditSingle && channelSwitch_;
  }

  // The whole list kept aside while one channel is being edited.
  [[nodiscard]] bool HasChannelEditLists() const { return channelListsKept_; }
  [[nodiscard]] const LCutListAudio& ChannelEditBefore() const { return channelBefore_; }
  void ChannelEditListsKeep(LCutListAudio before) {
    channelBefore_ = std::move(before);
    channelListsKept_ = true;
  }
  void ChannelEditListsDrop() {
    channelBefore_ = LCutListAudio();
    channelListsKept_ = false;
  }

private:
  SVWindowManager& manager_;
  LCountedPtr<SVFile> file_;
  LStringLong title_;
  bool closing_ = false;
  bool channelSwitch_ = false;
  int channel_ = 0;
  bool channelListsKept_ = false;
  LCutListAudio channelBefore_;
};
