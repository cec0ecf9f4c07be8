#include "effects/sound_process_parameter.h"

#include <gtest/gtest.h>

TEST(SoundProcessParameter, InitOwnsThreeBuffersOfTheTypesWidthAndReinitFreesThem) {
  LSoundProcessParameter p;
  EXPECT_FALSE(p.bOwned);
  p.Init<int>(kLSPParamInt, 1, 99, "Zunahme", "%");
  EXPECT_TRUE(p.bOwned);
  EXPECT_EQ(p.type, kLSPParamInt);
  EXPECT_EQ(p.nSize, 4);
  EXPECT_STREQ(p.szName, "Zunahme");
  EXPECT_STREQ(p.szUnit, "%");
  EXPECT_EQ(LSoundProcessParameter::Get<int>(p.pMin), 1);
  EXPECT_EQ(LSoundProcessParameter::Get<int>(p.pMax), 99);
  p.SetValue<int>(42);
  EXPECT_EQ(LSoundProcessParameter::Get<int>(p.pValue), 42);

  p.Init<double>(kLSPParamDouble, 50.0, 400.0, "Tonhöhe", "%");
  EXPECT_EQ(p.nSize, 8);
  EXPECT_EQ(p.type, kLSPParamDouble);
  EXPECT_STREQ(p.szName, "Tonhöhe");
  EXPECT_EQ(LSoundProcessParameter::Get<double>(p.pMax), 400.0);

  p.Init<unsigned short>(kLSPParamUInt16, 1, 5000, "Mittenfrequenz", "Hz");
  EXPECT_EQ(p.nSize, 2);
  EXPECT_EQ(LSoundProcessParameter::Get<unsigned short>(p.pMax), 5000);

  p.Init<bool>(kLSPParamBool, false, true, "An", "");
  EXPECT_EQ(p.nSize, 1);
  EXPECT_STREQ(p.szUnit, "");

  p.Free();
  EXPECT_FALSE(p.bOwned);
  EXPECT_EQ(p.nSize, 0);
  EXPECT_EQ(p.pValue, nullptr);
}

