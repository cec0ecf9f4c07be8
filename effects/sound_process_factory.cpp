#include "effects/sound_process_factory.h"

#include "effects/echo.h"
#include "effects/eq.h"
#include "effects/gain.h"
#include "effects/sound_process_type.h"
#include "effects/sound_process_unknown.h"

std::unique_ptr<LSoundProcess> LSoundProcessCreate(int type) {
  switch (type) {
    case kLSPTypeNone:
    case kLSPTypePluginInfo:
      return nullptr;
    case kLSPTypeGain:
      return std::make_unique<LSPGain>();
    case kLSPTypeEcho:
      return std::make_unique<LSPEcho>();
    case kLSPTypePointListEq:
      return std::make_unique<LSPEq>();
    default:
      // Including kLSPTypeAudioUnitPlugin: there are no Audio Units to host here.
      return std::make_unique<LSPUnknown>(type);
  }
}
