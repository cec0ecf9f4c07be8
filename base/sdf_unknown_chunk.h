#pragma once
// LSDFUnknownChunk: a chunk that its reader did not understand, kept verbatim so
// that a later write puts it back where it was read (LSDFWriter::StartContainer).
#include "base/array.h"

struct LSDFUnknownChunk {
  unsigned short id = 0;
  unsigned short type = 0;
  LArray<unsigned char> data;  // the whole data; a container's nested chunks included
  int index = 0;               // position within the container it was read from

  unsigned long long DataLength() const { return data.size(); }
};
