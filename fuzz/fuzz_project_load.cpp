// The project loader on any bytes, from memory, into a project alone or into
// the windows of a window manager (by the size's parity), now and then
// cancelled part way. A load that does not end changes nothing. A load that
// ends leaves every segment naming silence or a counted item whose audio is in
// the cache, and its cut lists read; the project then saves whole, and loading
// and saving that again writes as many bytes, and the same bytes once more.
// Once everything is gone no cache item is counted, no item file and no
// descriptor is left over.
//
// Everything runs in a temporary folder of the run's own: the cache (through
// SONVALE_CACHE_DIR), settings, user data and temporary files, and the folder
// that carried files are written back into.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "app/front_end.h"
#include "app/project.h"
#include "app/project_load.h"
#include "app/project_save.h"
#include "app/window_manager.h"
#include "base/memory_stream.h"
#include "base/platform_file.h"
#include "base/process_interface.h"
#include "base/user_settings.h"
#include "engine/sound_cache.h"
#include "fuzz_check.h"

namespace {

using Bytes = std::vector<unsigned char>;

constexpr const char* kProjectPath = "/memory/fuzz.svp";
constexpr long long kReadFrames = 256;
constexpr std::size_t kCancelEvery = 5;
constexpr long kMostChecksBeforeCancel = 40;

struct Folders {
  std::string base;
  std::string cache;
  std::string carried;
};

const Folders& Setup() {
  // Never destroyed: the exit handler that removes the folder, registered while it
  // is made, runs after its destructor would.
  static const Folders& folders = *[] {
    const char* tmp = std::getenv("TMPDIR");
    std::string pattern = std::string(tmp && *tmp ? tmp : "/tmp") + "/fuzz_project_load-XXXXXX";
    FuzzCheck(mkdtemp(pattern.data()) != nullptr, "a temporary folder can be made");
    auto* made = new Folders{pattern, pattern + "/cache", pattern + "/carried"};
    const Folders& f = *made;
    for (const char* sub : {"/home", "/data", "/config", "/tmp", "/settings"}) {
      std::filesystem::create_directories(f.base + sub);
    }
    // Nothing the load or the save does may reach the user's own folders.
    setenv("HOME", (f.base + "/home").c_str(), 1);
    setenv("XDG_DATA_HOME", (f.base + "/data").c_str(), 1);
    setenv("XDG_CONFIG_HOME", (f.base + "/config").c_str(), 1);
    setenv("TMPDIR", (f.base + "/tmp").c_str(), 1);
    setenv(kLSoundCacheFolderVariable, f.cache.c_str(), 1);
    LUserSettings::Instance().FolderSet(f.base + "/settings");
    LSoundCache::Instance().FolderSetDefault();
    FuzzCheck(LSoundCache::Instance().Folder() == f.cache, "the cache is in the temporary folder");
    std::atexit([] {
      LSoundCache::Instance().FolderSet("");
      std::filesystem::remove_all(Setup().base);
    });
    return made;
  }();
  return folders;
}

int DescriptorCount() {
  int count = 0;
  std::error_code error;
  for (auto it = std::filesystem::directory_iterator("/proc/self/fd", error);
       !error && it != std::filesystem::directory_iterator(); it.increment(error)) {
    ++count;
  }
  return count;
}

// Files of cache items in the cache folder (the lock file is the cache's own).
int CacheItemFiles() {
  int count = 0;
  for (const auto& entry : std::filesystem::directory_iterator(Setup().cache)) {
    const std::string name = entry.path().filename().string();
    if (!name.empty() && name[0] >= '0' && name[0] <= '9') ++count;
  }
  return count;
}

// Every segment names silence or an item that is counted and has its audio.
void CheckList(const LCutListAudio& list) {
  for (const LCutListSegment& segment : list.Segments()) {
    if (segment.IsSilence()) continue;
    const unsigned short item = segment.ItemNumber();
    FuzzCheck(LSoundCache::Instance().RefCountGet(item) > 0, "a segment's item is counted");
    FuzzCheck(LFileExists(LSoundCache::Instance().FilePath(item, kLSoundCacheExtAudio).c_str()),
              "a segment's item has its audio in the cache");
  }
  // Reads at the start and at the end, which may lie past what an item holds.
  LSoundSource source = list.OpenSource();
  const long long channels = std::max<long long>(1, source.GetChannels());
  std::vector<float> block(static_cast<std::size_t>(kReadFrames * channels));
  for (long long at : {0LL, list.GetLength() - kReadFrames / 2}) {
    source.Seek(at);
    source.Read(block.data(), kReadFrames);
    FuzzCheck(source.GetPositionSample() == at + kReadFrames, "a read advances by the frames asked for");
  }
}

void CheckProject(SVProject& project, const LArray<LCountedPtr<SVFile>>& documents) {
  for (const LCountedPtr<SVFile>& file : documents) {
    CheckList(file->CutList());
    FuzzCheck(file->RegionList() == project.RegionListPtr(), "a document shares the project's regions");
  }
  for (const SVRegion& region : project.Regions()) CheckList(region.cutList);
}

// Loads bytes into a new project (or window manager) and hands back what a full save of it writes.
LProcessResult LoadAndSave(const std::uint8_t* data, std::size_t size, bool windowed, long cancelAfter, Bytes* saved) {
  SVFrontEndQuiet frontEnd;
  SVWindowManager windows(frontEnd);
  SVProject alone;
  SVProject& project = windowed ? windows.Project() : alone;
  LSVLoadProject request = windowed ? LSVLoadProject(windows, kProjectPath) : LSVLoadProject(alone, kProjectPath);
  request.FilesFolderSet(Setup().carried.c_str());
  LProcessInterfaceQuiet process;
  if (cancelAfter >= 0) process.CancelAfterChecks(cancelAfter);
  LMemoryStream stream(data, size);
  const LProcessResult result = SVProjectRead(process, request, stream);
  if (result != kLProcessSuccess) {
    FuzzCheck(result == kLProcessFailed || (result == kLProcessCancelled && cancelAfter >= 0),
              "a load is cancelled only when asked to");
    FuzzCheck(result != kLProcessFailed || !process.Error().empty(), "a load that fails says why");
    FuzzCheck(windows.FileWindowCount() == 0 && project.Documents().empty() && project.Regions().empty() &&
                  request.Documents().empty(),
              "a load that does not end changes nothing");
    return result;
  }
  FuzzCheck(project.Documents().size() == request.Documents().size(), "the project holds the documents loaded");
  if (windowed) {
    FuzzCheck(windows.FileWindowCount() == static_cast<int>(request.Documents().size()),
              "every document loaded has its window");
  }
  CheckProject(project, request.Documents());
  if (!saved) return result;

  LSVSaveProject save = windowed ? LSVSaveProject(windows, kProjectPath) : LSVSaveProject(alone, kProjectPath);
  LMemoryStream out;
  LProcessInterfaceQuiet saving;
  const LProcessResult written = SVProjectWrite(saving, save, out, false);
  if (written != kLProcessSuccess) std::fprintf(stderr, "save: %s\n", saving.Error().c_str());
  FuzzCheck(written == kLProcessSuccess, "a project that loaded saves whole");
  *saved = out.Bytes();
  return result;
}

void CheckNothingLeft(int descriptors) {
  FuzzCheck(LSoundCache::Instance().CountedItemCount() == 0, "no cache item is left counted");
  FuzzCheck(CacheItemFiles() == 0, "no cache item's file is left over");
  FuzzCheck(DescriptorCount() == descriptors, "no descriptor is left open");
  std::error_code error;
  std::filesystem::remove_all(Setup().carried, error);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  (void)Setup();
  const int descriptors = DescriptorCount();
  const bool windowed = size % 2 == 0;
  // Now and then cancelled after a number of checks that the data chooses.
  const bool cancel = size % kCancelEvery == kCancelEvery - 1;
  const long cancelAfter = cancel ? static_cast<long>(FuzzLE32(data, size, size / 2) % kMostChecksBeforeCancel) : -1;

  Bytes first;
  const LProcessResult result = LoadAndSave(data, size, windowed, cancelAfter, cancelAfter < 0 ? &first : nullptr);
  CheckNothingLeft(descriptors);
  if (result != kLProcessSuccess || cancelAfter >= 0) return 0;

  // What a save wrote loads and saves again. Item numbers are those of the live
  // cache, so the first save may number its items apart from the second; from
  // the second on, what is saved is saved the same.
  Bytes second;
  FuzzCheck(LoadAndSave(first.data(), first.size(), windowed, -1, &second) == kLProcessSuccess,
            "a project that was saved loads");
  CheckNothingLeft(descriptors);
  FuzzCheck(second.size() == first.size(), "a loaded project saves to as many bytes as it was saved in");
  Bytes third;
  FuzzCheck(LoadAndSave(second.data(), second.size(), windowed, -1, &third) == kLProcessSuccess,
            "a project that was saved loads");
  CheckNothingLeft(descriptors);
  if (second != third) {
    std::size_t at = 0;
    while (at < second.size() && at < third.size() && second[at] == third[at]) ++at;
    std::fprintf(stderr, "saves of %zu and %zu bytes differ from byte %zu\n", second.size(), third.size(), at);
    FuzzCheck(false, "a loaded project saves to what it was saved as");
  }
  return 0;
}
