#include "effects/envelope.h"

#include <gtest/gtest.h>

#include "effect_test_sources.h"

TEST(Envelope, RunsStraightBetweenPointsAndHoldsBeyondThem) {
  LSoundSource input = MakeBufferSource(std::vector<float>(2000, 1.0f), 8000, 1);
  // Out of order on purpose, with a step at 1500 (the later point wins after it).
  LSRCEnvelope envelope(input, {{1500, 0.25f}, {500, 1.0f}, {100, 0.0f}, {1500, 0.75f}});
  EXPECT_EQ(envelope.GainAt(-5), 0.0f);
  EXPECT_EQ(envelope.GainAt(100), 0.0f);
  EXPECT_EQ(envelope.GainAt(300), 0.5f);
  EXPECT_EQ(envelope.GainAt(500), 1.0f);
  EXPECT_EQ(envelope.GainAt(1000), 0.625f);
  EXPECT_EQ(envelope.GainAt(1500), 0.75f);
  EXPECT_EQ(envelope.GainAt(1999), 0.75f);
}

TEST(Envelope, ReadsTheSameInAnyBlocksAndAfterASeekAndPassesTheAudioWithoutPoints) {
  const std::vector<float> x = Staircase(3000, 2, 64.0f);
  const std::vector<LEnvelopePoint> points = {{0, 0.0f}, {2999, 1.0f}};
  LSoundSource whole = LMakeSource<LSRCEnvelope>(MakeBufferSource(x, 8000, 2), points);
  const std::vector<float> once = ReadAll(whole, 3000, 3000);
  LSoundSource pieces = LMakeSource<LSRCEnvelope>(MakeBufferSource(x, 8000, 2), points);
  EXPECT_EQ(ReadAll(pieces, 3000, 234), once);
  for (long long f = 0; f < 3000; ++f)
    for (int c = 0; c < 2; ++c)
      ASSERT_EQ(once[f * 2 + c], x[f * 2 + c] * static_cast<float>(f / 2999.0)) << f;
  pieces.Seek(1234);
  float frame[2];
  pieces.Read(frame, 1);
  EXPECT_EQ(frame[1], once[1234 * 2 + 1]);

  LSoundSource none = LMakeSource<LSRCEnvelope>(MakeBufferSource(x, 8000, 2), std::vector<LEnvelopePoint>{});
  EXPECT_EQ(ReadAll(none, 3000, 77), x) << "without points the audio passes as it is";
}
