#include "cli/info_command.h"

#include <cstdio>
#include <optional>

#include "cli/audio_io.h"
#include "cli/command_args.h"
#include "engine/sound_time.h"

namespace {

long long DurationMs(long long frames, std::uint32_t rate) {
  if (rate == 0) return 0;
  return (frames / rate) * 1000 + ((frames % rate) * 1000) / rate;
}

std::string JsonString(const std::string& s) {
  std::string out = "\"";
  for (unsigned char c : s) {
    if (c == '"' || c == '\\') {
      out += '\\';
      out += static_cast<char>(c);
    } else if (c < 0x20) {
      char esc[8];
      std::snprintf(esc, sizeof esc, "\\u%04x", c);
      out += esc;
    } else {
      out += static_cast<char>(c);
    }
  }
  return out + "\"";
}

}  // namespace

int RunInfoCommand(const std::vector<std::string>& args) {
  bool json = false;
  std::optional<LRawSettings> raw;
  std::vector<std::string> files;
  for (size_t i = 0; i < args.size(); ++i) {
    const std::string& a = args[i];
    if (a == "--json") {
      json = true;
    } else if (a == "--raw-in") {
      LRawSettings settings;
      if (i + 1 >= args.size() || !ParseRawSettings(args[++i], &settings)) {
        PrintError("--raw-in erwartet RATE,KANÄLE,CODE, zum Beispiel 8000,1,1.");
        return kCommandFailed;
      }
      raw = settings;
    } else if (a.size() > 1 && a[0] == '-') {
      PrintError("Unbekannte Option \"" + a + "\" für info.");
      return kCommandFailed;
    } else {
      files.push_back(a);
    }
  }
  if (files.empty()) {
    PrintError("info erwartet mindestens eine Datei.");
    return kCommandFailed;
  }
  int status = kCommandOK;
  if (json) std::printf("[");
  bool first = true;
  for (const std::string& path : files) {
    InputDescription description;
    std::string message;
    LSoundSource source = OpenInput(path, raw, &description, &message);
    if (source.IsError()) {
      PrintError(message);
      status = kCommandFailed;
      continue;
    }
    long long frames = source.GetEndSample();
    char duration[40];
    LSoundTime(DurationMs(frames, source.GetSampleRate()))._GetTextHMMSSFFF(duration);
    if (json) {
      std::printf("%s\n  {\"file\": %s, \"format\": %s, \"sampleRate\": %u, \"channels\": %u, \"frames\": %lld, "
                  "\"duration\": %s, \"streaming\": %s}",
                  first ? "" : ",", JsonString(path).c_str(), JsonString(description.format).c_str(),
                  source.GetSampleRate(), source.GetChannels(), frames, JsonString(duration).c_str(),
                  source.IsStreaming() ? "true" : "false");
    } else {
      std::printf("%s%s\n", first ? "" : "\n", path.c_str());
      std::printf("  Format:       %s\n", description.format.c_str());
      std::printf("  Abtastrate:   %u Hz\n", source.GetSampleRate());
      std::printf("  Kanäle:       %u\n", source.GetChannels());
      std::printf("  Frames:       %lld%s\n", frames, source.IsStreaming() ? " (wird noch geschrieben)" : "");
      std::printf("  Dauer:        %s\n", duration);
    }
    first = false;
  }
  if (json) std::printf("%s]\n", first ? "" : "\n");
  return status;
}
