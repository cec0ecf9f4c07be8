#include "engine/sound_cache_audio_info.h"

#include <cstring>

#include "base/file_stream.h"
#include "base/platform_file.h"
#include "base/sdf_format.h"
#include "base/sdf_reader.h"
#include "base/sdf_reader_chunk_iterator.h"
#include "base/sdf_writer.h"
#include "engine/sound_cache.h"

namespace {

// Description files are a few hundred bytes; a small read buffer will do.
constexpr std::size_t kInfoReadBuffer = 4096;

bool ReadOriginal(LSDFReader& reader, const LSDFChunkInfo& container, LSoundCacheAudioInfo& info) {
  LSoundCacheOriginalFile& original = info.original;
  bool seenDevice = false;
  bool seenInode = false;
  LSDFReaderChunkIterator it(reader, container);
  while (it.StartNextChunk()) {
    LSDFReaderChunk chunk = it.Chunk();
    switch (it.Id()) {
      case kLSoundCacheInfoOriginalPath: {
        char text[kSDFStringBufferSize + 1] = {};
        if (!chunk.ReadString(text)) return false;
        original.path = text;
        break;
      }
      case kLSoundCacheInfoOriginalModTime32: {
        int value = 0;
        if (!chunk.ReadInt(value)) return false;
        original.modTime = static_cast<long long>(static_cast<std::uint32_t>(value));
        original.hasModTime = true;
        break;
      }
      case kLSoundCacheInfoOriginalModTime: {
        long long value = 0;
        if (!chunk.ReadInt64(value)) return false;
        original.modTime = value;
        original.hasModTime = true;
        break;
      }
      case kLSoundCacheInfoOriginalSize: {
        long long value = 0;
        if (!chunk.ReadInt64(value)) return false;
        original.size = static_cast<std::uint64_t>(value);
        original.hasSize = true;
        break;
      }
      case kLSoundCacheInfoOriginalModTimeNs: {
        int value = 0;
        if (!chunk.ReadInt(value)) return false;
        original.modTimeNanoseconds = value;
        original.hasModTimeNanoseconds = true;
        break;
      }
      case kLSoundCacheInfoOriginalDevice:
      case kLSoundCacheInfoOriginalInode: {
        long long value = 0;
        if (!chunk.ReadInt64(value)) return false;
        if (it.Id() == kLSoundCacheInfoOriginalDevice) {
          original.device = static_cast<std::uint64_t>(value);
          seenDevice = true;
        } else {
          original.inode = static_cast<std::uint64_t>(value);
          seenInode = true;
        }
        break;
      }
      case kLSoundCacheInfoOriginalAttribute: {
        int value = 0;
        if (!chunk.ReadInt(value)) return false;
        original.attribute = static_cast<std::uint32_t>(value);
        original.hasAttribute = true;
        break;
      }
      default:
        if (!chunk.ReadUnknownChunk(info.originalUnknown)) return false;
    }
  }
  // One without the other does not tell the file.
  original.hasIdentity = seenDevice && seenInode;
  return reader.IsOK();
}

}  // namespace

bool LSoundCacheAudioInfoRead(LByteStream& stream, LSoundCacheAudioInfo* info) {
  *info = LSoundCacheAudioInfo();
  LSDFReader reader(kInfoReadBuffer);
  if (!reader.Open(stream, kSDFFileTypeCacheItemInfo)) return false;
  LSoundCacheAudioInfo read;
  LSDFReaderChunkIterator it(reader);
  while (it.StartNextChunk()) {
    LSDFReaderChunk chunk = it.Chunk();
    bool ok = true;
    switch (it.Id()) {
      case kLSoundCacheInfoSampleRate: {
        int value = 0;
        ok = chunk.ReadInt(value);
        read.sampleRate = value;
        break;
      }
      case kLSoundCacheInfoChannels: {
        int value = 0;
        ok = chunk.ReadInt(value);
        read.channels = static_cast<std::uint8_t>(value & 0xFF);
        break;
      }
      case kLSoundCacheInfoOriginal:
        read.hasOriginal = true;
        ok = ReadOriginal(reader, it.Info(), read);
        break;
      case kLSoundCacheInfoLastUse32: {
        int value = 0;
        ok = chunk.ReadInt(value);
        if (ok && !read.hasLastUse) {
          read.lastUse = value;
          read.hasLastUse = true;
        }
        break;
      }
      case kLSoundCacheInfoLastUse: {
        long long value = 0;
        ok = chunk.ReadInt64(value);
        if (ok && !read.hasLastUse) {
          read.lastUse = value;
          read.hasLastUse = true;
        }
        break;
      }
      default:
        ok = chunk.ReadUnknownChunk(read.unknown);
    }
    if (!ok) return false;
  }
  if (!reader.IsOK()) return false;
  *info = std::move(read);
  return true;
}

bool LSoundCacheAudioInfoWrite(LByteStream& stream, const LSoundCacheAudioInfo& info) {
  LSDFWriter writer;
  if (!writer.Open(stream, kSDFFileTypeCacheItemInfo, kSDFDataVersionCacheItemInfo, info.unknown)) return false;
  writer.WriteInt(kLSoundCacheInfoSampleRate, info.sampleRate);
  writer.WriteInt(kLSoundCacheInfoChannels, info.channels);
  if (info.hasOriginal) {
    const LSoundCacheOriginalFile& original = info.original;
    writer.StartContainer(kLSoundCacheInfoOriginal, info.originalUnknown);
    writer.WriteString(kLSoundCacheInfoOriginalPath, original.path.c_str());
    if (original.hasModTime) writer.WriteInt64(kLSoundCacheInfoOriginalModTime, original.modTime);
    if (original.hasSize) writer.WriteInt64(kLSoundCacheInfoOriginalSize, static_cast<long long>(original.size));
    if (original.hasAttribute) writer.WriteInt(kLSoundCacheInfoOriginalAttribute, static_cast<int>(original.attribute));
    if (original.hasModTimeNanoseconds)
      writer.WriteInt(kLSoundCacheInfoOriginalModTimeNs, static_cast<int>(original.modTimeNanoseconds));
    if (original.hasIdentity) {
      writer.WriteInt64(kLSoundCacheInfoOriginalDevice, static_cast<long long>(original.device));
      writer.WriteInt64(kLSoundCacheInfoOriginalInode, static_cast<long long>(original.inode));
    }
    writer.EndContainer(kLSoundCacheInfoOriginal);
  }
  if (info.hasLastUse) writer.WriteInt64(kLSoundCacheInfoLastUse, info.lastUse);
  // The writer latches its first failure, so one look before Close tells all.
  bool ok = writer.IsOK();
  return writer.Close() && ok;
}

bool LSoundCacheAudioInfoLoad(const char* path, LSoundCacheAudioInfo* info) {
  *info = LSoundCacheAudioInfo();
  if (!path || !*path) return false;
  LFileStream file(LFileOpen(path, kLFileRead, LFileLock::Shared, kLLockWaitMs));
  return file.IsOpen() && LSoundCacheAudioInfoRead(file, info);
}

bool LSoundCacheAudioInfoCreate(const char* path, std::int32_t sampleRate, std::uint8_t channels) {
  if (!path || !*path) return false;
  LFileStream file(
      LFileOpen(path, kLFileWrite | kLFileCreate | kLFileTruncate, LFileLock::Exclusive, kLLockWaitMs, 0666));
  if (!file.IsOpen()) return false;
  LSoundCacheAudioInfo info;
  info.sampleRate = sampleRate;
  info.channels = channels;
  // Without a last use the age-based clean-up would never take the item.
  info.hasLastUse = true;
  info.lastUse = LSoundCacheNow();
  return LSoundCacheAudioInfoWrite(file, info);
}

bool LSoundCacheAudioInfoModify(const char* path, const std::function<void(LSoundCacheAudioInfo&)>& change) {
  if (!path || !*path) return false;
  // The new description goes to a file beside the old one and replaces it whole,
  // so a failure part way leaves the old one. Modifiers queue on the lock of the
  // file at the path; one that waited on a file replaced meanwhile tries again.
  constexpr int kAttempts = 100;
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    LFileStream file(LFileOpen(path, kLFileRead, LFileLock::Exclusive, kLLockWaitMs));
    if (!file.IsOpen()) return false;
    if (!LFileIsAt(file.Descriptor(), path)) continue;
    LSoundCacheAudioInfo info;
    if (!LSoundCacheAudioInfoRead(file, &info)) return false;
    change(info);
    const LStringLong temp = LStringLong(path) + kLSoundCacheInfoTempSuffix;
    bool written = false;
    {
      LFileStream out(LFileOpen(temp.c_str(), kLFileWrite | kLFileCreate | kLFileTruncate, LFileLock::None, 0, 0666));
      written = out.IsOpen() && LSoundCacheAudioInfoWrite(out, info);
    }
    if (written && LFileReplace(temp.c_str(), path)) return true;
    LFileDelete(temp.c_str());
    return false;
  }
  return false;
}

bool LSoundCacheOriginalFileIs(const LSoundCacheOriginalFile& original, const LStringLong& resolvedPath,
                               const LFileDetails& details) {
  return !resolvedPath.empty() && original.path == resolvedPath && original.hasIdentity &&
         original.device == details.device && original.inode == details.inode && original.hasSize &&
         original.size == details.size && original.hasModTime &&
         original.modTime == static_cast<long long>(details.modTime) && original.hasModTimeNanoseconds &&
         original.modTimeNanoseconds == details.modTimeNanoseconds && original.hasAttribute &&
         original.attribute == details.attributes;
}
