#pragma once
// Finding an effect by what a person types: a short key ("echo", "gain") or the
// German display name ("Verstärkung"), compared without case, accents or blanks.
// The command language uses it, and so will the effect dialogs' script field.
#include <memory>
#include <string>

#include "effects/sound_process.h"

// A new effect with its default settings, or null when no effect of this build
// answers to the name (effects that would only pass the sound through do not).
[[nodiscard]] std::unique_ptr<LSoundProcess> LSoundProcessCreateByName(const std::string& name);
// The names LSoundProcessCreateByName knows, for messages and help texts: "gain (Verstärkung), echo (Echo)".
[[nodiscard]] std::string LSoundProcessNamesText();
// Lower case with the German accents folded (ä to a, ß to ss) and blanks, '-' and
// '_' dropped, for comparing names, labels and preset names.
[[nodiscard]] std::string LSoundProcessFoldName(const std::string& text);
