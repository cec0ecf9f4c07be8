// The window's tests run on the offscreen platform inside one QApplication.
#include <QApplication>
#include <cstdlib>

#include <gtest/gtest.h>

int main(int argc, char** argv) {
  setenv("QT_QPA_PLATFORM", "offscreen", 0);
  // No sound device is needed to test the window.
  setenv("SONVALE_AUDIO_BACKEND", "null", 0);
  QApplication app(argc, argv);
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
