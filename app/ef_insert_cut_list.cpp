#include "app/ef_insert_cut_list.h"

#include "app/cut_list_render.h"
#include "engine/channel_map_source.h"
#include "engine/resample_source.h"

int SVEfInsertCutList::ProcessCutList(LProcessInterface& process, LCutListAudio& piece) {
  const std::uint32_t rate = piece.GetSampleRate();
  const std::uint8_t channels = piece.GetChannels();
  if (clip_.IsEmpty() || (clip_.GetSampleRate() == rate && clip_.GetChannels() == channels)) {
    LCutListAudio inserted(clip_);
    inserted.SetFormat(rate, channels);
    piece = std::move(inserted);
    return kLProcessSuccess;
  }
  LSoundSource converted = LSRCResample::Convert(LSRCChannelMap::Convert(clip_.OpenSource(), channels), rate);
  LCutListAudio output;
  const LProcessResult result = SVCutListRender(process, kSVInsertConvertTitle, std::move(converted), output);
  if (result != kLProcessSuccess) return result;
  piece = std::move(output);
  return kLProcessSuccess;
}
