#include "engine/cut_list_segment.h"

#include <algorithm>

void LCutListSegment::SubtractEncoderPadding() {
  if (!item.IsItem()) return;
  LMP3ItemAttributes attributes = mp3;
  if (!attributes.source) {
    if (!LMP3ItemAttributesFill(item.Number(), &attributes)) return;
    mp3 = attributes;
  }
  const long long usableEnd = attributes.firstFrame + attributes.frameCount;
  if (offset + length > usableEnd) length = std::max(usableEnd - offset, 0LL);
}
