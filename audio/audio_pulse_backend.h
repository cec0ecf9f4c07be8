#pragma once
// The PulseAudio backend (also PipeWire's PulseAudio service), on libpulse's
// asynchronous API with a threaded main loop; the loop's thread runs the
// callbacks. A stream on a named device ends as lost when that device goes; a
// stream on the default device follows the server when the default changes.
// The backend must outlive its streams.
#include <memory>

#include "audio/audio_device.h"

// Null when this build has no PulseAudio or libpulse cannot be loaded. Connects on first use.
[[nodiscard]] std::unique_ptr<LAudioBackend> LAudioPulseBackendCreate();
