#include "engine/sound_cache_item.h"

#include <vector>

#include "base/disk_space.h"
#include "base/folder_list.h"
#include "base/platform_file.h"
#include "base/volume_mount_point.h"
#include "engine/sound_cache_audio_info.h"
#include "engine/sound_cache_cleanup.h"
#include "engine/sound_cache_overview.h"
#include "engine/sound_cache_sink.h"
#include "engine/source_to_sink.h"

namespace {

constexpr double kBytesPerMB = 1048576.0;

// User-visible texts.
constexpr const char* kDiskSpaceMessage =
    "Unzureichender Festplattenspeicher, um Audio zu speichern. Sonvale benötigt %.2f MB freien Speicher auf dem "
    "\"%s\", um die Datei zu laden (%.2f MB verfügbar).";
constexpr const char* kNoItemNumberMessage = "Im Zwischenspeicher ist keine Nummer mehr frei.";
constexpr const char* kAddTitle = "Audio wird zwischengespeichert";

constexpr const char* kIncompleteMessage =
    "Das Audio konnte nicht vollständig in den Zwischenspeicher geschrieben werden.";

LStringLong InfoPath(unsigned short item) { return LSoundCache::Instance().FilePath(item, kLSoundCacheExtInfo); }

// True when the item's description reads back and its audio and overview hold frames frames.
bool ItemFilesComplete(unsigned short item, long long frames) {
  int sampleRate = 0;
  unsigned char channels = 0;
  if (!LSoundCacheItemIsValid(item) || !LSoundCacheItemAudioInfoGet(InfoPath(item).c_str(), sampleRate, channels) ||
      channels == 0 || LSoundCacheItemLengthGet(item) != frames) {
    return false;
  }
  LFileDetails overview;
  return LFileDetailsGet(LSoundCache::Instance().FilePath(item, kLSoundCacheExtOverview).c_str(), &overview) &&
         overview.size == static_cast<std::uint64_t>(LSoundCacheOverviewBlocks(frames) * channels *
                                                     kLSoundCacheOverviewRecordBytes);
}

}  // namespace

bool LSoundCacheItemIsValid(unsigned short item) {
  LSoundCache& cache = LSoundCache::Instance();
  for (const char* extension : {kLSoundCacheExtAudio, kLSoundCacheExtInfo, kLSoundCacheExtOverview}) {
    LStringLong path = cache.FilePath(item, extension);
    if (path.empty() || !LFileExists(path.c_str())) return false;
  }
  return true;
}

long long LSoundCacheItemLengthGet(unsigned short item) {
  int sampleRate = 0;
  unsigned char channels = 0;
  if (!LSoundCacheItemAudioInfoGet(InfoPath(item).c_str(), sampleRate, channels) || channels == 0) return 0;
  LFileDetails details;
  if (!LFileDetailsGet(LSoundCache::Instance().FilePath(item, kLSoundCacheExtAudio).c_str(), &details)) return 0;
  return static_cast<long long>(details.size / (channels * sizeof(float)));
}

bool LSoundCacheItemAudioInfoGet(const char* path, int& sampleRate, unsigned char& channels) {
  LSoundCacheAudioInfo info;
  bool ok = LSoundCacheAudioInfoLoad(path, &info);
  sampleRate = ok ? info.sampleRate : 0;
  channels = ok ? info.channels : 0;
  return ok;
}

bool LSoundCacheItemLastAccessTimeUpdate(unsigned short item) {
  long long now = LSoundCacheNow();
  return LSoundCacheAudioInfoModify(InfoPath(item).c_str(), [now](LSoundCacheAudioInfo& info) {
    info.hasLastUse = true;
    info.lastUse = now;
  });
}

bool LSoundCacheItemOriginalFileDetailsSet(unsigned short item, const char* path) {
  // Stored resolved: "x.wav" typed in two folders names two files.
  const LStringLong resolved = LPathResolve(path);
  LFileDetails details;
  if (resolved.empty() || !LFileDetailsGet(resolved.c_str(), &details)) return false;
  return LSoundCacheAudioInfoModify(InfoPath(item).c_str(), [&](LSoundCacheAudioInfo& info) {
    info.hasOriginal = true;
    info.originalUnknown.clear();
    info.original = LSoundCacheOriginalFile();
    info.original.path = resolved;
    info.original.modTime = details.modTime;
    info.original.hasModTime = true;
    info.original.modTimeNanoseconds = details.modTimeNanoseconds;
    info.original.hasModTimeNanoseconds = true;
    info.original.size = details.size;
    info.original.hasSize = true;
    info.original.attribute = details.attributes;
    info.original.hasAttribute = true;
    info.original.device = details.device;
    info.original.inode = details.inode;
    info.original.hasIdentity = true;
  });
}

bool LSoundCacheItemOriginalFileDetailsMatch(unsigned short item, const char* path, long modTime, std::uint64_t size,
                                             std::uint32_t attribute) {
  const LStringLong resolved = LPathResolve(path);
  LFileDetails details;
  LSoundCacheAudioInfo info;
  if (resolved.empty() || !LFileDetailsGet(resolved.c_str(), &details) ||
      !LSoundCacheAudioInfoLoad(InfoPath(item).c_str(), &info) || !info.hasOriginal) {
    return false;
  }
  // The caller's details, with the file's identity and sub-second time as they are now.
  details.modTime = modTime;
  details.size = size;
  details.attributes = attribute;
  return LSoundCacheOriginalFileIs(info.original, resolved, details);
}

LSoundCacheItemHandle LSoundCacheItemFindForOriginalFile(const char* path) {
  const LStringLong resolved = LPathResolve(path);
  LFileDetails details;
  if (resolved.empty() || !LFileDetailsGet(resolved.c_str(), &details)) return {};
  LSoundCache& cache = LSoundCache::Instance();
  // The first look-up of a run may come before anything has set the folder.
  if (cache.Folder().empty()) cache.FolderSetDefault();
  LStringLong folder = cache.Folder();
  std::vector<unsigned short> candidates;
  LFolderListFiles(folder.c_str(), kLSoundCacheExtInfo, [&](const char* name) {
    int number = LSoundCacheItemNumberFromName(name);
    if (number >= 0 && number <= kLSoundCacheItemLast) candidates.push_back(static_cast<unsigned short>(number));
  });
  for (unsigned short number : candidates) {
    LSoundCacheAudioInfo info;
    if (!LSoundCacheAudioInfoLoad(InfoPath(number).c_str(), &info) || !info.hasOriginal ||
        !LSoundCacheOriginalFileIs(info.original, resolved, details)) {
      continue;
    }
    // The reference comes first, so no clean-up can take the files between the check and the use.
    LSoundCacheItemHandle handle(number);
    if (!LSoundCacheItemIsValid(number)) continue;
    LSoundCacheItemLastAccessTimeUpdate(number);
    return handle;
  }
  return {};
}

LProcessResult LSoundCacheItemAdd(LProcessInterface& process, LSoundSource source, LSoundCacheItemHandle& item,
                                  long long& length) {
  item.Reset();
  length = 0;
  LSoundCache& cache = LSoundCache::Instance();
  if (cache.Folder().empty()) cache.FolderSetDefault();
  LStringLong folder = cache.Folder();

  // Estimated: a compressed file's exact length is learnt by copying it.
  const long long frames = source.GetEndSampleEstimate();
  const long long required = frames * source.GetChannels() * static_cast<long long>(sizeof(float)) +
                             kLSoundCacheHeadRoomBytes;
  const char* measured = LFileExists(folder.c_str()) ? folder.c_str() : "/";
  long long available = LDiskFreeBytes(measured);
  if (available >= 0 && available - required < kLSoundCacheCleanupLowSpaceBytes) {
    // Space is getting low: unused items make room before the user is refused.
    LSoundCacheCleanup(kLSoundCacheCleanupDefaultMode);
    available = LDiskFreeBytes(measured);
  }
  // A volume that cannot be measured is not held against the user.
  if (available >= 0 && available < required) {
    process.SetErrorF(kDiskSpaceMessage, static_cast<double>(required) / kBytesPerMB,
                      LVolumeMountPoint(measured).c_str(), static_cast<double>(available) / kBytesPerMB);
    return kLProcessFailed;
  }

  unsigned short number = cache.ItemCreateNewAndIncRef();
  if (number == kLSoundCacheItemNone) {
    process.SetError(kNoItemNumberMessage);
    return kLProcessFailed;
  }
  // The sink takes the allocation's reference; this operation's own keeps the
  // item alive once the sink has gone.
  LSoundCacheItemHandle held(number);
  source.Seek(0);
  LProcessResult result;
  {
    LPRSourceToSink job(kAddTitle, source,
                        LMakeSink<LSoundCacheSink>(source.GetSampleRate(), source.GetChannels(),
                                                   LSoundCacheItemHandle::Adopt(number), &length),
                        true);
    result = Process(process, job);
  }
  // The sink does not report lost writes: the files themselves tell whether everything arrived.
  if (result == kLProcessSuccess && !ItemFilesComplete(number, length)) {
    process.SetError(kIncompleteMessage);
    result = kLProcessFailed;
  }
  if (result != kLProcessSuccess) {
    length = 0;
    return result;  // held goes, and with the last reference the files
  }
  cache.NotifyAnalyzerChange(number, kLSoundCacheChangeItemAdded);
  item = std::move(held);
  return kLProcessSuccess;
}
