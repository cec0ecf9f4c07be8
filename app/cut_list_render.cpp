#include "app/cut_list_render.h"

#include "engine/source_to_sink.h"

LProcessResult SVCutListRender(LProcessInterface& process, const char* title, LSoundSource source,
                               LCutListAudio& out) {
  LCutListAudio rendered;
  if (source.IsEmpty() || source.IsError()) {
    out = LCutListAudio();
    return kLProcessFailed;
  }
  const std::uint32_t rate = source.GetSampleRate();
  const std::uint8_t channels = source.GetChannels();
  LProcessResult result;
  {
    // The sink publishes into `rendered` when the job closes it.
    LPRSourceToSink job(title ? title : "", std::move(source), rendered.OpenSink(static_cast<int>(rate), channels, ""),
                        true);
    result = Process(process, job);
  }
  out = result == kLProcessSuccess ? std::move(rendered) : LCutListAudio();
  return result;
}
