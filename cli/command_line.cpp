#include "cli/command_line.h"

#include <cctype>
#include <cstdlib>

#include "app/frame_time.h"
#include "engine/sound_time.h"

bool SplitCommandLine(const std::string& line, std::vector<CommandWords>* commands, std::string* error) {
  CommandWords words;
  std::string word;
  bool inWord = false;
  char quote = 0;
  auto endWord = [&] {
    if (inWord) words.push_back(word);
    word.clear();
    inWord = false;
  };
  auto endCommand = [&] {
    endWord();
    if (!words.empty()) commands->push_back(words);
    words.clear();
  };
  for (char c : line) {
    if (quote) {
      if (c == quote) {
        quote = 0;
      } else {
        word += c;
      }
      continue;
    }
    if (c == '"' || c == '\'') {
      quote = c;
      inWord = true;
    } else if (c == '#') {
      break;
    } else if (c == ';' || c == '\n') {
      endCommand();
    } else if (std::isspace(static_cast<unsigned char>(c))) {
      endWord();
    } else {
      word += c;
      inWord = true;
    }
  }
  if (quote) {
    *error = "Ein Anführungszeichen wurde nicht geschlossen.";
    return false;
  }
  endCommand();
  return true;
}

bool ParseTimeToFrames(const std::string& text, unsigned rate, long long* frames) {
  if (text.size() > 1 && (text.back() == 'f' || text.back() == 'F')) {
    std::string digits = text.substr(0, text.size() - 1);
    if (digits.find_first_not_of("0123456789") != std::string::npos || digits.size() > 18) return false;
    *frames = std::strtoll(digits.c_str(), nullptr, 10);
    return true;
  }
  if (!LSoundTime::IsValid(text.c_str(), false) || text.size() > 24) return false;
  LSoundTime t;
  t.SetText(text.c_str());
  *frames = SVMsToFrames(t.Get(), rate);
  return true;
}

std::string FramesTimeText(long long frames, unsigned rate) {
  char text[40];
  LSoundTime(SVFramesToMs(frames, rate))._GetTextHMMSSFFF(text);
  return text;
}

bool ParseNumber(const std::string& text, double* value) {
  if (text.empty()) return false;
  std::string s = text;
  for (char& c : s) {
    if (c == ',') c = '.';
  }
  char* end = nullptr;
  double v = std::strtod(s.c_str(), &end);
  if (end == s.c_str() || *end != '\0' || v != v) return false;
  *value = v;
  return true;
}

std::string FoldForMatch(const std::string& text) {
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
