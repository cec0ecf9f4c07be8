#pragma once
// The ALSA backend (libasound) for machines without a sound server: a thread of
// its own per stream writes or reads the PCM in periods of a quarter buffer.
// Device rates and channel counts are known only once a device is opened.
#include <memory>

#include "audio/audio_device.h"

// Null when this build has no ALSA or libasound cannot be loaded.
[[nodiscard]] std::unique_ptr<LAudioBackend> LAudioAlsaBackendCreate();
