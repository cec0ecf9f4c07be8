#include "app/channel_edit.h"

#include "app/channel_replace_source.h"
#include "app/cut_list_render.h"
#include "engine/channel_map_source.h"

LProcessResult SVChannelSplit(LProcessInterface& process, const LCutListAudio& list, int channel,
                              LCutListAudio& out) {
  return SVCutListRender(process, kSVChannelReplaceTitle, LSRCChannelMap::Pick(list.OpenSource(), channel), out);
}

LProcessResult SVChannelMerge(LProcessInterface& process, const LCutListAudio& before, const LCutListAudio& edited,
                              int channel, LCutListAudio& out) {
  LSoundSource merged = LMakeSource<LSRCChannelReplace>(before.OpenSource(), edited.OpenSource(), channel);
  return SVCutListRender(process, kSVChannelReplaceTitle, std::move(merged), out);
}
