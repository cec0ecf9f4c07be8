#include "engine/mp3_item_attributes.h"

#include <atomic>

namespace {

std::atomic<LMP3ItemAttributesLookup> gLookup{nullptr};

}  // namespace

void LMP3ItemAttributesLookupSet(LMP3ItemAttributesLookup lookup) { gLookup.store(lookup); }

bool LMP3ItemAttributesFill(unsigned short item, LMP3ItemAttributes* out) {
  LMP3ItemAttributesLookup lookup = gLookup.load();
  return lookup && out && lookup(item, out);
}
