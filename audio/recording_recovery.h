#pragma once
// Recordings that outlive a killed program. While a recording runs, its cache
// item has its ".audinfo" from the start (so what was committed is a valid
// item) and a marker "N.recording" beside it, locked by the recorder. A marker
// that nobody holds belongs to a recording whose program died: the next start
// finds it and offers it as "Wiederhergestellte Aufnahme …" until the front end
// says it was offered; until then the cache deletes nothing of the item.
#include <cstdint>
#include <string>
#include <vector>

#include "engine/cut_list_audio.h"

// What the recorder holds while it records: the marker with its lock.
class LAudioRecordingMarker {
public:
  LAudioRecordingMarker() = default;
  ~LAudioRecordingMarker() { Remove(); }
  LAudioRecordingMarker(const LAudioRecordingMarker&) = delete;
  LAudioRecordingMarker& operator=(const LAudioRecordingMarker&) = delete;

  // Writes the item's ".audinfo" and the locked marker; false when either fails
  // (the recording goes on, only without the guard).
  bool Create(unsigned short item, std::uint32_t sampleRate, int channels);
  // The recording ended normally: the marker goes.
  void Remove();

private:
  unsigned short item_ = 0;
  int fd_ = -1;
};

struct LAudioRecoveredRecording {
  unsigned short item = 0;
  std::string title;   // "Wiederhergestellte Aufnahme vom 23.11.2026 13:45"
  LCutListAudio list;  // the whole recording as one segment
};

// Finds the recordings of programs that died and appends them, each holding a
// reference to its item.
void LAudioRecordingsRecover(std::vector<LAudioRecoveredRecording>* found);
// The front end has offered the recording (as a document): the marker goes and
// the item lives on, or goes, with the references to it.
void LAudioRecordingOffered(unsigned short item);
