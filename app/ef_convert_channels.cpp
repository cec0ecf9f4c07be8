#include "app/ef_convert_channels.h"

#include <limits>

#include "app/cut_list_render.h"
#include "engine/channel_map_source.h"

int SVEfConvertChannels::ProcessCutList(LProcessInterface& process, LCutListAudio& piece) {
  const SVSelection& selection = Selection();
  const bool whole = selection.start <= 0 && selection.end >= CutList().GetLength() && !selection.HasBand();
  if (!whole || channels_ < 1 || channels_ > std::numeric_limits<std::uint8_t>::max()) return kLProcessFailed;
  if (channels_ == piece.GetChannels()) return kLProcessSuccess;
  if (piece.GetLength() == 0) {
    piece.Clear();
    return kLProcessSuccess;
  }
  LCutListAudio output;
  const LProcessResult result =
      SVCutListRender(process, GetEffectName(), LSRCChannelMap::Convert(piece.OpenSource(), channels_), output);
  if (result != kLProcessSuccess) return result;
  piece = std::move(output);
  return kLProcessSuccess;
}
