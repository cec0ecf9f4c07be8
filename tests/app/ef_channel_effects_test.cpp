// The effects that work on each frame's channels alone (invert, swap, join,
// pan, amplify): a staircase over three items goes through each, and every
// sample is checked inside the selection and outside it.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <memory>

#include "app/ef_amplify.h"
#include "app/ef_channel_invert.h"
#include "app/ef_channel_swap.h"
#include "app/ef_join_channels.h"
#include "app/ef_stereo_pan.h"
#include "edit_fixture.h"

namespace {

constexpr long long kFrames = 12000;
constexpr long long kStart = 2500;  // the selection crosses both item boundaries
constexpr long long kEnd = 11000;

using Make = std::function<std::unique_ptr<SVEfCutListProcess>(LCutListAudio&, SVSelection&)>;

template <class Effect, class... Args>
Make Maker(Args... args) {
  return [=](LCutListAudio& l, SVSelection& s) { return std::make_unique<Effect>(l, s, args...); };
}

struct ChannelCase {
  const char* name;  // of the test
  const char* label;
  int channels;
  Make make;
  std::function<float(long long, int)> inside;  // sample (frame, channel) inside the selection
  int newFiles = 1;
};

void PrintTo(const ChannelCase& k, std::ostream* out) { *out << k.name; }

ChannelCase Pan(const char* name, double pan, float left, float right) {
  return {name, "Stereoschwenk", 2, Maker<SVEfStereoPan>(pan),
          [=](long long f, int c) { return DocStaircaseValue(f, c) * (c == 0 ? left : right); }};
}

class ChannelEffectTest : public EditTest, public ::testing::WithParamInterface<ChannelCase> {};

TEST_P(ChannelEffectTest, TheSelectionIsMappedSampleForSampleAndTheRestKept) {
  const ChannelCase& k = GetParam();
  LCutListAudio list = PiecewiseStaircase(kFrames, k.channels, 3);
  const LCutListAudio kept = list;  // holds the items, as an undo snapshot would
  const int files = CacheAudioFiles();
  SVSelection selection{kStart, kEnd, 0, 0, 0};
  const std::unique_ptr<SVEfCutListProcess> effect = k.make(list, selection);
  EXPECT_STREQ(effect->GetEffectName(), k.label);
  LProcessInterfaceQuiet process;
  ASSERT_EQ(effect->ProcessAndInsertCutList(process), 0);
  EXPECT_EQ(list.GetChannels(), k.channels);
  EXPECT_EQ(selection.end, kEnd);
  EXPECT_EQ(CacheAudioFiles(), files + k.newFiles);
  const std::vector<float> after = DocReadAll(list);
  ASSERT_EQ(after.size(), static_cast<std::size_t>(kFrames * k.channels));
  for (long long f = 0; f < kFrames; ++f) {
    for (int c = 0; c < k.channels; ++c) {
      const float expected = f >= kStart && f < kEnd ? k.inside(f, c) : DocStaircaseValue(f, c);
      ASSERT_EQ(after[static_cast<std::size_t>(f * k.channels + c)], expected) << "frame " << f << " channel " << c;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(
    Effects, ChannelEffectTest,
    ::testing::Values(
        ChannelCase{"InvertAll", "Kanal invertieren", 2, Maker<SVEfChannelInvert>(kLChannelMaskAll),
                    [](long long f, int c) { return -DocStaircaseValue(f, c); }},
        ChannelCase{"InvertRight", "Kanal invertieren", 2, Maker<SVEfChannelInvert>(2u),
                    [](long long f, int c) { return c == 1 ? -DocStaircaseValue(f, c) : DocStaircaseValue(f, c); }},
        // A third channel stays where it is.
        ChannelCase{"SwapOfThreeChannels", "Kanalwechsel", 3, Maker<SVEfChannelSwap>(),
                    [](long long f, int c) { return DocStaircaseValue(f, c < 2 ? 1 - c : c); }},
        ChannelCase{"SwapOfMono", "Kanalwechsel", 1, Maker<SVEfChannelSwap>(), DocStaircaseValue},
        // f + 0.125 is exact in float.
        ChannelCase{"Join", "Kanäle zusammenführen", 2, Maker<SVEfJoinChannels>(),
                    [](long long f, int) { return static_cast<float>(f) + 0.125f; }},
        Pan("PanRight", 0.5, 0.5f, 1.0f), Pan("PanLeft", -0.75, 1.0f, 0.25f), Pan("PanFullLeft", -1.0, 1.0f, 0.0f),
        Pan("PanCentre", 0.0, 1.0f, 1.0f), Pan("PanBeyondRight", 3.0, 0.0f, 1.0f),
        // Amplify changes the segments' gains and writes no audio.
        ChannelCase{"Amplify", "Verstärken", 2, Maker<SVEfAmplify>(-6.0),
                    [](long long f, int c) {
                      return DocStaircaseValue(f, c) * static_cast<float>(std::pow(10.0, -6.0 / 20.0));
                    },
                    0}),
    [](const ::testing::TestParamInfo<ChannelCase>& info) { return std::string(info.param.name); });

}  // namespace
