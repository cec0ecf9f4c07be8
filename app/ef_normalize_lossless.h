#pragma once
// SVEfNormalizeLossless ("Verlustfreie MP3-Normalisierung"): changes the
// loudness of an MP3 file by whole gain steps of its frames (about 1.5 dB each),
// without decoding and encoding. The new file is written beside the old one,
// which it replaces only once complete; a failed or cancelled rewrite leaves
// the old file as it was. The piece, which must be the whole document loaded
// from that file, gets the same change as a gain of its segments, so the
// document keeps sounding as its file does.
#include "app/ef_cut_list_process.h"
#include "base/string_long.h"

inline constexpr const char* kSVNormalizeLosslessLabel = "Verlustfreie MP3-Normalisierung";

class SVEfNormalizeLossless final : public SVEfCutListProcess {
public:
  // gainDb is taken to the nearest whole step.
  SVEfNormalizeLossless(LCutListAudio& list, SVSelection& selection, const char* path, double gainDb);

  [[nodiscard]] const char* GetEffectName() const override { return kSVNormalizeLosslessLabel; }
  [[nodiscard]] int ProcessCutList(LProcessInterface& process, LCutListAudio& piece) override;
  // The steps the file's gains move by.
  [[nodiscard]] int Steps() const { return steps_; }

private:
  LStringLong path_;
  int steps_;
};
