#include "formats/block_wave_source.h"

#include <algorithm>

#include "engine/sample_format.h"
#include "formats/read_in_steps.h"

long long LBlockWaveFrames(long long blockFrames, long long factFrames, bool provisional) {
  if (provisional || factFrames <= 0) return blockFrames;
  return std::min(blockFrames, factFrames);
}

LBlockWaveSourceBase::LBlockWaveSourceBase(std::unique_ptr<LByteStream> stream, std::uint32_t sampleRate,
                                           int blockBytes, int samplesPerBlock, long long frames, int bufferBytes)
    : LSoundSourceBase(sampleRate, 1),
      stream_(std::move(stream)),
      blockBytes_(std::max(1, blockBytes)),
      samplesPerBlock_(std::max(1, samplesPerBlock)),
      frames_(std::max(0LL, frames)),
      block_(static_cast<size_t>(std::max(bufferBytes, blockBytes_))),
      samples_(static_cast<size_t>(samplesPerBlock_)) {
  SetMaxAmplitude(32767.0f / 32768.0f);
  if (!stream_ || (dataStart_ = stream_->Tell()) < 0) {
    SetErrorCode(kLSourceCannotOpen);
    stream_.reset();
    dataStart_ = 0;
    frames_ = 0;
  }
}

void LBlockWaveSourceBase::Decode(long long block) {
  if (block == decodedBlock_) return;
  if (block != decodedBlock_ + 1) DecoderReset();
  decodedBlock_ = block;
  decodedCount_ = 0;
  if (!stream_->Seek(dataStart_ + block * blockBytes_)) return;
  const long long got = stream_->Read(block_.data(), blockBytes_);
  if (got > 0) {
    decodedCount_ = std::clamp(DecodeBlock(block_.data(), static_cast<int>(got), samples_.data()), 0, samplesPerBlock_);
  }
}

void LBlockWaveSourceBase::Read(float* out, long long frames) {
  LReadInSteps(out, frames, 1, position_, [&](float* to, long long at, long long n) {
    long long done = 0;
    while (done < n && at + done < frames_) {
      const long long frame = at + done;
      const int offset = static_cast<int>(frame % samplesPerBlock_);
      Decode(frame / samplesPerBlock_);
      if (offset >= decodedCount_) break;
      const long long m = std::min({n - done, static_cast<long long>(decodedCount_ - offset), frames_ - frame});
      ConvertSamplesIn<LSF16>(to + done, samples_.data() + offset, m);
      done += m;
    }
    return done;
  });
}
