#pragma once
// What the MP3 frame layer knows of a cache item that was decoded from an MP3
// file: where the real audio starts and how long it is without the encoder's
// padding. The frame layer installs the lookup; without it no item has an MP3
// source, and segments over such items are never shortened.
#include <cstdint>

// The frame layer's description of an item's MP3 frames; it owns these for the
// life of the process, so a pointer to one stays valid.
class LMP3ItemSource;

struct LMP3ItemAttributes {
  const LMP3ItemSource* source = nullptr;  // null until looked up (and for items without an MP3 source)
  long long firstFrame = 0;                // first frame of real audio, after the encoder's delay
  long long frameCount = 0;                // frames of real audio, without the encoder's padding
  long long paddingFrames = 0;             // frames the encoder appended after the audio
};

// Answers false for an item without an MP3 source; otherwise fills out.
using LMP3ItemAttributesLookup = bool (*)(unsigned short item, LMP3ItemAttributes* out);

// Installs the frame layer's lookup (null removes it). Any thread.
void LMP3ItemAttributesLookupSet(LMP3ItemAttributesLookup lookup);
// Fills the attributes of item; false when it has no MP3 source.
[[nodiscard]] bool LMP3ItemAttributesFill(unsigned short item, LMP3ItemAttributes* out);
