#include "app/project_chunk_order.h"

#include <algorithm>

SVChunkOrder::SVChunkOrder(const LList<LSDFUnknownChunk>& preserved)
    : pending_(preserved.begin()), end_(preserved.end()) {
  for (; pending_ != end_ && pending_->index == position_; ++pending_) ++position_;
}

int SVChunkOrder::Next() {
  for (; pending_ != end_ && pending_->index <= position_; ++pending_)
    position_ = std::max(position_, pending_->index + 1);
  return At(position_);
}

int SVChunkOrder::At(int indexAsRead) {
  // The writer puts these before the chunk written with this order.
  while (pending_ != end_ && pending_->index < indexAsRead) ++pending_;
  position_ = std::max(position_, indexAsRead + 1);
  return indexAsRead;
}
