#include "audio/audio_device.h"

#include <cstdlib>

#include "audio/audio_alsa_backend.h"
#include "audio/audio_null_backend.h"
#include "audio/audio_pulse_backend.h"

std::string LAudioStatusMessage(LAudioStatus status, const std::string& device) {
  const std::string named = device.empty() ? "Das Audiogerät" : "Das Audiogerät \"" + device + "\"";
  switch (status) {
    case LAudioStatus::kOK:
      return "";
    case LAudioStatus::kBackendMissing:
      return "Diese Audio-Schnittstelle ist in dieser Ausgabe von Sonvale nicht verfügbar.";
    case LAudioStatus::kNoServer:
      return "Der Audio-Server antwortet nicht. Läuft PulseAudio oder PipeWire?";
    case LAudioStatus::kNoDevice:
      return device.empty() ? "Es ist kein passendes Audiogerät vorhanden."
                            : "Das Audiogerät \"" + device + "\" wurde nicht gefunden. \"sonvale devices\" zeigt die Geräte.";
    case LAudioStatus::kFormatRefused:
      return named + " nimmt diese Abtastrate, Kanalzahl oder Puffergröße nicht an.";
    case LAudioStatus::kDeviceLost:
      return named + " ist nicht mehr verfügbar. Die Wiedergabe oder Aufnahme wurde beendet.";
    case LAudioStatus::kFailed:
      break;
  }
  return named + " konnte nicht geöffnet werden.";
}

const LAudioDeviceInfo* LAudioDeviceFind(const std::vector<LAudioDeviceInfo>& devices, LAudioDirection direction,
                                         const std::string& wanted) {
  const LAudioDeviceInfo* fallback = nullptr;
  for (const auto& d : devices) {
    if (d.direction != direction) continue;
    if (wanted.empty() ? d.isDefault : d.name == wanted) return &d;
    if (wanted.empty() && !fallback) fallback = &d;
  }
  if (!wanted.empty()) {
    for (const auto& d : devices)
      if (d.direction == direction && d.description == wanted) return &d;
  }
  return fallback;
}

std::unique_ptr<LAudioBackend> LAudioBackendCreate(const std::string& name) {
  std::string chosen = name;
  if (chosen.empty()) {
    const char* set = std::getenv(kLAudioBackendVariable);
    if (set && *set) chosen = set;
  }
  if (chosen == "null") return std::make_unique<LAudioNullBackend>();
  if (chosen == "pulse") return LAudioPulseBackendCreate();
  if (chosen == "alsa") return LAudioAlsaBackendCreate();
  if (!chosen.empty()) return nullptr;
  // No server answering is the usual case on a machine without a desktop.
  if (auto pulse = LAudioPulseBackendCreate()) {
    std::vector<LAudioDeviceInfo> devices;
    if (pulse->Enumerate(&devices) != LAudioStatus::kNoServer) return pulse;
  }
  if (auto alsa = LAudioAlsaBackendCreate()) return alsa;
  return std::make_unique<LAudioNullBackend>();
}
