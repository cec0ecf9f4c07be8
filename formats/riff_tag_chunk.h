#pragma once
// The RIFF chunks that carry tags: their ids, header sizes and the sizes of
// their fixed parts. Every id and size here is on disk and must never change.
#include <cstdint>

#include "formats/wave_format.h"

// Chunk ids of the tag chunks (on disk, never change).
constexpr std::uint32_t kLRiffIdList = LRiffId("LIST");
constexpr std::uint32_t kLRiffIdInfo = LRiffId("INFO");
constexpr std::uint32_t kLRiffIdCue = LRiffId("cue ");
constexpr std::uint32_t kLRiffIdDisp = LRiffId("DISP");
constexpr std::uint32_t kLRiffIdId3 = LRiffId("id3 ");
// The spelling some other writers use for the embedded ID3 chunk; read and replaced, never written.
constexpr std::uint32_t kLRiffIdId3Upper = LRiffId("ID3 ");
constexpr std::uint32_t kLRiffIdBext = LRiffId("bext");
constexpr std::uint32_t kLRiffIdCart = LRiffId("cart");
constexpr std::uint32_t kLRiffIdCset = LRiffId("CSET");
constexpr std::uint32_t kLRiffIdJunk = LRiffId("JUNK");
// Four spaces: a tag key that has no chunk id.
constexpr std::uint32_t kLRiffIdNone = LRiffId("    ");

// "RIFF" or "LIST", size and a 4-character type; a plain chunk header is kLRiffChunkHeaderBytes.
constexpr int kLRiffListHeaderBytes = 12;

// DISP: a 32-bit type before the title; 1 is plain text (on disk, never change).
constexpr std::uint32_t kLDispTypeText = 1;
constexpr int kLDispTypeBytes = 4;

// cue: a 32-bit point count, then points of 24 bytes (on disk, never change).
constexpr int kLCueCountBytes = 4;
constexpr int kLCuePointBytes = 24;
// Fields of a cue point: identifier, position, chunk id ("data"), chunk start,
// block start, sample offset (on disk, never change).
constexpr int kLCuePointPositionOffset = 4;
constexpr int kLCuePointChunkIdOffset = 8;
constexpr int kLCuePointSampleOffsetOffset = 20;

// CSET: code page, country, language, dialect, 16 bits each (on disk, never change).
constexpr int kLCsetBodyBytes = 8;
// Code page of UTF-8, which is how this system writes every text chunk.
constexpr std::uint16_t kLCsetCodePageUtf8 = 65001;

// Fixed parts of the broadcast and cart chunks (on disk, never change).
constexpr int kLBextFixedBytes = 602;
constexpr int kLCartFixedBytes = 2048;

// A body of odd size is followed by one pad byte.
constexpr std::uint64_t LRiffPadded(std::uint64_t size) { return (size + 1) & ~std::uint64_t{1}; }
