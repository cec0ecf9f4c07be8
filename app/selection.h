#pragma once
// SVSelection: what the user has selected in a document: a range of frames and,
// in the spectral view, optionally a frequency band, making a rectangle.
//
// Start equal to end is an empty selection. A band whose low and high
// frequencies are equal counts as no band: Trim takes the time range at every
// frequency, and an undo snapshot collapses it to the cursor like an empty one.
#include <cstdint>

#include "base/process_interface.h"
#include "engine/cut_list_audio.h"
#include "engine/sound_source.h"

// Status title of the render of a band selection into audio.
inline constexpr const char* kSVSelectionRenderTitle = "Auswahl zum Audio";

// The points of a band filter's curve (Hz and dB); the band itself passes at 0 dB.
inline constexpr double kSVBandFloorDb = -60.0;
inline constexpr double kSVBandLowestHz = 10.0;
inline constexpr double kSVBandHighestHz = 20000.0;

struct SVSelection {
  long long start = 0;  // frames
  long long end = 0;
  std::int32_t lowFrequency = 0;  // Hz
  std::int32_t highFrequency = 0;
  std::uint8_t band = 0;  // the selection is a rectangle in the spectral view

  [[nodiscard]] bool IsEmpty() const { return start == end; }
  // The band flag with distinct frequencies; an equal pair is no band.
  [[nodiscard]] bool HasBand() const { return band != 0 && lowFrequency != highFrequency; }
  // Empty, or a band flag with equal frequencies: what a snapshot collapses to the cursor.
  [[nodiscard]] bool IsEmptyForSnapshot() const { return IsEmpty() || (band != 0 && lowFrequency == highFrequency); }
  // Collapses the selection to the cursor when IsEmptyForSnapshot.
  void CollapseIfEmpty(long long cursor);

  // The selected audio as a new cut list: the whole list for an empty selection;
  // else the list trimmed to [start, end); with a band, that
  // trimmed audio rendered through the band filter into a new cache item. A
  // cancelled or failed render gives an empty list (44100 Hz, 1 channel).
  [[nodiscard]] LCutListAudio Trim(LProcessInterface& process, const LCutListAudio& list) const;
  // A source over the selected audio that Trim cut out: the list's own source,
  // behind the band filter when there is a band (mapped at the list's rate).
  [[nodiscard]] LSoundSource OpenTrimmedSource(const LCutListAudio& list) const;
};
