#pragma once
// SVEfConvertChannels ("Kanäle konvertieren"): the audio with another channel
// count (mono copied to every channel, several channels averaged into one),
// rendered into a new cache item. A cut list has one channel count, so this
// works only on a selection of the whole list; the caller then gives the list
// the new count (SVEditCommands::ConvertChannels does both).
#include "app/ef_cut_list_process.h"

inline constexpr const char* kSVConvertChannelsLabel = "Kanäle konvertieren";

class SVEfConvertChannels final : public SVEfCutListProcess {
public:
  SVEfConvertChannels(LCutListAudio& list, SVSelection& selection, int channels)
      : SVEfCutListProcess(list, selection), channels_(channels) {}

  [[nodiscard]] const char* GetEffectName() const override { return kSVConvertChannelsLabel; }
  // kLProcessFailed when the selection is not the whole list or the count is not 1 ... 255.
  [[nodiscard]] int ProcessCutList(LProcessInterface& process, LCutListAudio& piece) override;
  [[nodiscard]] int Channels() const { return channels_; }

private:
  int channels_;
};
