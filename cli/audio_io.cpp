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
    // Lossless codecs keep a depth worth showing.
    if (info.bitsPerSample > 0) text += ", " + std::to_string(info.bitsPerSample) + " Bit";
    if (info.bitRate > 0) text += ", " + std::to_string(info.bitRate / 1000) + " kbit/s";
  }
  if (info.hasVideo) text += " (Tonspur eines Videos)";
  return text;
}

bool FormatForTarget(const std::string& target, const std::string& name, const LSoundFileInfo* input,
                     const std::string& quality, LSoundFileFormat* format, std::string* message) {
  LSoundFileFormat original;
  const bool known = input && LSoundFileFormatOf(*input, &original);
  if (!LSoundFileFormatChoose(target, name, known ? &original : nullptr, format, message)) return false;
  return quality.empty() || LSoundFileQualityParse(quality, format, message);
}
