#include "audio/audio_device.h"

#include <gtest/gtest.h>

#include "audio/audio_null_backend.h"

TEST(AudioDevice, DevicesAreFoundByNameOrDescriptionAndUnknownOnesAreRefusedWithTheirName) {
  EXPECT_EQ(LAudioBackendCreate("kein-solches"), nullptr);
  auto null = LAudioBackendCreate("null");
  ASSERT_NE(null, nullptr);
  std::vector<LAudioDeviceInfo> devices;
  ASSERT_EQ(null->Enumerate(&devices), LAudioStatus::kOK);
  const LAudioDeviceInfo* byDescription = LAudioDeviceFind(devices, LAudioDirection::kInput, "Stille Eingabe");
  ASSERT_NE(byDescription, nullptr);
  EXPECT_EQ(byDescription->name, "null.monitor");
  EXPECT_EQ(LAudioDeviceFind(devices, LAudioDirection::kOutput, ""), &devices[0]) << "the default";

  LAudioCallback callback;
  std::unique_ptr<LAudioStream> stream;
  LAudioStreamSpec shape;
  shape.device = "hw:99,0";
  EXPECT_EQ(null->Open(LAudioDirection::kOutput, shape, &callback, &stream), LAudioStatus::kNoDevice);
  EXPECT_NE(LAudioStatusMessage(LAudioStatus::kNoDevice, shape.device).find("\"hw:99,0\" wurde nicht gefunden"),
            std::string::npos);

  // ALSA without hardware: the list still has the default devices, and a card that is not there is refused.
  auto alsa = LAudioBackendCreate("alsa");
  if (!alsa) GTEST_SKIP() << "this build has no ALSA";
  ASSERT_EQ(alsa->Enumerate(&devices), LAudioStatus::kOK);
  EXPECT_NE(LAudioDeviceFind(devices, LAudioDirection::kOutput, "default"), nullptr);
  EXPECT_NE(LAudioDeviceFind(devices, LAudioDirection::kInput, "default"), nullptr);
  for (const auto direction : {LAudioDirection::kOutput, LAudioDirection::kInput})
    EXPECT_EQ(alsa->Open(direction, shape, &callback, &stream), LAudioStatus::kNoDevice);
  EXPECT_EQ(stream, nullptr);
}
