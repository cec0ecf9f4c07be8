#include "app/frame_time.h"

#include "engine/sound_time.h"

std::string SVFramesTimeText(long long frames, long long rate) {
  char text[40];
  LSoundTime(SVFramesToMs(frames, rate))._GetTextHMMSSFFF(text);
  return text;
}
