#pragma once
// LCutListAttachment: an annotation carried along with a cut-list segment or a
// cut list (the MP3 frame layer and the analyzers attach theirs). Copied with
// its owner; never stored in the persisted form of a cut list.
#include "base/array.h"

struct LCutListAttachment {
  unsigned int kind = 0;       // chosen by whoever attaches it
  LArray<unsigned char> data;  // its own bytes, meaningful to that owner only
};
