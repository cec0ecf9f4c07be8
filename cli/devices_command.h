#pragma once
// sonvale devices [--json]: the sound devices, the default ones marked.
// Also what play and record share: choosing the backend and the level line.
#include <memory>
#include <string>
#include <vector>

#include "audio/audio_device.h"
#include "audio/audio_levels.h"

[[nodiscard]] int RunDevicesCommand(const std::vector<std::string>& args);

// The backend (SONVALE_AUDIO_BACKEND or the first that answers); null with a German message.
[[nodiscard]] std::unique_ptr<LAudioBackend> AudioBackendOpen(std::string* message);
// The backend with its devices listed afresh; null after printing why (device
// names the device a failure concerns, empty for none).
[[nodiscard]] std::unique_ptr<LAudioBackend> AudioBackendWithDevices(std::vector<LAudioDeviceInfo>* devices,
                                                                     const std::string& device = {});
// "L -12.0 dB  R -11.5 dB", with "ÜBERSTEUERT" after a clipped channel.
[[nodiscard]] std::string LevelText(const LAudioLevelReading& reading);
// H:MM:SS.t of a frame count.
[[nodiscard]] std::string FramesClock(long long frames, std::uint32_t rate);
