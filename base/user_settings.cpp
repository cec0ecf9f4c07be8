#include "base/user_settings.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>

#include "base/file_stream.h"
#include "base/platform_file.h"
#include "base/safe_save.h"
#include "base/user_folders.h"

namespace {

// Extension of a domain's file; on disk, never change it.
constexpr const char* kSettingsFileExtension = ".ini";
constexpr long long kReadBlockBytes = 4096;

bool DomainNameOk(const char* domain) {
  if (!domain || !*domain) return false;
  for (const char* p = domain; *p; ++p) {
    char c = *p;
    bool ok = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_' || c == '-';
    if (!ok) return false;
  }
  return true;
}

// Backslash escapes keep every text on one line and keep "=" and "]" out of the way of the parser.
void AppendEscaped(LStringLong& out, const LStringLong& text) {
  for (char c : text) {
    switch (c) {
      case '\\': out += "\\\\"; break;
      case '\n': out += "\\n"; break;
      case '\r': out += "\\r"; break;
      case '=': out += "\\="; break;
      case '[': out += "\\["; break;
      case ']': out += "\\]"; break;
      default: out += c;
    }
  }
}

// Reads an escaped text from at up to the unescaped stop character (or the end).
// Answers the position of the stop character, or npos when it did not occur.
std::size_t ParseEscaped(const LStringLong& line, std::size_t at, char stop, LStringLong& out) {
  out.clear();
  while (at < line.size()) {
    char c = line[at];
    if (c == stop && stop != '\0') return at;
    if (c == '\\' && at + 1 < line.size()) {
      char e = line[++at];
      out += e == 'n' ? '\n' : e == 'r' ? '\r' : e;
    } else {
      out += c;
    }
    ++at;
  }
  return LStringLong::npos;
}

}  // namespace

LUserSettings& LUserSettings::Instance() {
  // Never destroyed, so that code running during exit may still read settings.
  static LUserSettings* instance = new LUserSettings();
  return *instance;
}

LStringLong LUserSettings::FolderUnlocked() const { return folder_.empty() ? LUserConfigFolder() : folder_; }

LStringLong LUserSettings::Folder() {
  std::lock_guard<std::mutex> lock(mutex_);
  return FolderUnlocked();
}

void LUserSettings::FolderSet(const LStringLong& folder) {
  std::lock_guard<std::mutex> lock(mutex_);
  folder_ = folder;
  domains_.clear();
}

LStringLong LUserSettings::FilePath(const char* domain) const {
  return FolderUnlocked() + "/" + domain + kSettingsFileExtension;
}

LUserSettings::Domain& LUserSettings::DomainLoaded(const char* domain) {
  Domain& data = domains_[domain];
  LStringLong path = FilePath(domain);
  LFileDetails details;
  bool exists = LFileDetailsGet(path.c_str(), &details);
  bool same = data.loaded && exists == data.stampExists &&
              (!exists || (details.size == data.stampSize && details.modTime == data.stampTime));
  if (same) return data;

  data.sections.clear();
  data.loaded = true;
  data.stampExists = exists;
  data.stampSize = exists ? details.size : 0;
  data.stampTime = exists ? details.modTime : 0;
  if (!exists) return data;

  LFileStream file(LFileOpen(path.c_str(), kLFileRead));
  if (!file.IsOpen()) return data;
  Section* section = &data.sections[""];
  LStringLong pending;
  auto takeLine = [&](const LStringLong& line) {
    if (line.empty() || line[0] == ';' || line[0] == '#') return;
    LStringLong name;
    if (line[0] == '[') {
      if (ParseEscaped(line, 1, ']', name) != LStringLong::npos) section = &data.sections[name];
      return;
    }
    std::size_t equals = ParseEscaped(line, 0, '=', name);
    if (equals == LStringLong::npos) return;
    LStringLong value;
    ParseEscaped(line, equals + 1, '\0', value);
    (*section)[name] = value;
  };
  char block[kReadBlockBytes];
  for (;;) {
    long long got = file.Read(block, kReadBlockBytes);
    if (got <= 0) break;
    for (long long i = 0; i < got; ++i) {
      if (block[i] == '\n') {
        if (!pending.empty() && pending.back() == '\r') pending.pop_back();
        takeLine(pending);
        pending.clear();
      } else {
        pending += block[i];
      }
    }
  }
  takeLine(pending);
  return data;
}

bool LUserSettings::Save(const char* domain, Domain& data) {
  LStringLong folder = FolderUnlocked();
  if (!LFolderCreate(folder)) return false;
  LStringLong text;
  for (const auto& [name, section] : data.sections) {
    if (section.empty()) continue;
    // Keys outside any section come first (the map sorts "" first) and need no header.
    if (!name.empty() || !text.empty()) {
      text += '[';
      AppendEscaped(text, name);
      text += "]\n";
    }
    for (const auto& [key, value] : section) {
      AppendEscaped(text, key);
      text += '=';
      AppendEscaped(text, value);
      text += '\n';
    }
  }

  const LStringLong path = FilePath(domain);
  // A settings file that is a link (to a folder of dotfiles, say) stays one.
  LSafeSave save(path.c_str());
  if (!save.IsReady()) return false;
  {
    LFileStream file(LFileOpen(save.TempPath().c_str(), kLFileWrite | kLFileTruncate));
    if (!file.IsOpen() || !file.WriteAll(text.data(), static_cast<long long>(text.size()))) return false;
  }
  if (!save.Commit()) return false;
  LFileDetails details;
  data.stampExists = LFileDetailsGet(path.c_str(), &details);
  data.stampSize = data.stampExists ? details.size : 0;
  data.stampTime = data.stampExists ? details.modTime : 0;
  return true;
}

bool LUserSettings::Find(const char* domain, const char* section, const char* key, LStringLong* out) {
  if (!DomainNameOk(domain) || !section || !key) return false;
  std::lock_guard<std::mutex> lock(mutex_);
  Domain& data = DomainLoaded(domain);
  auto s = data.sections.find(section);
  if (s == data.sections.end()) return false;
  auto k = s->second.find(key);
  if (k == s->second.end()) return false;
  *out = k->second;
  return true;
}

LStringLong LUserSettings::Get(const char* domain, const char* section, const char* key, const char* fallback) {
  LStringLong value;
  if (Find(domain, section, key, &value)) return value;
  return fallback ? fallback : "";
}

long LUserSettings::GetInt(const char* domain, const char* section, const char* key, long fallback) {
  LStringLong text = Get(domain, section, key, "");
  if (text.empty()) return fallback;
  errno = 0;
  char* end = nullptr;
  long value = std::strtol(text.c_str(), &end, 10);
  if (end == text.c_str() || errno == ERANGE) return fallback;
  return value;
}

bool LUserSettings::IsFeatureOn(const char* domain, const char* section, const char* key, bool fallback) {
  LStringLong text;
  if (!Find(domain, section, key, &text)) return fallback;
  return text != "0";
}

bool LUserSettings::Set(const char* domain, const char* section, const char* key, const char* value) {
  if (!DomainNameOk(domain) || !section || !key || !*key) return false;
  std::lock_guard<std::mutex> lock(mutex_);
  Domain& data = DomainLoaded(domain);
  data.sections[section][key] = value ? value : "";
  return Save(domain, data);
}

bool LUserSettings::SetInt(const char* domain, const char* section, const char* key, long value) {
  char text[32];
  std::snprintf(text, sizeof text, "%ld", value);
  return Set(domain, section, key, text);
}

bool LUserSettings::Remove(const char* domain, const char* section, const char* key) {
  if (!DomainNameOk(domain) || !section || !key) return false;
  std::lock_guard<std::mutex> lock(mutex_);
  Domain& data = DomainLoaded(domain);
  auto s = data.sections.find(section);
  if (s == data.sections.end() || s->second.erase(key) == 0) return true;
  if (s->second.empty()) data.sections.erase(s);
  return Save(domain, data);
}
