#pragma once
// SVFileGetRecentFileData: which files the recent-files menu shows: projects and
// the audio files the program opens, not video files (whose sound track would
// open too, but they are not what the list is for).
#include <cstddef>

// Lengths of the extension lists.
inline constexpr std::size_t kSVVideoExtensionCount = 65;
inline constexpr std::size_t kSVAudioExtensionCount = 60;

class SVFileGetRecentFileData {
public:
  // extension with its dot (".wav"); case is ignored. Empty is refused,
  // ".svp" accepted, a video extension refused, an audio extension accepted,
  // anything else refused.
  [[nodiscard]] static bool IsExtValid(const char* extension);

  [[nodiscard]] static const char* const* VideoExtensions();
  [[nodiscard]] static const char* const* AudioExtensions();
};
