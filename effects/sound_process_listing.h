#pragma once
// The text of "effect list": every effect the command offers, with its word and
// German name, its parameters with range, unit and default, the points of a
// curve, and its presets. Plain text in lines, for the command and help windows.
//
//   grafikkompressor (Grafikkompressor)
//     Angriff: 0,1 bis 500 ms (Standard: 10)
//     Punkte: Eingang -90 bis 0 dB = Ausgang -90 bis 20 dB (Standard: -90:-90;-20:-20;0:-10)
//     Voreinstellungen: Sanfte Kompression, Sprache, Begrenzer, Expander
#include <string>

#include "effects/sound_process.h"

// One effect as listed, from its default settings; `word` heads it.
[[nodiscard]] std::string LSoundProcessDescribe(const LSoundProcess& effect, const char* word);
// Every effect of the type table that has a command word.
[[nodiscard]] std::string LSoundProcessListing();
