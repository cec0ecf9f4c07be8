#include "app/ef_normalize_lossless.h"

#include <cmath>

#include "base/file_stream.h"
#include "base/list.h"
#include "base/platform_file.h"
#include "base/safe_save.h"
#include "engine/cut_list_segment.h"
#include "formats/mp3_frame_gain.h"

SVEfNormalizeLossless::SVEfNormalizeLossless(LCutListAudio& list, SVSelection& selection, const char* path,
                                             double gainDb)
    : SVEfCutListProcess(list, selection), path_(path ? path : ""), steps_(LMP3GainSteps(gainDb)) {}

int SVEfNormalizeLossless::ProcessCutList(LProcessInterface& process, LCutListAudio& piece) {
  if (steps_ == 0) return kLProcessSuccess;
  LMP3GainStatus status = LMP3GainStatus::kReadFailed;
  {
    LSafeSave save(path_.c_str());
    LFileStream in(LFileOpen(path_.c_str(), kLFileRead, LFileLock::Shared));
    if (!save.IsReady()) {
      status = LMP3GainStatus::kWriteFailed;
    } else if (in.IsOpen()) {
      LFileStream out(LFileOpen(save.TempPath().c_str(), kLFileWrite | kLFileCreate | kLFileTruncate));
      status = out.IsOpen() ? LMP3GainRewrite(process, in, out, steps_) : LMP3GainStatus::kWriteFailed;
    }
    if (status == LMP3GainStatus::kOK && !save.Commit()) status = LMP3GainStatus::kWriteFailed;
  }
  if (status != LMP3GainStatus::kOK) {
    if (status != LMP3GainStatus::kCancelled) process.SetError(LMP3GainMessage(status, path_.c_str()).c_str());
    return status == LMP3GainStatus::kCancelled ? kLProcessCancelled : kLProcessFailed;
  }
  // What the file now decodes to: the same samples, scaled by 2^(steps/4).
  const auto factor = static_cast<float>(std::pow(2.0, steps_ / 4.0));
  LList<LCutListSegment> segments = piece.Segments();
  piece.Clear();
  for (LCutListSegment& segment : segments) {
    if (!segment.IsSilence()) segment.gain *= factor;
    piece.SegmentAppend(std::move(segment));
  }
  return kLProcessSuccess;
}
