// Stereo pan: the far side lowered linearly, the near side kept.
#include <gtest/gtest.h>

#include "app/ef_stereo_pan.h"
#include "edit_fixture.h"

namespace {

using EfStereoPanTest = EditTest;

TEST_F(EfStereoPanTest, ThePanLowersTheOtherSideLinearly) {
  struct Case {
    double pan;
    float left;
    float right;
  };
  for (const Case& k : {Case{0.5, 0.5f, 1.0f}, Case{-0.75, 1.0f, 0.25f}, Case{-1.0, 1.0f, 0.0f}, Case{0.0, 1.0f, 1.0f},
                        Case{3.0, 0.0f, 1.0f}}) {
    LCutListAudio list = StaircaseList(9000, 2);
    SVSelection selection{1000, 8000, 0, 0, 0};
    SVEfStereoPan pan(list, selection, k.pan);
    EXPECT_STREQ(pan.GetEffectName(), "Stereoschwenk");
    LProcessInterfaceQuiet process;
    ASSERT_EQ(pan.ProcessAndInsertCutList(process), 0);
    const std::vector<float> after = DocReadAll(list);
    for (long long f = 0; f < 9000; ++f) {
      const bool inside = f >= 1000 && f < 8000;
      ASSERT_EQ(after[static_cast<std::size_t>(f * 2)], DocStaircaseValue(f, 0) * (inside ? k.left : 1.0f)) << f;
      ASSERT_EQ(after[static_cast<std::size_t>(f * 2 + 1)], DocStaircaseValue(f, 1) * (inside ? k.right : 1.0f)) << f;
    }
  }
}

}  // namespace
