#include "audio/recording_recovery.h"

#include <unistd.h>

#include <cstdio>
#include <ctime>

#include "base/folder_list.h"
#include "base/platform_file.h"
#include "engine/sound_cache.h"
#include "engine/sound_cache_audio_info.h"
#include "engine/sound_cache_item_handle.h"

namespace {

// First line of a marker; on disk, never change it.
constexpr const char* kMarkerMagic = "Sonvale-Aufnahme 1";

std::string MarkerPath(unsigned short item) {
  return LSoundCache::Instance().FilePath(item, kLSoundCacheExtRecording).c_str();
}

}  // namespace

bool LAudioRecordingMarker::Create(unsigned short item, std::uint32_t sampleRate, int channels) {
  Remove();
  if (item > kLSoundCacheItemLast) return false;
  LSoundCache& cache = LSoundCache::Instance();
  if (!LSoundCacheAudioInfoCreate(cache.FilePath(item, kLSoundCacheExtInfo).c_str(), static_cast<std::int32_t>(sampleRate),
                                  static_cast<std::uint8_t>(channels)))
    return false;
  const std::string path = MarkerPath(item);
  fd_ = LFileOpen(path.c_str(), kLFileWrite | kLFileCreate | kLFileTruncate, LFileLock::Exclusive, 0);
  if (fd_ < 0) return false;
  item_ = item;
  char text[96];
  const int n = std::snprintf(text, sizeof text, "%s\n%u %d %lld\n", kMarkerMagic, sampleRate, channels,
                              static_cast<long long>(std::time(nullptr)));
  if (::write(fd_, text, static_cast<std::size_t>(n)) != n) {
    Remove();
    return false;
  }
  return true;
}

void LAudioRecordingMarker::Remove() {
  if (fd_ < 0) return;
  (void)LFileDelete(MarkerPath(item_).c_str());
  ::close(fd_);
  fd_ = -1;
}

void LAudioRecordingsRecover(std::vector<LAudioRecoveredRecording>* found) {
  LSoundCache& cache = LSoundCache::Instance();
  if (cache.Folder().empty()) cache.FolderSetDefault();
  const std::string folder = cache.Folder().c_str();
  std::vector<unsigned short> items;
  (void)LFolderListFiles(folder.c_str(), kLSoundCacheExtRecording, [&](const char* name) {
    char* end = nullptr;
    const unsigned long n = std::strtoul(name, &end, 10);
    if (end != name && n <= kLSoundCacheItemLast && std::string(end) == kLSoundCacheExtRecording)
      items.push_back(static_cast<unsigned short>(n));
  });
  for (const unsigned short item : items) {
    // A recording of this process, or one that another running instance holds, is alive.
    if (cache.RefCountGet(item) != 0) continue;
    const std::string path = MarkerPath(item);
    const int fd = LFileOpen(path.c_str(), kLFileRead, LFileLock::Exclusive, 0);
    if (fd < 0) continue;
    char text[96] = {};
    const ssize_t got = ::read(fd, text, sizeof text - 1);
    ::close(fd);
    unsigned rate = 0;
    int channels = 0;
    long long started = 0;
    char magic[32] = {};
    if (got <= 0 || std::sscanf(text, "%31[^\n]\n%u %d %lld", magic, &rate, &channels, &started) != 4 ||
        std::string(magic) != kMarkerMagic || rate == 0 || channels < 1 || channels > 255)
      continue;
    LFileDetails audio;
    if (!LFileDetailsGet(cache.FilePath(item, kLSoundCacheExtAudio).c_str(), &audio)) continue;
    // The recording may have died before its description was complete.
    (void)LSoundCacheAudioInfoCreate(cache.FilePath(item, kLSoundCacheExtInfo).c_str(), static_cast<std::int32_t>(rate),
                                     static_cast<std::uint8_t>(channels));
    LAudioRecoveredRecording r;
    r.item = item;
    const long long frames = static_cast<long long>(audio.size / (static_cast<std::uint64_t>(channels) * sizeof(float)));
    r.list.SetSingleCutListSegment(LCutListSegment(LSoundCacheItemHandle(item), frames, 1.0f, 0),
                                   static_cast<int>(rate), static_cast<unsigned char>(channels));
    const std::time_t when = static_cast<std::time_t>(started);
    std::tm local{};
    char date[40] = "";
    if (localtime_r(&when, &local)) std::strftime(date, sizeof date, " vom %d.%m.%Y %H:%M", &local);
    r.title = std::string("Wiederhergestellte Aufnahme") + date;
    found->push_back(std::move(r));
  }
}

void LAudioRecordingOffered(unsigned short item) {
  (void)LFileDelete(MarkerPath(item).c_str());
}
