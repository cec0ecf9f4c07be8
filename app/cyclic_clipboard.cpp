#include "app/cyclic_clipboard.h"

#include <algorithm>

SVCyclicClipboard& SVCyclicClipboard::Instance() {
  static SVCyclicClipboard instance;
  return instance;
}

void SVCyclicClipboard::Store(const LCutListAudio& list) {
  entries_[writeIndex_] = list;
  lastIndex_ = writeIndex_;
  writeIndex_ = (writeIndex_ + 1) % kSVCyclicClipboardEntries;
  count_ = std::min(count_ + 1, kSVCyclicClipboardEntries);
}

void SVCyclicClipboard::Clear() {
  for (LCutListAudio& entry : entries_) entry = LCutListAudio();
  writeIndex_ = 0;
  lastIndex_ = 0;
  count_ = 0;
}
