#pragma once
// What the fuzz targets share: a check that stops the run as a crash, so the
// fuzzer keeps the input, and reading a source the two ways the tests do.
#include <cstddef>
#include <cstdint>

#include "base/byte_stream.h"
#include "engine/sound_source.h"

// Samples a target reads at most from one source: a header that promises
// gigabytes costs no more than a short file.
inline constexpr long long kFuzzMostSamples = 1 << 16;

// Aborts with the message when the condition does not hold.
void FuzzCheck(bool condition, const char* what);

// The frames a target reads from a source of this shape.
[[nodiscard]] long long FuzzFramesToRead(const LSoundSource& source);

// Reads the first frames of whole in one call and of blocks in pieces of `block`
// frames; the two must agree bit for bit, and a source that promises a bound on
// its values must keep it. When seeksAgree, a read after a seek to `probe` must
// agree with the same frames of the whole read. Answers the frames compared.
long long FuzzReadTwoWays(LSoundSource& whole, LSoundSource& blocks, long long block, long long probe,
                          bool seeksAgree);

// A little-endian value from bytes, 0 for bytes beyond the end.
[[nodiscard]] std::uint32_t FuzzLE32(const std::uint8_t* data, std::size_t size, std::size_t at);

// A stream over one that the caller keeps, for writers that own and destroy the
// stream they are given while the caller still wants the bytes.
class FuzzBorrowedStream final : public LByteStream {
public:
  explicit FuzzBorrowedStream(LByteStream& inner) : inner_(inner) {}
  long long Read(void* buffer, long long n) override { return inner_.Read(buffer, n); }
  long long Write(const void* buffer, long long n) override { return inner_.Write(buffer, n); }
  bool Seek(long long offset) override { return inner_.Seek(offset); }
  long long Tell() override { return inner_.Tell(); }
  bool Truncate(long long size) override { return inner_.Truncate(size); }
  long long Size() override { return inner_.Size(); }

private:
  LByteStream& inner_;
};
