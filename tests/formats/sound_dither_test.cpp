#include "formats/sound_dither.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <vector>

#include "formats/wave_file.h"
#include "support/temp_folder.h"
#include "wave_fixtures.h"

namespace {

constexpr float S = 32767.0f;

std::vector<std::int16_t> Dithered(LSoundDither& dither, const std::vector<float>& in, int channels = 1) {
  std::vector<std::int16_t> out(in.size());
  dither.ConvertSamplesOut<LSF16>(out.data(), in.data(), static_cast<long long>(in.size()) / channels, channels);
  return out;
}

std::vector<std::int16_t> WrittenBy16BitWave(int rate, const std::vector<float>& in) {
  TempFolder folder;
  const std::string path = folder.File("d.wav");
  {
    LSoundSink sink = LWaveFile::OpenSinkPCM(path.c_str(), rate, 1, 16, 0, true);
    sink.Write(in.data(), static_cast<long long>(in.size()));
  }
  const Bytes b = FileBytes(path);
  std::vector<std::int16_t> out;
  for (size_t i = 44; i + 1 < b.size(); i += 2) out.push_back(static_cast<std::int16_t>(GetLE16(b, i)));
  return out;
}

const std::vector<float> kTenPointFour(5, 10.4f / S);

}  // namespace

TEST(SoundDither, TheRoundingErrorIsFedIntoTheNextTwoSamplesOfTheSameChannel) {
  LSoundDither dither(true);
  // Errors +0.4, -0.6, +0.4 ... shaped with 0.9 and 0.45: 10.4, 10.76, 10.04, 10.49, 10.94.
  EXPECT_EQ(Dithered(dither, kTenPointFour), (std::vector<std::int16_t>{10, 11, 10, 10, 11}));
  LSoundDither off(false);
  EXPECT_EQ(Dithered(off, kTenPointFour), std::vector<std::int16_t>(5, 10));
  LSoundDither stereo(true);
  std::vector<float> interleaved;
  for (float v : kTenPointFour) interleaved.insert(interleaved.end(), {v, 0.0f});
  EXPECT_EQ(Dithered(stereo, interleaved, 2), (std::vector<std::int16_t>{10, 0, 11, 0, 10, 0, 10, 0, 11, 0}));
  LSoundDither zeros(true);
  EXPECT_EQ(Dithered(zeros, std::vector<float>(3000, 0.0f), 3), std::vector<std::int16_t>(3000, 0));
}

TEST(SoundDither, QuietInputAfterLongSilenceStaysSilent) {
  LSoundDither shortSilence(true);
  EXPECT_EQ(Dithered(shortSilence, {0, 0, 0.8f / S}), (std::vector<std::int16_t>{0, 0, 1}));
  // After five zero outputs the input is attenuated by 0.52 before the zero test.
  LSoundDither longSilence(true);
  EXPECT_EQ(Dithered(longSilence, {0, 0, 0, 0, 0, 0.8f / S, 0.8f / S}), std::vector<std::int16_t>(7, 0));
  // The quiet input kept as error during the silence pushes the first sound up: 1 + 0.9 * 0.8 + 0.45 * 0.8.
  EXPECT_EQ(Dithered(longSilence, {1.0f / S}), std::vector<std::int16_t>{2});
}

TEST(SoundDither, The16BitWaveWriterDithersAbove8000HzOnly) {
  EXPECT_EQ(WrittenBy16BitWave(8000, kTenPointFour), std::vector<std::int16_t>(5, 10));
  EXPECT_EQ(WrittenBy16BitWave(8001, kTenPointFour), (std::vector<std::int16_t>{10, 11, 10, 10, 11}));
}

TEST(SoundDither, EveryChannelCountShapesEachChannelAsAMonoStreamWouldInAnyBlocks) {
  // Noise of both signs with a silent stretch, so every branch is taken.
  std::vector<float> noise(3000);
  std::uint32_t seed = 12345;
  for (size_t i = 0; i < noise.size(); ++i) {
    seed = seed * 1664525u + 1013904223u;
    noise[i] = (i > 1000 && i < 1100) ? 0.0f : (static_cast<float>(seed >> 8) / 16777216.0f - 0.5f) * 0.01f;
  }
  for (int channels : {2, 3}) {
    std::vector<float> interleaved;
    for (float v : noise) {
      for (int c = 0; c < channels; ++c) interleaved.push_back(c == 1 ? -v : v * static_cast<float>(c + 1));
    }
    LSoundDither many(true);
    std::vector<std::int16_t> got;
    const size_t step = static_cast<size_t>(234 * channels);
    for (size_t at = 0; at < interleaved.size(); at += step) {
      const std::vector<float> piece(interleaved.begin() + static_cast<long>(at),
                                     interleaved.begin() + static_cast<long>(std::min(at + step, interleaved.size())));
      const std::vector<std::int16_t> out = Dithered(many, piece, channels);
      got.insert(got.end(), out.begin(), out.end());
    }
    for (int c = 0; c < channels; ++c) {
      std::vector<float> mono;
      for (size_t i = static_cast<size_t>(c); i < interleaved.size(); i += static_cast<size_t>(channels)) {
        mono.push_back(interleaved[i]);
      }
      LSoundDither one(true);
      const std::vector<std::int16_t> expected = Dithered(one, mono);
      for (size_t f = 0; f < expected.size(); ++f) {
        ASSERT_EQ(got[f * static_cast<size_t>(channels) + static_cast<size_t>(c)], expected[f])
            << channels << " channels, channel " << c << ", frame " << f;
      }
    }
  }
}
