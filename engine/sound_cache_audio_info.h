#pragma once
// The description of a cache item, its ".audinfo" file: an SDF file of type 43,
// version 1, holding the sample rate and channel count, the details of the
// original file the item is a decoded copy of, and the time of its last use.
// Chunks this build does not know (analyzer results among them) are kept and
// written back when the description is changed.
//
// Writers hold an exclusive lock on the file while they write; readers take a
// shared lock and wait for it at most kLLockWaitMs.
#include <cstdint>
#include <functional>

#include "base/byte_stream.h"
#include "base/platform_file.h"
#include "base/list.h"
#include "base/sdf_unknown_chunk.h"
#include "base/string_long.h"

// Added to a description's path while it is being replaced; a crash may leave
// such a file, which goes with its item.
inline constexpr const char* kLSoundCacheInfoTempSuffix = ".tmp";

// Chunk ids of ".audinfo". On disk; never change them.
enum LSoundCacheInfoChunk : unsigned short {
  kLSoundCacheInfoSampleRate = 16,          // int: Hz
  kLSoundCacheInfoChannels = 17,            // int: the low byte is the channel count
  kLSoundCacheInfoOriginal = 80,            // container: the original file, chunks 81 to 86
  kLSoundCacheInfoOriginalPath = 81,        // string
  kLSoundCacheInfoOriginalModTime32 = 82,   // int: modification time, older form
  kLSoundCacheInfoOriginalSize = 83,        // int64: bytes
  kLSoundCacheInfoLastUse32 = 84,           // int: seconds since 1970, older form
  kLSoundCacheInfoOriginalAttribute = 85,   // int: the file's mode bits, compared as they are
  kLSoundCacheInfoOriginalModTime = 86,     // int64: modification time, seconds since 1970
  kLSoundCacheInfoLastUse = 87,             // int64: seconds since 1970
  kLSoundCacheInfoOriginalDevice = 88,      // int64: the device holding the file
  kLSoundCacheInfoOriginalInode = 89,       // int64: the file's number on that device
  kLSoundCacheInfoOriginalModTimeNs = 90,   // int: nanoseconds of the modification time
};

struct LSoundCacheOriginalFile {
  LStringLong path;
  long long modTime = 0;
  bool hasModTime = false;
  std::uint64_t size = 0;
  bool hasSize = false;
  std::uint32_t attribute = 0;
  bool hasAttribute = false;
  long modTimeNanoseconds = 0;
  bool hasModTimeNanoseconds = false;
  std::uint64_t device = 0;
  std::uint64_t inode = 0;
  bool hasIdentity = false;  // device and inode
};

// True when the original file is the file at resolvedPath (absolute, links
// followed) as it is now (details). Path, device and inode must all agree, so a
// file of the same name elsewhere or a new file under the old name is another
// file; size, mode and the modification time to the nanosecond must too.
// Descriptions of older builds, which lack the identity, never match.
[[nodiscard]] bool LSoundCacheOriginalFileIs(const LSoundCacheOriginalFile& original, const LStringLong& resolvedPath,
                                             const LFileDetails& details);

struct LSoundCacheAudioInfo {
  std::int32_t sampleRate = 0;
  std::uint8_t channels = 0;
  bool hasOriginal = false;
  LSoundCacheOriginalFile original;
  bool hasLastUse = false;
  long long lastUse = 0;               // seconds since 1970
  LList<LSDFUnknownChunk> unknown;          // top-level chunks kept for rewriting
  LList<LSDFUnknownChunk> originalUnknown;  // the same inside the original-file chunk
};

// False when the stream does not hold an SDF file of the item type. Of two
// modification times the later in the file wins; of the last-use times the first.
[[nodiscard]] bool LSoundCacheAudioInfoRead(LByteStream& stream, LSoundCacheAudioInfo* info);
// Writes the whole description at the stream's current position.
[[nodiscard]] bool LSoundCacheAudioInfoWrite(LByteStream& stream, const LSoundCacheAudioInfo& info);

// Reads a description file under a shared lock (waiting at most kLLockWaitMs).
// False when it is missing, locked too long or not valid; info then is empty.
[[nodiscard]] bool LSoundCacheAudioInfoLoad(const char* path, LSoundCacheAudioInfo* info);
// Creates (or empties) a description file of the rate and channels, with the
// present time (LSoundCacheNow) as its last use, under an exclusive lock.
[[nodiscard]] bool LSoundCacheAudioInfoCreate(const char* path, std::int32_t sampleRate, std::uint8_t channels);
// Reads an existing description under an exclusive lock, lets change alter it,
// and replaces the file with the result through a temporary file (the path plus
// kLSoundCacheInfoTempSuffix). False when it could not be read or written; the
// old description then stays.
[[nodiscard]] bool LSoundCacheAudioInfoModify(const char* path,
                                              const std::function<void(LSoundCacheAudioInfo&)>& change);
