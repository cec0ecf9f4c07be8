#pragma once
// The CB radio: a ready effect chain of a narrow band, distortion, the hiss of
// the link and a squelch that silences the pauses. Each link is made through the
// effect table by its type id and set by its German labels, so a link this build
// lacks is left out and the rest still sound.
#include "effects/sound_process_multi.h"

[[nodiscard]] LSoundProcessMulti LCBRadioChain();
