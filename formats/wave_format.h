#pragma once
// WAVE constants: chunk ids, format tags and sub-format GUIDs. Every value here
// is on disk and must never change.
#include <cstdint>

// A four-character chunk id as the little-endian 32-bit value read from a file.
constexpr std::uint32_t LRiffId(const char (&id)[5]) {
  return static_cast<std::uint32_t>(static_cast<unsigned char>(id[0])) |
         static_cast<std::uint32_t>(static_cast<unsigned char>(id[1])) << 8 |
         static_cast<std::uint32_t>(static_cast<unsigned char>(id[2])) << 16 |
         static_cast<std::uint32_t>(static_cast<unsigned char>(id[3])) << 24;
}

// Chunk ids (on disk, never change).
constexpr std::uint32_t kLRiffIdRiff = LRiffId("RIFF");
constexpr std::uint32_t kLRiffIdWave = LRiffId("WAVE");
constexpr std::uint32_t kLRiffIdFmt = LRiffId("fmt ");
constexpr std::uint32_t kLRiffIdData = LRiffId("data");
constexpr std::uint32_t kLRiffIdFact = LRiffId("fact");

// Format tags of the fmt chunk (on disk, never change).
constexpr std::uint16_t kLWaveTagPCM = 1;
constexpr std::uint16_t kLWaveTagMSADPCM = 2;
constexpr std::uint16_t kLWaveTagIEEEFloat = 3;
constexpr std::uint16_t kLWaveTagALaw = 6;
constexpr std::uint16_t kLWaveTagMuLaw = 7;
constexpr std::uint16_t kLWaveTagIMAADPCM = 17;
constexpr std::uint16_t kLWaveTagTrueSpeech = 34;
constexpr std::uint16_t kLWaveTagGSM610 = 49;
constexpr std::uint16_t kLWaveTagSharpG726 = 69;
constexpr std::uint16_t kLWaveTagMPEGLayer3 = 85;
constexpr std::uint16_t kLWaveTagExtensible = 0xFFFE;

// Sub-format GUID of extensible PCM, {00000001-0000-0010-8000-00AA00389B71}, as
// its 16 bytes appear in the file (on disk, never change).
constexpr unsigned char kLWaveSubFormatPCM[16] = {0x01, 0x00, 0x00, 0x00, 0x00, 0x00, 0x10, 0x00,
                                                  0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71};

// Sizes in the fmt chunk and chunk headers.
constexpr int kLRiffChunkHeaderBytes = 8;
constexpr int kLWaveFmtMinBytes = 16;
constexpr int kLWaveFmtMaxBytes = 8192;
// Offset of the sub-format GUID inside an extensible fmt body, and the extra size that holds it.
constexpr int kLWaveFmtSubFormatOffset = 24;
constexpr int kLWaveExtensibleExtraBytes = 22;

// Data sizes at or above this are a writer's provisional values: the length is not known yet.
constexpr std::uint32_t kLWaveProvisionalDataSize = 0xFFFFFF01u;

// Limits of a fmt chunk that the reader accepts.
constexpr int kLWaveMaxChannels = 255;
constexpr std::uint32_t kLWaveMaxSampleRate = 196000;

// The codec a format tag needs, named for the user; nullptr for tags without a name here.
[[nodiscard]] const char* LWaveCodecName(std::uint16_t tag);
