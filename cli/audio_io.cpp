#include "cli/audio_io.h"

#include "base/platform_file.h"

LSoundSource OpenInput(const std::string& path, const std::optional<LRawSettings>& raw, LSoundFileInfo* info,
                       std::string* message) {
  if (!LFileExists(path.c_str())) {
    *message = "Die Datei \"" + path + "\" kann nicht geöffnet werden. Überprüfen Sie, ob diese existiert und Sie Lesezugriff haben.";
    return LSoundSource::Error(kLSourceCannotOpen);
  }
  LSoundSource source = raw ? LSoundFile::OpenSource(path.c_str(), *raw, info) : LSoundFile::OpenSource(path.c_str(), info);
  if (source.IsError()) *message = LSoundFile::OpenErrorMessage(source, path.c_str(), *info);
  return source;
}

std::string DescribeFormat(const LSoundFileInfo& info) {
  std::string text = info.formatLongName.empty() ? info.formatName : info.formatLongName;
  const std::string& c = info.codecName;
  const bool pcm = c.rfind("pcm_", 0) == 0;
  if (pcm && (c == "pcm_alaw" || c == "pcm_mulaw")) {
    text += c == "pcm_alaw" ? ", A-law" : ", µ-law";
  } else if (pcm && info.bitsPerSample > 0) {
    const bool floating = c.find("pcm_f") == 0;
    text += (floating ? ", Gleitkomma " : ", PCM ") + std::to_string(info.bitsPerSample) + " Bit";
  } else {
    if (!info.codecLongName.empty() || !c.empty()) text += ", " + (info.codecLongName.empty() ? c : info.codecLongName);
    if (info.bitRate > 0) text += ", " + std::to_string(info.bitRate / 1000) + " kbit/s";
  }
  if (info.hasVideo) text += " (Tonspur eines Videos)";
  return text;
}

bool FormatFromName(const std::string& name, LSoundFileFormat* format, std::string* message) {
  if (LSoundFileLayoutFromName(name.c_str(), &format->layout)) {
    format->kind = LSoundFileKind::kWave;
    return true;
  }
  if (LSoundFileKindFromName(name.c_str(), &format->kind)) return true;
  *message = "Unbekanntes Format \"" + name +
             "\". Möglich sind wav, rf64, aiff, mp3, flac, ogg, opus, raw und die WAVE-Formate pcm8, pcm16, pcm24, "
             "pcm32, float, alaw, ulaw, ima, gsm.";
  return false;
}

bool FormatForTarget(const std::string& target, const std::string& name, const LSoundFileInfo* input,
                     LSoundFileFormat* format, std::string* message) {
  if (!name.empty()) {
    if (!FormatFromName(name, format, message)) return false;
    LSoundFileLayout layout;
    // A layout name with a target of another kind ("out.aiff --to pcm24") keeps the target's kind.
    LSoundFileKind kind;
    if (LSoundFileLayoutFromName(name.c_str(), &layout) && LSoundFileKindForPath(target.c_str(), &kind)) format->kind = kind;
    return true;
  }
  if (!LSoundFileKindForPath(target.c_str(), &format->kind)) {
    *message = "Das Format von \"" + target + "\" lässt sich nicht an der Endung erkennen. Bitte --to FORMAT angeben.";
    return false;
  }
  if (input && (format->kind == LSoundFileKind::kWave || format->kind == LSoundFileKind::kAiff)) {
    const std::string& c = input->codecName;
    if (c == "pcm_u8" || c == "pcm_s8") format->layout = LSoundFileLayout::kPcm8;
    else if (c.find("24") != std::string::npos) format->layout = LSoundFileLayout::kPcm24;
    else if (c.find("s32") != std::string::npos) format->layout = LSoundFileLayout::kPcm32;
    else if (c.find("f32") != std::string::npos || c.find("f64") != std::string::npos) format->layout = LSoundFileLayout::kFloat;
    else if (c == "pcm_alaw" && format->kind == LSoundFileKind::kWave) format->layout = LSoundFileLayout::kALaw;
    else if (c == "pcm_mulaw" && format->kind == LSoundFileKind::kWave) format->layout = LSoundFileLayout::kULaw;
  }
  return true;
}
