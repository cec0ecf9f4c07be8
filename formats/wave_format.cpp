#include "formats/wave_format.h"

const char* LWaveCodecName(std::uint16_t tag) {
  switch (tag) {
    case kLWaveTagIMAADPCM:
      return "IMA ADPCM";
    case kLWaveTagTrueSpeech:
      return "DSP Group TrueSpeech";
    case kLWaveTagGSM610:
      return "GSM 6.10";
    case kLWaveTagSharpG726:
      return "Sharp G.726";
    case kLWaveTagMPEGLayer3:
      return "MPEG Layer 3";
    default:
      return nullptr;
  }
}
