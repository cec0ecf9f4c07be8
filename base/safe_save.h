#pragma once
// LSafeSave: a save goes to a temporary file beside the target, which replaces
// the target only when the writer finished; a failed or cancelled save leaves
// the old file as it was and removes the temporary one.
//
// A target that is a symbolic link is saved through: the file the link leads to
// is replaced and the link stays. Messages name the user's path, never the
// temporary file (see LSafeSaveProcess).
#include "base/process_interface.h"
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
  // The path as the user gave it.
  const LStringLong& Target() const { return target_; }
  // Flushes the temporary file to disk and renames it over the target (over the
  // file a link leads to).
  [[nodiscard]] bool Commit();

  // text with every mention of the temporary file replaced by the user's path.
  [[nodiscard]] LStringLong UserText(const char* text) const;

private:
  LStringLong target_;
  LStringLong written_;  // target_ with its links followed
  LStringLong temp_;
  bool committed_ = false;
};

// Hands a save's progress and messages on to parent, naming the user's path
// where the writer named the temporary file.
class LSafeSaveProcess final : public LProcessInterface {
public:
  LSafeSaveProcess(LProcessInterface& parent, const LSafeSave& save) : parent_(parent), save_(save) {}

  bool IsCancelled() override { return parent_.IsCancelled(); }
  void SetStatus(const char* text, int line) override { parent_.SetStatus(save_.UserText(text).c_str(), line); }
  void SetProgress(double fraction) override { parent_.SetProgress(fraction); }
  void SetError(const char* text) override { parent_.SetError(save_.UserText(text).c_str()); }
  void SetProgressIndeterminateOn() override { parent_.SetProgressIndeterminateOn(); }
  void SetProgressIndeterminateOff() override { parent_.SetProgressIndeterminateOff(); }

private:
  LProcessInterface& parent_;
  const LSafeSave& save_;
};
