#include "app/recent_file_data.h"

#include <iterator>
#include <strings.h>

namespace {

// Project files.
constexpr const char* kProjectExtension = ".svp";

constexpr const char* kVideoExtensions[] = {
    ".264",  ".3g2",   ".3gp",   ".3gpp",  ".amv",  ".asf",  ".asx",  ".avi",  ".avs",  ".bik",   ".dat",
    ".divx", ".dv",    ".dvr-ms", ".f4v",  ".flv",  ".gvi",  ".h261", ".h263", ".h264", ".hevc",  ".ivf",
    ".m1v",  ".m2p",   ".m2t",   ".m2ts",  ".m2v",  ".m4e",  ".m4v",  ".mjpeg", ".mjpg", ".mkv",  ".mod",
    ".moov", ".mov",   ".movie", ".mp2v",  ".mp4",  ".mp4v", ".mpe",  ".mpeg", ".mpeg1", ".mpeg2", ".mpeg4",
    ".mpg",  ".mpv",   ".mpv2",  ".mts",   ".mxf",  ".nsv",  ".nuv",  ".ogm",  ".ogv",  ".qt",    ".rm",
    ".rmvb", ".rv",    ".swf",   ".tod",   ".ts",   ".vob",  ".vp6",  ".webm", ".wmv",  ".wtv",
};
static_assert(std::size(kVideoExtensions) == kSVVideoExtensionCount);

constexpr const char* kAudioExtensions[] = {
    ".wav",  ".mp3", ".aif",  ".aiff", ".aifc", ".flac", ".ogg",  ".oga",  ".opus", ".spx", ".gsm",  ".vox",
    ".amr",  ".awb", ".wma",  ".m4a",  ".m4b",  ".m4r",  ".aac",  ".adts", ".ac3",  ".eac3", ".dts", ".ape",
    ".wv",   ".mpc", ".mp2",  ".mp1",  ".mpa",  ".au",   ".snd",  ".caf",  ".w64",  ".rf64", ".bwf", ".raw",
    ".pcm",  ".sph", ".nist", ".dsf", ".dff",  ".oma", ".voc",  ".ircam", ".sf",  ".dss",  ".ds2", ".msv",
    ".dvf",  ".tta", ".tak",  ".mka",  ".ra",   ".shn",  ".8svx", ".iff",  ".xa",   ".mlp",  ".thd", ".qcp",
};
static_assert(std::size(kAudioExtensions) == kSVAudioExtensionCount);

template <std::size_t N>
bool Listed(const char* const (&list)[N], const char* extension) {
  for (const char* entry : list)
    if (strcasecmp(entry, extension) == 0) return true;
  return false;
}

}  // namespace

bool SVFileGetRecentFileData::IsExtValid(const char* extension) {
  if (!extension || !*extension) return false;
  if (strcasecmp(extension, kProjectExtension) == 0) return true;
  if (Listed(kVideoExtensions, extension)) return false;
  return Listed(kAudioExtensions, extension);
}

const char* const* SVFileGetRecentFileData::VideoExtensions() { return kVideoExtensions; }

const char* const* SVFileGetRecentFileData::AudioExtensions() { return kAudioExtensions; }
