#include "effects/sound_process_factory.h"

#include "effects/sound_process_table.h"
#include "effects/sound_process_type.h"
#include "effects/sound_process_unknown.h"

std::unique_ptr<LSoundProcess> LSoundProcessCreate(int type) {
  if (type == kLSPTypeNone || type == kLSPTypePluginInfo) return nullptr;
  const LSoundProcessTypeRow* row = LSoundProcessTypeRowOf(type);
  if (row && row->make) return row->make();
  return std::make_unique<LSPUnknown>(type);
}
