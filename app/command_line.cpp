#include "app/command_line.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>

#include "app/frame_time.h"
#include "app/command_table.h"
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


namespace {

CommandWords Split(const std::string& text, char separator) {
  CommandWords parts;
  std::size_t at = 0;
  for (std::size_t end; (end = text.find(separator, at)) != std::string::npos; at = end + 1)
    parts.push_back(text.substr(at, end - at));
  parts.push_back(text.substr(at));
  return parts;
}

// How many words of the row's alternatives the command words start with; 0 when none.
std::size_t WordsMatched(const SVCommandInfo& info, const CommandWords& words) {
  std::size_t best = 0;
  for (const std::string& alternative : Split(info.word, '|')) {
    const CommandWords tokens = Split(alternative, ' ');
    if (tokens.size() <= words.size() && std::equal(tokens.begin(), tokens.end(), words.begin()))
      best = std::max(best, tokens.size());
  }
  return best;
}

// The usages of every row whose first word is word, joined.
std::string UsagesOf(const std::string& word) {
  std::string usages;
  for (const SVCommandInfo& info : SVCommandTable()) {
    if (Split(Split(info.word, '|')[0], ' ')[0] != word) continue;
    usages += (usages.empty() ? "" : " | ") + SVCommandUsage(info);
  }
  return usages;
}

}  // namespace

bool ParseCommandWords(const CommandWords& words, unsigned rate, int* id, SVCommandArgs* args, std::string* error) {
  const SVCommandInfo* row = nullptr;
  std::size_t matched = 0;
  for (const SVCommandInfo& info : SVCommandTable()) {
    const std::size_t n = WordsMatched(info, words);
    if (n > matched) {
      matched = n;
      row = &info;
    }
  }
  if (!row) {
    *error = "Unbekannter Befehl \"" + words[0] + "\". \"hilfe\" zeigt die Befehle.";
    return false;
  }
  const std::string usage = "Aufruf: " + UsagesOf(words[0]);
  const CommandWords options = Split(row->options, ' ');
  CommandWords rest;
  for (std::size_t i = matched; i < words.size(); ++i) {
    const auto option = std::find(options.begin(), options.end(), words[i]);
    if (words[i].rfind("--", 0) != 0 || option == options.end()) {
      rest.push_back(words[i]);
      continue;
    }
    // An option followed by an upper-case placeholder in the row takes a value.
    const bool takesValue = option + 1 != options.end() && (option + 1)->rfind("--", 0) != 0;
    if (takesValue && i + 1 >= words.size()) {
      *error = usage;
      return false;
    }
    const std::string& name = words[i];
    args->options[name] = takesValue ? words[++i] : std::string();
  }
  std::size_t next = 0;
  for (const SVArgSpec& shape : row->args) {
    if (shape.kind == SVArgKind::kNone) break;
    if (next >= rest.size()) {
      if (shape.optional) break;
      *error = usage;
      return false;
    }
    const std::string& word = rest[next++];
    switch (shape.kind) {
      case SVArgKind::kTime: {
        long long frames = 0;
        if (!ParseTimeToFrames(word, rate, &frames)) {
          *error = "Ungültige Zeitangabe \"" + word + "\". Erlaubt sind zum Beispiel 1:02.5, 90 oder 4410f.";
          return false;
        }
        args->times.push_back(frames);
        break;
      }
      case SVArgKind::kNumber: {
        double value = 0;
        if (!ParseNumber(word, &value)) {
          *error = usage;
          return false;
        }
        args->numbers.push_back(value);
        break;
      }
      case SVArgKind::kTexts:
        args->texts.insert(args->texts.end(), rest.begin() + static_cast<long>(next) - 1, rest.end());
        next = rest.size();
        break;
      default:
        args->texts.push_back(word);
        break;
    }
  }
  if (next < rest.size()) {
    *error = usage;
    return false;
  }
  *id = row->id;
  return true;
}
