#include "cli/devices_command.h"

#include <cstdio>

#include "cli/command_args.h"
#include "engine/sound_time.h"

namespace {

std::string Json(const std::string& s) {
  std::string out = "\"";
  for (const unsigned char c : s) {
    if (c == '"' || c == '\\') {
      out += '\\';
      out += static_cast<char>(c);
    } else if (c < 0x20) {
      char escaped[8];
      std::snprintf(escaped, sizeof escaped, "\\u%04x", c);
      out += escaped;
    } else {
      out += static_cast<char>(c);
    }
  }
  return out + "\"";
}

std::string Format(const LAudioDeviceInfo& d) {
  std::string text;
  if (d.sampleRate > 0) text += std::to_string(d.sampleRate) + " Hz";
  if (d.channels > 0) text += (text.empty() ? "" : ", ") + std::to_string(d.channels) + (d.channels == 1 ? " Kanal" : " Kanäle");
  return text.empty() ? "Format beim Öffnen" : text;
}

}  // namespace

std::unique_ptr<LAudioBackend> AudioBackendOpen(std::string* message) {
  auto backend = LAudioBackendCreate();
  if (!backend) *message = LAudioStatusMessage(LAudioStatus::kBackendMissing);
  return backend;
}

std::unique_ptr<LAudioBackend> AudioBackendWithDevices(std::vector<LAudioDeviceInfo>* devices, const std::string& device) {
  std::string message;
  auto backend = AudioBackendOpen(&message);
  if (!backend) {
    PrintError(message);
    return nullptr;
  }
  if (LAudioStatus status = backend->Enumerate(devices); status != LAudioStatus::kOK) {
    PrintError(LAudioStatusMessage(status, device));
    return nullptr;
  }
  return backend;
}

std::string LevelText(const LAudioLevelReading& reading) {
  static const char* const kNames[] = {"L", "R", "3", "4", "5", "6", "7", "8"};
  std::string text;
  for (int c = 0; c < reading.channels; ++c) {
    char part[48];
    std::snprintf(part, sizeof part, "%s%s %6.1f dB%s", c ? "  " : "", reading.channels == 1 ? "M" : kNames[c],
                  LAudioLevels::Decibels(reading.peak[c]), reading.clipped[c] ? " ÜBERSTEUERT" : "");
    text += part;
  }
  return text;
}

std::string FramesClock(long long frames, std::uint32_t rate) {
  char text[32];
  LSoundTime(rate ? frames * 1000 / rate : 0)._GetTextHMMSSF(text);
  return text;
}

int RunDevicesCommand(const std::vector<std::string>& args) {
  bool json = false;
  for (const auto& a : args) {
    if (a == "--json") {
      json = true;
    } else {
      PrintError("Unbekannte Option \"" + a + "\" für devices.");
      return kCommandFailed;
    }
  }
  std::vector<LAudioDeviceInfo> devices;
  auto backend = AudioBackendWithDevices(&devices);
  if (!backend) return kCommandFailed;
  if (json) {
    std::printf("{\"backend\": %s", Json(backend->Name()).c_str());
    for (const auto direction : {LAudioDirection::kOutput, LAudioDirection::kInput}) {
      std::printf(", %s: [", direction == LAudioDirection::kOutput ? "\"outputs\"" : "\"inputs\"");
      bool first = true;
      for (const auto& d : devices) {
        if (d.direction != direction) continue;
        std::printf("%s\n  {\"name\": %s, \"description\": %s, \"rate\": %u, \"channels\": %d, \"default\": %s}",
                    first ? "" : ",", Json(d.name).c_str(), Json(d.description).c_str(), d.sampleRate, d.channels,
                    d.isDefault ? "true" : "false");
        first = false;
      }
      std::printf("]");
    }
    std::printf("}\n");
    return kCommandOK;
  }
  std::printf("Schnittstelle: %s\n", backend->Name());
  for (const auto direction : {LAudioDirection::kOutput, LAudioDirection::kInput}) {
    std::printf("%s\n", direction == LAudioDirection::kOutput ? "Ausgabegeräte:" : "Eingabegeräte:");
    bool any = false;
    for (const auto& d : devices) {
      if (d.direction != direction) continue;
      std::printf("  %s %s  \"%s\"  %s\n", d.isDefault ? "*" : " ", d.name.c_str(), d.description.c_str(),
                  Format(d).c_str());
      any = true;
    }
    if (!any) std::printf("    (keine)\n");
  }
  std::printf("* Standardgerät\n");
  return kCommandOK;
}
