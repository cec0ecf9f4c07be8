#pragma once
// LUserSettings: the user's preferences, string values in named domains, each
// domain split into sections of keys. A domain is one small text file in the
// per-user configuration folder ("[section]" lines, then "key=value" lines),
// rewritten whole by a safe save, so a crash leaves the old or the new file,
// never half of one, and a file that is a link stays a link.
//
// One object per process (Instance). Every call may come from any thread.
// A file changed by another running instance is read again on the next call.
#include <map>
#include <mutex>

#include "base/string_long.h"

// Domains of the preferences. Their names are the file names on disk; never change them.
inline constexpr const char* kLSettingsDomain = "Settings";
inline constexpr const char* kLRecentFileListDomain = "RecentFileList";
inline constexpr const char* kLUsageStatsDomain = "UsageStats";

class LUserSettings {
public:
  [[nodiscard]] static LUserSettings& Instance();

  // The value, or fallback when the key is not set.
  [[nodiscard]] LStringLong Get(const char* domain, const char* section, const char* key,
                                const char* fallback = "");
  // A number; fallback when the key is not set or does not start with one.
  [[nodiscard]] long GetInt(const char* domain, const char* section, const char* key, long fallback);
  // A value "0" switches a feature off; a missing key answers fallback, anything else on.
  [[nodiscard]] bool IsFeatureOn(const char* domain, const char* section, const char* key, bool fallback = true);

  // Stores the value and writes the domain's file. False when the file could not
  // be written (the value is kept for this run all the same).
  bool Set(const char* domain, const char* section, const char* key, const char* value);
  bool SetInt(const char* domain, const char* section, const char* key, long value);
  // Removes a key (a section left empty goes with it).
  bool Remove(const char* domain, const char* section, const char* key);

  // The folder holding the files; empty selects the user's configuration folder.
  // Forgets what was loaded. Tests point it at a temporary folder.
  void FolderSet(const LStringLong& folder);
  [[nodiscard]] LStringLong Folder();

private:
  using Section = std::map<LStringLong, LStringLong>;
  struct Domain {
    std::map<LStringLong, Section> sections;
    bool loaded = false;
    unsigned long long stampSize = 0;  // of the file as last read or written
    long stampTime = 0;
    bool stampExists = false;
  };

  LUserSettings() = default;
  Domain& DomainLoaded(const char* domain);
  bool Find(const char* domain, const char* section, const char* key, LStringLong* out);
  LStringLong FilePath(const char* domain) const;
  LStringLong FolderUnlocked() const;
  bool Save(const char* domain, Domain& data);

  std::mutex mutex_;
  LStringLong folder_;
  std::map<LStringLong, Domain> domains_;
};
