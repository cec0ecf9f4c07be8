#pragma once
// The factory that rebuilds effects from saved data: a new effect object with its
// default settings for a type id of the type table. An id whose effect this build
// does not have (an unassigned id, an id of a newer build, an effect not built
// yet, and the Audio Unit plug-in on this platform) gives an LSPUnknown that keeps
// the id. 0 and 16384 name no effect and give null.
#include <memory>

#include "effects/sound_process.h"

[[nodiscard]] std::unique_ptr<LSoundProcess> LSoundProcessCreate(int type);
