#pragma once
// The SDF chunked container: a 12-byte file header, a root container chunk
// (id 0, type 0) holding every top-level chunk, and a 4-byte trailer. A chunk is
// a 12-byte header (id u16, type u16, data length u64) followed by its data; a
// container's data is a sequence of chunks. Integers are stored as the host
// stores them, which for every supported host is little-endian.
#include <bit>
#include <cstddef>

static_assert(std::endian::native == std::endian::little, "SDF files are little-endian");
static_assert(sizeof(int) == 4 && sizeof(float) == 4 && sizeof(long long) == 8, "SDF value widths");

// The bytes "lsdf" that open and close every file. On disk: never change.
inline constexpr unsigned char kSDFMagic[4] = {0x6C, 0x73, 0x64, 0x66};
// Format version of the header and chunk encoding. On disk: never change.
inline constexpr unsigned short kSDFFormatVersion = 1;

inline constexpr std::size_t kSDFFileHeaderSize = 12;   // magic, format version, file type, data version
inline constexpr std::size_t kSDFChunkHeaderSize = 12;  // id, type, length
inline constexpr std::size_t kSDFTrailerSize = 4;       // the magic again

// Id of the root container. On disk: never change.
inline constexpr unsigned short kSDFRootChunkId = 0;

// Chunk types. On disk: never change. Types 5 and 8 are never written.
inline constexpr unsigned short kSDFChunkTypeContainer = 0;  // a sequence of chunks
inline constexpr unsigned short kSDFChunkTypeBool = 1;       // 1 byte, 0 or 1
inline constexpr unsigned short kSDFChunkTypeInt = 2;        // 4 bytes, signed
inline constexpr unsigned short kSDFChunkTypeInt64 = 3;      // 8 bytes, signed
inline constexpr unsigned short kSDFChunkTypeFloat = 4;      // 4 bytes, IEEE 754 single
inline constexpr unsigned short kSDFChunkTypeString = 6;     // the bytes and their terminating zero
inline constexpr unsigned short kSDFChunkTypeBlob = 7;       // raw bytes
inline constexpr unsigned short kSDFChunkTypeRecord = 9;     // a fixed record written field by field

// File types and their data versions. On disk: never change.
inline constexpr unsigned int kSDFFileTypeEffectChain = 11;  // ".ecf" files and effect presets
inline constexpr unsigned short kSDFDataVersionEffectChain = 1;
inline constexpr unsigned int kSDFFileTypeProject = 26;  // ".svp" project files
inline constexpr unsigned short kSDFDataVersionProject = 7;
inline constexpr unsigned int kSDFFileTypeProjectLoaderFile = 41;  // a file that the project loader writes
inline constexpr unsigned short kSDFDataVersionProjectLoaderFile = 1;
inline constexpr unsigned int kSDFFileTypeCacheItemInfo = 43;  // ".audinfo" and analyzer results
inline constexpr unsigned short kSDFDataVersionCacheItemInfo = 1;
inline constexpr unsigned int kSDFFileTypeSpectrum = 0xFFFFFFFFu;  // cached spectrum data
inline constexpr unsigned short kSDFDataVersionSpectrum = 1;

// The order of an ordinary write: no position among preserved chunks.
inline constexpr int kSDFNoOrder = -1;

// Where a chunk lies in the file and in its container.
struct LSDFChunkInfo {
  unsigned short id = 0;
  unsigned short type = 0;
  unsigned long long dataOffset = 0;  // absolute offset of the data, just after the header
  unsigned long long length = 0;      // bytes of data that follow the header
  int index = 0;                      // position within its container, from 0
};
