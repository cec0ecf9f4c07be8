#include "effects/sound_process_by_name.h"

#include <cctype>

#include "effects/sound_process_table.h"

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
  for (const LSoundProcessTypeRow& row : LSoundProcessTypeRows()) {
    if (row.word && row.make && (wanted == row.word || LSoundProcessFoldName(row.name) == wanted)) return row.make();
  }
  return nullptr;
}

std::string LSoundProcessNamesText() {
  std::string text;
  for (const LSoundProcessTypeRow& row : LSoundProcessTypeRows()) {
    if (!row.word || !row.make) continue;
    if (!text.empty()) text += ", ";
    text += std::string(row.word) + " (" + row.name + ")";
  }
  return text;
}
