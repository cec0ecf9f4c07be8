#pragma once
// SVFileAudio: the audio document that effect and batch code work on. Its
// SetFileClean clears only the live modified flag and leaves the undo ring as it
// is, since such documents are not undone to a saved state.
#include "app/file.h"

class SVFileAudio final : public SVFile {
public:
  using SVFile::SVFile;

  void SetFileClean() override { ModifiedSet(false); }
};
