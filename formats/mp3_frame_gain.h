#pragma once
// The global gain of MP3 (MPEG audio Layer III) frames. Every granule of every
// channel carries an 8-bit global_gain in its frame's side information; one
// step scales the decoded sound by 2^(1/4), about 1.5 dB. Adding the same
// number of steps to every granule changes the loudness without decoding and
// encoding: no other bit of the frames changes, so their count and sizes stay.
//
// The rewrite copies the input to the output in blocks. The first frame must
// start the file or follow its ID3v2 tag at once; after it, tags and anything
// that is not a frame pass as they are; the encoder's info frame (Xing/Info, which
// carries its own checksum) is kept as it is; frames protected by a CRC get it
// recomputed. A gain that would leave 0 to 255 is held at the bound and counted.
#include "base/byte_stream.h"
#include "base/process_interface.h"
#include "base/string_long.h"

// The change in dB of one step: 20 log10(2^(1/4)).
inline constexpr double kLMP3GainStepDb = 1.5051499783199060;

enum class LMP3GainStatus {
  kOK,
  kNotMP3,       // the file does not start with a frame
  kReadFailed,
  kWriteFailed,
  kCancelled,
};

struct LMP3GainReport {
  long long frames = 0;    // audio frames rewritten (the info frame aside)
  long long clipped = 0;   // granules whose gain was held at 0 or 255
};

// The whole number of steps nearest to a change of db.
[[nodiscard]] int LMP3GainSteps(double db);
// Copies in (from its start) to out with every audio frame's gains moved by steps.
[[nodiscard]] LMP3GainStatus LMP3GainRewrite(LProcessInterface& process, LByteStream& in, LByteStream& out, int steps,
                                            LMP3GainReport* report = nullptr);
// The German reason for a status; path names the file.
[[nodiscard]] LStringLong LMP3GainMessage(LMP3GainStatus status, const char* path);
