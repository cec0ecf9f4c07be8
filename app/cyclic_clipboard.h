#pragma once
// SVCyclicClipboard: the process's ring of the last ten copied cut lists. Copy
// stores here and only declares types on the system clipboard; Paste of our own
// type takes the last entry back, so no audio is copied at all: the entries
// share the cached audio with the documents they came from.
//
// Created on first use (a guarded static); main thread only afterwards.
#include "engine/cut_list_audio.h"

inline constexpr int kSVCyclicClipboardEntries = 10;

class SVCyclicClipboard {
public:
  [[nodiscard]] static SVCyclicClipboard& Instance();

  // Stores a copy of list at the write index, which then moves on; the eleventh
  // copy overwrites the first.
  void Store(const LCutListAudio& list);
  // The entry written last (an empty list before the first copy).
  [[nodiscard]] const LCutListAudio& Last() const { return entries_[lastIndex_]; }
  [[nodiscard]] const LCutListAudio& Entry(int index) const { return entries_[index % kSVCyclicClipboardEntries]; }
  [[nodiscard]] int WriteIndex() const { return writeIndex_; }
  [[nodiscard]] int LastIndex() const { return lastIndex_; }
  // Entries filled so far, at most kSVCyclicClipboardEntries.
  [[nodiscard]] int Count() const { return count_; }

  // Empties every entry and releases the audio they hold (at exit, and between tests).
  void Clear();

private:
  SVCyclicClipboard() = default;

  LCutListAudio entries_[kSVCyclicClipboardEntries];
  int writeIndex_ = 0;
  int lastIndex_ = 0;
  int count_ = 0;
};
