#pragma once
// Rendering a source into a new cut list: the source is pumped to its end into a
// new cache item (through the cut list's sink, with the source's rate and
// channels), under a title and with progress and cancel. What band selections,
// channel splits and merges use.
#include "base/process_interface.h"
#include "engine/cut_list_audio.h"
#include "engine/sound_source.h"

// On success out is one segment over the new item. On cancel or failure out is
// an empty cut list (44100 Hz, 1 channel) and the partial item is released.
[[nodiscard]] LProcessResult SVCutListRender(LProcessInterface& process, const char* title, LSoundSource source,
                                             LCutListAudio& out);
