#pragma once
// The table of effect types: one row per assigned type id with its command word,
// its German display name and the function that makes it. The factory, the
// lookup by name, the command's list of effects and the messages about unknown
// effects all read it; a new effect brings its own files and one row here.
#include <memory>
#include <span>

#include "effects/sound_process.h"

struct LSoundProcessTypeRow {
  int type;  // the id saved chains record
  // What a person types for it ("echo"); null when the command does not offer
  // it, as for effects that would only pass the sound through.
  const char* word;
  // The German display name, what GetName of its class writes; also known for
  // effects this build does not have.
  const char* name;
  // A new effect with its default settings; null when this build lacks it.
  std::unique_ptr<LSoundProcess> (*make)();
};

[[nodiscard]] std::span<const LSoundProcessTypeRow> LSoundProcessTypeRows();
// The row of an assigned type id, or null (the gaps, 0, 16384 and ids of newer builds).
[[nodiscard]] const LSoundProcessTypeRow* LSoundProcessTypeRowOf(int type);
// The German display name of an assigned type id, or null.
[[nodiscard]] const char* LSoundProcessTypeName(int type);
