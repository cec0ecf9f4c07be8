#include "effects/sound_process_parameter.h"

#include <gtest/gtest.h>

TEST(SoundProcessParameter, ReinitTakesTheNewTypesWidthAndFreeReleasesTheBuffers) {
  LSoundProcessParameter p;
  EXPECT_FALSE(p.bOwned);
  p.Init<int>(kLSPParamInt, 1, 99, "Zunahme", "%");
  p.SetValue<int>(42);
  EXPECT_TRUE(p.bOwned);
  EXPECT_EQ(LSoundProcessParameter::Get<int>(p.pValue), 42);
  p.Init<double>(kLSPParamDouble, 50.0, 400.0, "Tonhöhe", "%");
  EXPECT_EQ(p.nSize, 8);
  EXPECT_EQ(LSoundProcessParameter::Get<double>(p.pMax), 400.0);
  p.Init<unsigned short>(kLSPParamUInt16, 1, 5000, "Mittenfrequenz", "Hz");
  EXPECT_EQ(p.nSize, 2);
  EXPECT_EQ(LSoundProcessParameter::Get<unsigned short>(p.pMax), 5000);
  p.Free();
  EXPECT_FALSE(p.bOwned);
  EXPECT_EQ(p.nSize, 0);
  EXPECT_EQ(p.pValue, nullptr);
}
