#include "effects/point_list.h"

#include <gtest/gtest.h>

#include "effects/eq.h"

TEST(PointList, GainRunsLinearlyBetweenPointsHoldsBeyondThemAndStepsAtADoublePoint) {
  LPointList list;
  EXPECT_EQ(list.GainAt(1000), 0.0);
  list.Add(2000, -10);
  list.Add(1000, 10);  // out of order
  list.Add(3000, -10);
  EXPECT_EQ(list.Count(), 3u);
  EXPECT_EQ(list.At(0).frequency, 1000);
  EXPECT_EQ(list.GainAt(0), 10.0);
  EXPECT_EQ(list.GainAt(1000), 10.0);
  EXPECT_EQ(list.GainAt(1500), 0.0);
  EXPECT_EQ(list.GainAt(1750), -5.0);
  EXPECT_EQ(list.GainAt(2500), -10.0);
  EXPECT_EQ(list.GainAt(99999), -10.0);

  // Two points at one frequency draw a step.
  LPointList step;
  for (auto [hz, db] : {std::pair{100, 0}, {500, 0}, {500, -20}, {900, -20}}) step.Add(hz, db);
  EXPECT_EQ(step.GainAt(499.9), 0.0);
  EXPECT_EQ(step.GainAt(500), -20.0);
  EXPECT_EQ(step.GainAt(700), -20.0);
}

TEST(PointList, MappingFillsEveryWholeHertzUpToHalfTheRate) {
  LPointList list;
  for (auto [hz, db] : {std::pair{10, -60}, {999, -60}, {1000, 0}, {2000, 0}, {2001, -60}}) list.Add(hz, db);
  LSPEq eq;
  list.MapPointListToEq(eq, 8000);
  ASSERT_EQ(eq.GetGains().size(), 4001u);
  EXPECT_EQ(eq.GetGains()[999], -60.0f);
  EXPECT_EQ(eq.GetGains()[1000], 0.0f);
  EXPECT_EQ(eq.GetGains()[2000], 0.0f);
  EXPECT_EQ(eq.GetGains()[2001], -60.0f);
  EXPECT_EQ(eq.GetGains()[4000], -60.0f);
  list.MapPointListToEq(eq, 0);  // no rate: mapped at 44100 Hz
  EXPECT_EQ(eq.GetGains().size(), 22051u);
}
