#pragma once
// LSoundFileInfo: what an opener learned about a sound file besides its samples:
// the container and codec, the tags and the chapters. Shown by `sonvale info`;
// the tags also travel to the files the sound is saved to.
#include <string>

#include "base/array.h"
#include "formats/file_tag_data_audio.h"

// A chapter, in frames of the source.
struct LSoundFileChapter {
  long long start = 0;
  long long end = 0;
  std::string title;
};

struct LSoundFileInfo {
  std::string formatName;      // short container name, e.g. "wav", "aiff", "mp3", "ogg"
  std::string formatLongName;  // for people, e.g. "WAV / WAVE (Waveform Audio)"
  std::string codecName;       // short codec name, e.g. "pcm_s16le", "mp3"; the missing codec on code 7
  std::string codecLongName;
  long long bitRate = 0;  // bits per second, 0 when not known
  int bitsPerSample = 0;  // of the stored samples, 0 for compressed formats
  bool hasVideo = false;  // the sound is the track of a video file
  LFileTagDataAudio tags;
  LArray<LSoundFileChapter> chapters;
};
