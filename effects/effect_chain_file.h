#pragma once
// Effect-chain files (".ecf", also the effect presets): an SDF file of type 11,
// data version 1, whose root container holds the chain's records.
//
// Loading appends to the chain it is given. A file that cannot be opened or is
// not an effect-chain file, or one of another data version, loads nothing and
// answers a failure whose message the caller shows ("Lesefehler").
#include "base/byte_stream.h"
#include "base/process_interface.h"
#include "effects/sound_process_multi.h"

// Extension of effect-chain files.
inline constexpr const char* kLEffectChainExtension = ".ecf";

enum class LEffectChainLoadResult {
  kOK,
  kCannotOpen,       // the file is missing or locked
  kNotAChain,        // not an SDF file of type 11
  kUnknownVersion,   // a data version other than 1
};

// The message and its title for a failed load (empty for kOK).
const char* LEffectChainLoadMessage(LEffectChainLoadResult result);
const char* LEffectChainLoadTitle(LEffectChainLoadResult result);

// Writes the chain as a whole file from the stream's position; false when a
// write failed.
[[nodiscard]] bool LEffectChainSave(const LSoundProcessMulti& chain, LByteStream& stream);
[[nodiscard]] LEffectChainLoadResult LEffectChainLoad(LSoundProcessMulti& chain, LByteStream& stream);

// The same on a file. A failed load also hands its message to the process
// interface, when one is given.
[[nodiscard]] bool LEffectChainSaveFile(const LSoundProcessMulti& chain, const char* path);
[[nodiscard]] LEffectChainLoadResult LEffectChainLoadFile(LSoundProcessMulti& chain, const char* path,
                                                          LProcessInterface* process = nullptr);
