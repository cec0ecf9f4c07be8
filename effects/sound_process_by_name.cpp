#include "effects/sound_process_by_name.h"

#include <cctype>

#include "effects/sound_process_factory.h"
#include "effects/sound_process_type.h"

namespace {

struct EffectKey {
  const char* key;
  int type;
};
// The effects this build processes itself, with their short keys.
constexpr EffectKey kEffectKeys[] = {{"echo", kLSPTypeEcho}, {"gain", kLSPTypeGain}};

}  // namespace

std::string LSoundProcessFoldName(const std::string& text) {
  std::string out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    unsigned char c = static_cast<unsigned char>(text[i]);
    if (c == 0xC3 && i + 1 < text.size()) {
      unsigned char d = static_cast<unsigned char>(text[++i]);
      switch (d) {
        case 0xA4: case 0x84: out += 'a'; break;                        // ä Ä
        case 0xB6: case 0x96: out += 'o'; break;                        // ö Ö
        case 0xBC: case 0x9C: out += 'u'; break;                        // ü Ü
        case 0x9F: out += "ss"; break;                                  // ß
        case 0xA9: case 0xA8: case 0x89: case 0x88: out += 'e'; break;  // é è É È
        case 0xA0: case 0xA1: case 0xA2: out += 'a'; break;             // à á â
        default: break;
      }
      continue;
    }
    if (std::isspace(c) || c == '-' || c == '_') continue;
    out += static_cast<char>(std::tolower(c));
  }
  return out;
}

std::unique_ptr<LSoundProcess> LSoundProcessCreateByName(const std::string& name) {
  const std::string wanted = LSoundProcessFoldName(name);
  for (const EffectKey& k : kEffectKeys) {
    std::unique_ptr<LSoundProcess> effect = LSoundProcessCreate(k.type);
    char label[kLPathMax] = {};
    if (effect && (wanted == k.key || LSoundProcessFoldName(effect->GetName(label)) == wanted)) return effect;
  }
  return nullptr;
}

std::string LSoundProcessNamesText() {
  std::string text;
  for (const EffectKey& k : kEffectKeys) {
    std::unique_ptr<LSoundProcess> effect = LSoundProcessCreate(k.type);
    char label[kLPathMax] = {};
    if (!text.empty()) text += ", ";
    text += std::string(k.key) + " (" + (effect ? effect->GetName(label) : "") + ")";
  }
  return text;
}
