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

