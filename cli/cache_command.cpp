#include "cli/cache_command.h"

#include <cstdio>
#include <ctime>

#include "base/platform_file.h"
#include "cli/command_args.h"
#include "engine/sound_cache.h"
#include "engine/sound_cache_cleanup.h"
#include "engine/sound_cache_summary.h"

namespace {

constexpr double kBytesPerMB = 1048576.0;

std::string LocalTime(long long seconds) {
  const std::time_t when = static_cast<std::time_t>(seconds);
  std::tm local{};
  char text[64];
  if (!localtime_r(&when, &local) || std::strftime(text, sizeof text, "%d.%m.%Y %H:%M:%S", &local) == 0) return "?";
  return text;
}

std::string Megabytes(std::uint64_t bytes) {
  char text[64];
  std::snprintf(text, sizeof text, "%.2f MB", static_cast<double>(bytes) / kBytesPerMB);
  return text;
}

void PrintSummary(const LSoundCacheSummary& summary) {
  std::printf("Ordner:    %s\n", summary.folder.c_str());
  std::printf("Einträge:  %zu\n", summary.items.size());
  std::printf("Größe:     %s\n", Megabytes(summary.Bytes()).c_str());
  const LSoundCacheSummaryItem* oldest = summary.Oldest();
  if (oldest) {
    std::printf("Ältester:  Nr. %u, zuletzt benutzt am %s\n", oldest->item, LocalTime(oldest->lastUse).c_str());
  } else {
    std::printf("Ältester:  keiner\n");
  }
}

}  // namespace

int RunCacheCommand(const std::vector<std::string>& args) {
  bool clean = false;
  for (const std::string& arg : args) {
    if (arg == "--clean") {
      clean = true;
    } else {
      PrintError("Unbekannte Angabe \"" + arg + "\". Aufruf: sonvale cache [--clean]");
      return kCommandFailed;
    }
  }
  LSoundCache& cache = LSoundCache::Instance();
  // The command shows and cleans on its own; no clean-up runs behind its back.
  cache.FolderSetDefault(false);
  const LStringLong folder = cache.Folder();
  if (folder.empty() || !LFileExists(folder.c_str())) {
    PrintError("Der Ordner des Zwischenspeichers \"" + folder + "\" ist nicht verfügbar.");
    return kCommandFailed;
  }
  const LSoundCacheSummary before = LSoundCacheSummaryGet();
  if (!clean) {
    PrintSummary(before);
    return kCommandOK;
  }
  LSoundCacheCleanup(kLSoundCacheCleanupDefaultMode);
  const LSoundCacheSummary after = LSoundCacheSummaryGet();
  std::uint64_t freed = 0;
  std::string removed;
  std::size_t count = 0;
  for (const LSoundCacheSummaryItem& item : before.items) {
    const LSoundCacheSummaryItem* left = after.Find(item.item);
    if (left && left->bytes == item.bytes) continue;
    freed += item.bytes - (left ? left->bytes : 0);
    if (left) continue;  // only some of its files went
    ++count;
    removed += (removed.empty() ? "" : ", ") + std::to_string(item.item);
  }
  if (count == 0 && freed == 0) {
    std::printf("Entfernt:  nichts\n");
  } else {
    const std::string numbers = removed.empty() ? "" : ": Nr. " + removed;
    std::printf("Entfernt:  %zu %s (%s)%s\n", count, count == 1 ? "Eintrag" : "Einträge", Megabytes(freed).c_str(),
                numbers.c_str());
  }
  PrintSummary(after);
  return kCommandOK;
}
