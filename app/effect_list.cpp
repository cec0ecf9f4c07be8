#include "app/effect_list.h"

#include <cstdint>
#include <cstdio>

#include "effects/sound_process_parameter.h"
#include "effects/sound_process_table.h"

namespace {

// A parameter value of the descriptor's type as a person types it.
std::string ValueText(const LSoundProcessParameter& p, const void* value) {
  char text[64];
  switch (p.type) {
    case kLSPParamInt:
      return std::to_string(LSoundProcessParameter::Get<std::int32_t>(value));
    case kLSPParamUInt8:
      return std::to_string(LSoundProcessParameter::Get<std::uint8_t>(value));
    case kLSPParamLevelDb:
      return std::to_string(LSoundProcessParameter::Get<std::int8_t>(value));
    case kLSPParamBool:
      return LSoundProcessParameter::Get<bool>(value) ? "1" : "0";
    case kLSPParamInt64:
      return std::to_string(LSoundProcessParameter::Get<std::int64_t>(value));
    case kLSPParamUInt16:
      return std::to_string(LSoundProcessParameter::Get<std::uint16_t>(value));
    default:
      std::snprintf(text, sizeof text, "%g", LSoundProcessParameter::Get<double>(value));
      return text;
  }
}

// text and blanks up to width characters (UTF-8 counted by character).
std::string Padded(const std::string& text, std::size_t width) {
  std::size_t characters = 0;
  for (unsigned char c : text) characters += (c & 0xC0) != 0x80;
  return text + std::string(characters < width ? width - characters : 0, ' ');
}

}  // namespace

std::string SVEffectListText() {
  std::string text = "Effekte (effect NAME [PARAMETER=WERT ...] [preset=NAME]):";
  for (const LSoundProcessTypeRow& row : LSoundProcessTypeRows()) {
    if (!row.word || !row.make) continue;
    const std::unique_ptr<LSoundProcess> effect = row.make();
    text += std::string("\n  ") + row.word + " (" + row.name + ")";
    for (int i = 0; i < effect->GetNumParameters(); ++i) {
      LSoundProcessParameter p;
      effect->GetParameterByIndex(i, &p);
      if (!p.bOwned) continue;
      // A unit that names the values ("0 = Spitze, 1 = RMS") reads as a note.
      std::string unit = p.szUnit;
      if (!unit.empty()) unit = unit.find('=') != std::string::npos ? " (" + unit + ")" : " " + unit;
      text += "\n    " + Padded(p.szName, 20) + " " + ValueText(p, p.pMin) + " bis " + ValueText(p, p.pMax) + unit +
              ", Vorgabe " + ValueText(p, p.pValue);
    }
    if (effect->GetNumPresets() > 0) {
      text += "\n    Vorlagen: ";
      for (int i = 0; i < effect->GetNumPresets(); ++i) {
        char name[kLPathMax] = {};
        effect->GetPresetsName(i, name);
        text += std::string(i ? ", \"" : "\"") + name + "\"";
      }
    }
  }
  return text;
}
