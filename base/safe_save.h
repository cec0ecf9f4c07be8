#pragma once
// LSafeSave: a save goes to a temporary file beside the target, which replaces
// the target only when the writer finished; a failed or cancelled save leaves
// the old file as it was and removes the temporary one.
#include "base/string_long.h"

class LSafeSave {
public:
  explicit LSafeSave(const char* target);
  ~LSafeSave();
  LSafeSave(const LSafeSave&) = delete;
  LSafeSave& operator=(const LSafeSave&) = delete;

  // Where the writer writes; empty when no temporary file could be made.
  const LStringLong& TempPath() const { return temp_; }
  bool IsReady() const { return !temp_.empty(); }
  // Flushes the temporary file to disk and renames it over the target.
  [[nodiscard]] bool Commit();

private:
  LStringLong target_;
  LStringLong temp_;
  bool committed_ = false;
};
