#pragma once
// SVWaveLevels: the peak overview of cache items at three levels for drawing:
// the items' own ".grf" records (one per 256 frames, read when needed), and two
// coarser levels kept in memory, one record set per 16 and per 256 of them
// (4096 and 65536 frames). A coarse record holds the largest codes of the
// records it covers, so it is computed once per item and only from records that
// exist: a record is known to exist when a segment of a cut list reaches it,
// which also holds for an item still being written (a list shows only frames
// whose overview is written). The last, incomplete set of each coarse level is
// kept too and made again when more of the item becomes known.
//
// Items never change once written, so the levels of a number stay valid until
// the number is reused: a finished item under it, or a different ".grf" file,
// drops them. Memory is about 1/16 of the items' overview files, and items not
// used for longest go first when the levels grow past their limit; besides,
// the last 32 pages of 4096 level-0 records read are kept.
//
// Threads: any thread; one mutex guards everything.
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

#include "engine/cut_list_grf.h"
#include "engine/sound_cache_item_handle.h"

inline constexpr int kSVWaveLevelCount = 3;
// Frames per record set of each level; level 0 is the item's own ".grf".
inline constexpr long long kSVWaveLevelFrames[kSVWaveLevelCount] = {256, 256 * 16, 256 * 256};
inline constexpr long long kSVWaveLevelFactor = 16;

class SVWaveLevels {
public:
  [[nodiscard]] static SVWaveLevels& Instance();
  ~SVWaveLevels();
  SVWaveLevels(const SVWaveLevels&) = delete;
  SVWaveLevels& operator=(const SVWaveLevels&) = delete;

  // Starts a drawing pass: each item's files are checked once per pass.
  void PassBegin();
  // Fills out with channels records per set for the sets [first, first + count)
  // of level of item; knownRecords: the item's ".grf" records that exist (at
  // least). Sets past what exists are zero. False when the overview cannot be
  // read (out is then zero).
  bool Records(const LSoundCacheItemHandle& item, int channels, int level, long long first, long long count,
               long long knownRecords, std::vector<LCutListGrfRecord>& out);

  // Forgets every item.
  void Clear();
  // Memory of the coarse levels.
  [[nodiscard]] std::size_t MemoryBytes();
  // The in-memory limit; the default keeps about 100 hours of stereo.
  void MemoryLimitSet(std::size_t bytes);

private:
  SVWaveLevels();

  struct Item {
    int channels = 0;
    std::string grfPath;
    unsigned long long device = 0;
    unsigned long long inode = 0;
    long long known = 0;  // level-0 records known to exist
    std::vector<LCutListGrfRecord> levels[kSVWaveLevelCount - 1];  // complete sets of levels 1 and 2
    // The set after the complete ones, over the known records it holds (empty: none).
    std::vector<LCutListGrfRecord> tails[kSVWaveLevelCount - 1];
    long long tailsKnown = 0;  // the known count the tails were made for
    unsigned long long pass = 0;   // the pass that last checked the files
    unsigned long long lastUse = 0;
    [[nodiscard]] long long Sets(int level) const {
      return static_cast<long long>(levels[level - 1].size()) / channels;
    }
  };

  // Pages of an item's own records, kept so that many short segments over the
  // same stretch of an item read its file once.
  struct Page {
    unsigned short item = 0;
    long long index = 0;  // first record / kPageRecords
    long long valid = 0;  // records read
    std::vector<LCutListGrfRecord> records;
    unsigned long long lastUse = 0;
  };
  static constexpr long long kPageRecords = 4096;
  static constexpr std::size_t kPagesKept = 32;

  Item* Lookup(const LSoundCacheItemHandle& item, int channels);
  void Forget(unsigned short number);
  // Records [first, first + count) from the file, those past the known ones zero.
  bool ReadFile(const LSoundCacheItemHandle& handle, const Item& item, long long first, long long count,
                std::vector<LCutListGrfRecord>& out);
  const Page* PageGet(const LSoundCacheItemHandle& handle, const Item& item, long long index, long long needed);
  // Grows the in-memory levels to cover every complete set of what is known.
  bool Extend(const LSoundCacheItemHandle& handle, Item& item, long long knownRecords);
  bool ReadLevel0(const LSoundCacheItemHandle& handle, const Item& item, long long first, long long count,
                  std::vector<LCutListGrfRecord>& out);
  bool RecordsLocked(const LSoundCacheItemHandle& handle, Item& item, int level, long long first, long long count,
                     std::vector<LCutListGrfRecord>& out);
  void Trim(unsigned short keep);

  std::mutex mutex_;
  std::unordered_map<unsigned short, Item> items_;
  std::vector<Page> pages_;
  unsigned long long pass_ = 1;
  unsigned long long clock_ = 0;
  std::size_t limit_ = std::size_t{64} << 20;
  int analyzer_ = -1;
};
