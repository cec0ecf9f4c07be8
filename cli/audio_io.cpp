#include "cli/audio_io.h"

#include <cstdio>

#include "base/platform_file.h"
#include "formats/open_error.h"
#include "formats/wave_file.h"

namespace {

std::string WaveDescription(const LWaveFileFormat& f) {
  char text[96];
  switch (f.tag) {
    case kLWaveTagPCM:
      std::snprintf(text, sizeof text, "WAVE, PCM %u Bit", f.bitsPerSample);
      break;
    case kLWaveTagIEEEFloat:
      std::snprintf(text, sizeof text, "WAVE, Gleitkomma %u Bit", f.bitsPerSample);
      break;
    case kLWaveTagALaw:
      return "WAVE, A-law";
    case kLWaveTagMuLaw:
      return "WAVE, µ-law";
    case kLWaveTagIMAADPCM:
      return "WAVE, IMA ADPCM";
    case kLWaveTagGSM610:
      return "WAVE, GSM 6.10";
    default:
      std::snprintf(text, sizeof text, "WAVE, Formatkennung %u", f.tag);
  }
  return text;
}

const char* RawDescription(int code) {
  switch (code) {
    case kLRawVOX: return "Rohdaten, Dialogic VOX ADPCM";
    case kLRawMuLaw: return "Rohdaten, µ-law";
    case kLRawALaw: return "Rohdaten, A-law";
    case kLRaw16: return "Rohdaten, PCM 16 Bit";
    case kLRawU8: return "Rohdaten, PCM 8 Bit ohne Vorzeichen";
    case kLRawS8: return "Rohdaten, PCM 8 Bit";
    case kLRawBE16: return "Rohdaten, PCM 16 Bit Big-Endian";
    case kLRawFloat: return "Rohdaten, Gleitkomma 32 Bit";
    case kLRawFloatBE: return "Rohdaten, Gleitkomma 32 Bit Big-Endian";
    default: return "Rohdaten";
  }
}

}  // namespace

LSoundSource OpenInput(const std::string& path, const std::optional<LRawSettings>& raw,
                       InputDescription* description, std::string* message) {
  LSoundSource source;
  if (raw) {
    source = LRawFile::OpenSource(path.c_str(), *raw);
    description->format = RawDescription(raw->formatCode);
    if (!source.IsError() && !LFileExists(path.c_str())) source = LSoundSource::Error(kLSourceCannotOpen);
  } else {
    LWaveFileFormat format;
    source = LWaveFile::OpenSource(path.c_str(), &format);
    description->format = WaveDescription(format);
  }
  if (source.IsError()) *message = LOpenErrorMessage(source.GetErrorCode(), path.c_str());
  return source;
}

bool IsKnownLayout(const std::string& layout) {
  for (const char* name : {"pcm8", "pcm16", "pcm24", "pcm32", "float", "alaw", "ulaw", "ima", "gsm", "raw"}) {
    if (layout == name) return true;
  }
  return false;
}

std::string DefaultLayoutFor(const InputDescription& input) {
  const std::string& f = input.format;
  if (f.find("PCM 8") != std::string::npos) return "pcm8";
  if (f.find("PCM 24") != std::string::npos) return "pcm24";
  if (f.find("PCM 32") != std::string::npos) return "pcm32";
  if (f.find("Gleitkomma") != std::string::npos) return "float";
  if (f.find("A-law") != std::string::npos) return "alaw";
  if (f.find("µ-law") != std::string::npos) return "ulaw";
  return "pcm16";
}

LSoundSink OpenOutput(const std::string& path, const OutputChoice& choice, std::uint32_t sampleRate,
                      std::uint8_t channels, std::string* message) {
  LSoundSink sink;
  const std::string& l = choice.layout;
  const char* p = path.c_str();
  int rate = static_cast<int>(sampleRate);
  if (l == "pcm8" || l == "pcm16" || l == "pcm24" || l == "pcm32") {
    unsigned short bits = static_cast<unsigned short>(std::stoi(l.substr(3)));
    sink = LWaveFile::OpenSinkPCM(p, rate, channels, bits, 0, choice.dither);
  } else if (l == "float") {
    sink = LWaveFile::OpenSinkFloatExport(p, rate, channels);
  } else if (l == "alaw" || l == "ulaw" || l == "ima" || l == "gsm") {
    if ((l == "ima" || l == "gsm") && channels != 1) {
      *message = "Das Format \"" + l + "\" kann nur Mono-Audio speichern.";
      return LSoundSink::Error();
    }
    LWaveFileFormat format;
    format.tag = l == "alaw" ? kLWaveTagALaw : l == "ulaw" ? kLWaveTagMuLaw : l == "ima" ? kLWaveTagIMAADPCM : kLWaveTagGSM610;
    format.channels = channels;
    format.sampleRate = sampleRate;
    format.bitsPerSample = (l == "ima") ? 4 : (l == "gsm") ? 0 : 8;
    sink = LWaveFile::OpenSink(p, format);
  } else if (l == "raw") {
    LRawSettings raw = choice.raw;
    raw.sampleRate = rate;
    raw.channels = channels;
    sink = LRawFile::OpenSink(p, raw);
  } else {
    *message = "Unbekanntes Zielformat \"" + l + "\".";
    return LSoundSink::Error();
  }
  if (sink.HasError()) *message = "Die Datei \"" + path + "\" kann nicht geschrieben werden.";
  return sink;
}
