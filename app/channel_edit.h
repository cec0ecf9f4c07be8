#pragma once
// Single-channel editing: one channel of a multi-channel cut list is split out
// into a mono cut list of its own, edited, and merged back. Both directions
// render new cache items, with progress and cancel.
#include "base/process_interface.h"
#include "engine/cut_list_audio.h"

// Progress title of both directions.
inline constexpr const char* kSVChannelReplaceTitle = "Kanal wird ersetzt...";

// out := channel `channel` of list as a mono cut list (channel clamped to the list's).
[[nodiscard]] LProcessResult SVChannelSplit(LProcessInterface& process, const LCutListAudio& list, int channel,
                                            LCutListAudio& out);
// out := before with channel `channel` replaced by the mono list edited; as long
// as the longer of the two.
[[nodiscard]] LProcessResult SVChannelMerge(LProcessInterface& process, const LCutListAudio& before,
                                            const LCutListAudio& edited, int channel, LCutListAudio& out);
