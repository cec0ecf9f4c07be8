#pragma once
// Operations on one cache item's files: validity, length, description, the
// decoded-copy check that lets an untouched original file reuse its item, and
// LSoundCacheItemAdd, which decodes a whole source into a new item.
#include <cstdint>

#include "base/process_interface.h"
#include "engine/sound_cache_item_handle.h"
#include "engine/sound_source.h"

// Head-room kept free on the cache's volume beyond the item's own size.
constexpr long long kLSoundCacheHeadRoomBytes = 104857600;

// True when the item's ".aud", ".audinfo" and ".grf" all exist.
[[nodiscard]] bool LSoundCacheItemIsValid(unsigned short item);
// The item's length in frames: the size of ".aud" over (channels x 4), the
// channels from ".audinfo"; 0 when that cannot be read or gives 0 channels.
[[nodiscard]] long long LSoundCacheItemLengthGet(unsigned short item);
// Reads rate and channels of a description file (waiting at most kLLockWaitMs
// for its lock); both 0 and false when it is missing or not valid.
[[nodiscard]] bool LSoundCacheItemAudioInfoGet(const char* path, int& sampleRate, unsigned char& channels);
// Records the present time as the item's last use.
bool LSoundCacheItemLastAccessTimeUpdate(unsigned short item);

// Records the original file, as it is now, as the file the item is a decoded copy of.
bool LSoundCacheItemOriginalFileDetailsSet(unsigned short item, const char* path);
// True when the item is the decoded copy of the file with exactly these details.
[[nodiscard]] bool LSoundCacheItemOriginalFileDetailsMatch(unsigned short item, const char* path, long modTime,
                                                           std::uint64_t size, std::uint32_t attribute);
// A valid item that is the decoded copy of path as the file is now, with a
// reference taken and its last use recorded; a handle of no item when there is none.
[[nodiscard]] LSoundCacheItemHandle LSoundCacheItemFindForOriginalFile(const char* path);

// Decodes the whole source into a new item, with progress and cancel. Needs the
// item's size plus kLSoundCacheHeadRoomBytes free on the cache's volume. On
// success answers kLProcessSuccess, item refers to the new item and length holds
// its frame count; otherwise nothing is left behind (item holds no item) and the
// answer is kLProcessCancelled or kLProcessFailed with the reason set on process.
[[nodiscard]] LProcessResult LSoundCacheItemAdd(LProcessInterface& process, LSoundSource source,
                                                LSoundCacheItemHandle& item, long long& length);
