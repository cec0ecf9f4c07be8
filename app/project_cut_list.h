#pragma once
// A cut list inside a project file. The container holds the list's persisted
// form; a full save adds the audio of the cache items it names, so that the
// project opens after the cache was cleaned or on another machine, and a link
// save stores the references only (fast, for the autosave, while the items live;
// nothing is pinned).
//
// A full save stores each item once per file: the first container that names it
// carries its frames from 0 to the last frame any list of the project plays
// (SVProjectAudioStore plans that before the first container is written). Frame
// positions thus stay as they are, and a load puts each item's audio into a new
// cache item once and renumbers the segments that name it.
#include <map>

#include "base/list.h"
#include "base/process_interface.h"
#include "base/sdf_reader.h"
#include "base/sdf_unknown_chunk.h"
#include "base/sdf_writer.h"
#include "engine/cut_list_audio.h"
#include "engine/sound_cache_item_handle.h"

// What a full save has planned and already written.
class SVProjectAudioStore {
public:
  // Notes the items the list names and how far it plays into each. Call for
  // every list of the save before the first container is written.
  void Plan(const LCutListAudio& list);
  // Frames of the item to store (0 for one never planned).
  [[nodiscard]] long long Reach(unsigned short item) const;
  [[nodiscard]] bool IsStored(unsigned short item) const;
  void StoredSet(unsigned short item) { stored_[item] = true; }

private:
  std::map<unsigned short, long long> reach_;
  std::map<unsigned short, bool> stored_;
};

// What a load has put back into the cache: the new item for each number the
// file's lists name. Its handles hold the items until the lists do.
class SVProjectAudioRestore {
public:
  // The new item for a stored number, kLSoundCacheItemNone when none was stored.
  [[nodiscard]] unsigned short Find(unsigned short stored) const;
  void Add(unsigned short stored, LSoundCacheItemHandle item);

private:
  std::map<unsigned short, LSoundCacheItemHandle> items_;
};

// What the load of one cut list found wrong; the list is loaded anyway.
struct SVCutListLoadReport {
  bool audioMissing = false;  // segments over audio that is gone now read as silence
  bool damaged = false;       // the container was incomplete
};

// Writes list as container id at order, with its preserved chunks and the audio
// of every item not stored yet. Cancelled: kLProcessCancelled; a failed read of
// the cache or write of the file: kLProcessFailed with the reason set.
[[nodiscard]] LProcessResult ProcessSaveCutListAudio(LProcessInterface& process, LSDFWriter& writer, unsigned short id,
                                                     int order, const LCutListAudio& list,
                                                     const LList<LSDFUnknownChunk>& preserved,
                                                     SVProjectAudioStore& store);
// The same with the references only.
[[nodiscard]] LProcessResult ProcessSaveCutListAudioLink(LProcessInterface& process, LSDFWriter& writer,
                                                         unsigned short id, int order, const LCutListAudio& list,
                                                         const LList<LSDFUnknownChunk>& preserved);

// Reads the container back into out (emptied first), keeping chunks it does not
// know in unknown. link: the container holds references into the live cache (a
// link save), else it names items of restore, to which its stored audio is added.
// Cancelled: kLProcessCancelled; a cache that cannot take the audio:
// kLProcessFailed with the reason set; anything else loads, see report.
[[nodiscard]] LProcessResult ProcessLoadCutListAudio(LProcessInterface& process, LSDFReader& reader,
                                                     const LSDFChunkInfo& container, bool link, LCutListAudio& out,
                                                     LList<LSDFUnknownChunk>& unknown, SVProjectAudioRestore& restore,
                                                     SVCutListLoadReport& report);
