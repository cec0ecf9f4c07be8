#include "cli/info_command.h"

#include <cmath>
#include <cstdio>
#include <optional>

#include "cli/audio_io.h"
#include "cli/command_args.h"
#include "app/frame_time.h"
#include "app/command_line.h"
#include "effects/loudness_meter.h"

namespace {

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

// Markers: the tag model's marker keys, else the container's chapters.
LArray<std::uint64_t> Markers(const LSoundFileInfo& info) {
  LArray<std::uint64_t> markers = info.tags.MarkerSamplesGet();
  if (markers.empty()) {
    for (const LSoundFileChapter& c : info.chapters) markers.push_back(static_cast<std::uint64_t>(c.start));
  }
  return markers;
}

bool IsMarkerKey(const std::string& key) { return key.rfind("marker_", 0) == 0; }

// A loudness figure for JSON: null where there is none (silence).
std::string JsonNumber(double value) {
  if (!std::isfinite(value)) return "null";
  char text[32];
  std::snprintf(text, sizeof text, "%.2f", value);
  return text;
}

}  // namespace

int RunInfoCommand(const std::vector<std::string>& args) {
  CommandOptions parsed;
  if (!ParseOptions(args, "info", "--json --loudness --raw-in=", &parsed)) return kCommandFailed;
  const bool json = parsed.Has("--json");
  const bool wantLoudness = parsed.Has("--loudness");
  std::optional<LRawSettings> raw;
  if (parsed.Has("--raw-in")) {
    LRawSettings settings;
    if (!ParseRawSettings(parsed.Value("--raw-in"), &settings)) {
      PrintError("--raw-in erwartet RATE,KANÄLE,CODE, zum Beispiel 8000,1,1.");
      return kCommandFailed;
    }
    raw = settings;
  }
  const std::vector<std::string>& files = parsed.words;
  if (files.empty()) {
    PrintError("info erwartet mindestens eine Datei.");
    return kCommandFailed;
  }
  int status = kCommandOK;
  if (json) std::printf("[");
  bool first = true;
  for (const std::string& path : files) {
    LSoundFileInfo info;
    std::string message;
    LSoundSource source = OpenInput(path, raw, &info, &message);
    if (source.IsError()) {
      PrintError(message);
      status = kCommandFailed;
      continue;
    }
    const long long frames = source.GetEndSample();
    const std::uint32_t rate = source.GetSampleRate();
    const std::string format = raw ? "Rohdaten" : DescribeFormat(info);
    const LArray<std::uint64_t> markers = Markers(info);
    LLoudness loudness;
    if (wantLoudness) {
      LProcessInterfaceQuiet quiet;
      if (LLoudnessMeasure(quiet, source, loudness) != kLProcessSuccess) {
        PrintError("Die Lautheit von \"" + path + "\" kann nicht gemessen werden.");
        status = kCommandFailed;
        continue;
      }
    }
    if (json) {
      std::printf("%s\n  {\"file\": %s, \"format\": %s, \"codec\": %s, \"sampleRate\": %u, \"channels\": %u, "
                  "\"frames\": %lld, \"duration\": %s, \"streaming\": %s, \"tags\": {",
                  first ? "" : ",", JsonString(path).c_str(), JsonString(format).c_str(),
                  JsonString(info.codecName).c_str(), rate, source.GetChannels(), frames,
                  JsonString(SVFramesTimeText(frames, rate)).c_str(), source.IsStreaming() ? "true" : "false");
      bool firstTag = true;
      for (const auto& tag : info.tags) {
        if (IsMarkerKey(tag.key)) continue;
        std::printf("%s%s: %s", firstTag ? "" : ", ", JsonString(tag.key).c_str(), JsonString(tag.value).c_str());
        firstTag = false;
      }
      std::printf("}, \"markers\": [");
      for (std::size_t i = 0; i < markers.size(); ++i) std::printf("%s%llu", i ? ", " : "", static_cast<unsigned long long>(markers[i]));
      std::printf("]");
      if (wantLoudness) {
        std::printf(", \"loudness\": {\"integratedLufs\": %s, \"rangeLu\": %s, \"truePeakDbtp\": %s}",
                    JsonNumber(loudness.integratedLufs).c_str(), JsonNumber(loudness.rangeLu).c_str(),
                    JsonNumber(loudness.truePeakDb).c_str());
      }
      std::printf("}");
    } else {
      std::printf("%s%s\n", first ? "" : "\n", path.c_str());
      std::printf("  Format:       %s\n", format.c_str());
      std::printf("  Abtastrate:   %u Hz\n", rate);
      std::printf("  Kanäle:       %u\n", source.GetChannels());
      std::printf("  Frames:       %lld%s\n", frames, source.IsStreaming() ? " (wird noch geschrieben)" : "");
      std::printf("  Dauer:        %s\n", SVFramesTimeText(frames, rate).c_str());
      for (const auto& tag : info.tags) {
        if (!IsMarkerKey(tag.key)) std::printf("  Tag:          %s = %s\n", tag.key.c_str(), tag.value.c_str());
      }
      if (wantLoudness) {
        std::printf("  Lautheit:     %s\n", LLoudnessText(loudness.integratedLufs, "LUFS").c_str());
        std::printf("  Bereich:      %s\n", LLoudnessText(loudness.rangeLu, "LU").c_str());
        std::printf("  True Peak:    %s\n", LLoudnessText(loudness.truePeakDb, "dBTP").c_str());
      }
      for (std::uint64_t m : markers) {
        std::printf("  Marke:        %s (%llu)\n", SVFramesTimeText(static_cast<long long>(m), rate).c_str(),
                    static_cast<unsigned long long>(m));
      }
    }
    first = false;
  }
  if (json) std::printf("%s]\n", first ? "" : "\n");
  return status;
}
