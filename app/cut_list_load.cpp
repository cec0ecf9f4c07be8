#include "app/cut_list_load.h"

#include "engine/cut_list_segment.h"
#include "engine/sound_cache_item.h"
#include "formats/open_error.h"
#include "formats/sound_file.h"

LProcessResult SVCutListLoadFile(LProcessInterface& process, const char* path, LCutListAudio& out, bool keepCopy,
                                 LSoundFileInfo* info) {
  out = LCutListAudio();
  if (keepCopy) {
    LSoundCacheItemHandle cached = LSoundCacheItemFindForOriginalFile(path);
    int rate = 0;
    unsigned char channels = 0;
    const unsigned short number = cached.Number();
    if (cached.IsItem() &&
        LSoundCacheItemAudioInfoGet(LSoundCache::Instance().FilePath(number, kLSoundCacheExtInfo).c_str(), rate,
                                    channels) &&
        channels > 0) {
      const long long length = LSoundCacheItemLengthGet(number);
      out.SetSingleCutListSegment(LCutListSegment(std::move(cached), length, 1.0f, 0), rate, channels);
      out.SetPath(path);
      if (info && !LSoundFile::Describe(path, info)) *info = LSoundFileInfo();
      return kLProcessSuccess;
    }
  }

  LSoundFileInfo scratch;
  LSoundFileInfo& opened = info ? *info : scratch;
  LSoundSource source = LSoundFile::OpenSource(path, &opened);
  if (source.IsError()) {
    process.SetError(LSoundFile::OpenErrorMessage(source, path, opened).c_str());
    return kLProcessFailed;
  }
  const LProcessResult result = SVCutListLoadSource(process, std::move(source), path, out);
  if (result == kLProcessSuccess && keepCopy && !out.Segments().empty())
    LSoundCacheItemOriginalFileDetailsSet(out.Segments().front().ItemNumber(), path);
  return result;
}

LProcessResult SVCutListLoadSource(LProcessInterface& process, LSoundSource source, const char* path,
                                   LCutListAudio& out) {
  out = LCutListAudio();
  if (source.IsEmpty() || source.IsError()) {
    process.SetError(LOpenErrorMessage(source.GetErrorCode(), path ? path : "").c_str());
    return kLProcessFailed;
  }
  const std::uint32_t rate = source.GetSampleRate();
  const std::uint8_t channels = source.GetChannels();
  LSoundCacheItemHandle item;
  long long length = 0;
  const LProcessResult result = LSoundCacheItemAdd(process, std::move(source), item, length);
  if (result != kLProcessSuccess) return result;
  out.SetSingleCutListSegment(LCutListSegment(std::move(item), length, 1.0f, 0), static_cast<int>(rate), channels);
  if (path) out.SetPath(path);
  return kLProcessSuccess;
}
