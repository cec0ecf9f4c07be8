#pragma once
// SVChunkOrder: the `order` to give each known chunk written into a container
// that has preserved chunks, so that those come back between the same
// neighbours as when they were read. It follows the writer's rules (the run of
// chunks indexed 0, 1, 2, ... goes first; a pending chunk goes before a chunk
// written with a larger order) and counts positions as they were read, so a
// preserved chunk that the writer drops (empty data) still holds its place.
#include "base/list.h"
#include "base/sdf_unknown_chunk.h"

class SVChunkOrder {
public:
  // preserved: the list handed to StartContainer (or the writer's Open) for this container.
  explicit SVChunkOrder(const LList<LSDFUnknownChunk>& preserved);

  // The order for the next known chunk: it takes the first position as read
  // after the previous chunk that no preserved chunk held.
  [[nodiscard]] int Next();
  // The order for a known chunk whose index as read is known: the pending
  // chunks read before it go before it.
  [[nodiscard]] int At(int indexAsRead);

private:
  LList<LSDFUnknownChunk>::const_iterator pending_;
  LList<LSDFUnknownChunk>::const_iterator end_;
  int position_ = 0;  // the index as read of the next known chunk, as far as known
};
