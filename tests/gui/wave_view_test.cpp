#include "gui/wave_view.h"

#include <gtest/gtest.h>

TEST(WaveView, WithoutADocumentShowsNothingAndPaints) {
  SVWaveView view;
  view.resize(400, 200);
  view.show();
  EXPECT_EQ(view.Window(), nullptr);
  view.viewport()->repaint();
}
