#pragma once
// LSoundProcessMulti: an effect chain. It owns its effects, linked through their
// pNext in the order they are applied: the first effect processes the raw input
// and each later one the output of the one before.
//
// Saved form (inside any container): per effect an int chunk 0x2000 with its type
// id, then a container 0x1000 holding the effect's own saved layout. Loading stops
// at a container with no type id before it (or with the id 0 of a short read) and
// at the id 16384; a point-list equaliser (type 9) in a record is dropped on every
// load, by design; ids this build does not know load as LSPUnknown.
#include <memory>

#include "effects/sound_process.h"

// Chunk ids of a chain record. On disk: never change.
inline constexpr unsigned short kLSPMultiChunkType = 0x2000;    // int, the type id of the effect that follows
inline constexpr unsigned short kLSPMultiChunkEffect = 0x1000;  // container of one effect's record

class LSoundProcessMulti {
public:
  LSoundProcessMulti() = default;
  ~LSoundProcessMulti() { Clear(); }
  LSoundProcessMulti(const LSoundProcessMulti&) = delete;
  LSoundProcessMulti& operator=(const LSoundProcessMulti&) = delete;
  LSoundProcessMulti(LSoundProcessMulti&& other) noexcept;
  LSoundProcessMulti& operator=(LSoundProcessMulti&& other) noexcept;

  // Takes the effect and links it at the end.
  void Append(std::unique_ptr<LSoundProcess> effect);
  // Destroys every effect.
  void Clear();
  LSoundProcess* GetFirst() const { return first_; }
  int GetCount() const { return count_; }
  // The effect at a position, or null outside 0 ... count - 1.
  LSoundProcess* GetAt(int index) const;

  // The input wrapped by every effect that is valid and not disabled, in order;
  // with none of those, the input itself (one more reference).
  [[nodiscard]] LSoundSource OpenSource(LSoundSource& input) const;

  // Appends the effects recorded in the container the iterator walks.
  void LoadFromSDF(LSDFReader& reader, LSDFReaderChunkIterator& iterator);
  // Writes one record per effect into the writer's current container.
  void SaveToSDF(LSDFWriter& writer) const;

private:
  LSoundProcess* first_ = nullptr;
  LSoundProcess* last_ = nullptr;
  int count_ = 0;
};
