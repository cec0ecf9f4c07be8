#pragma once
// The listing of "effect list": every effect the command knows, under its word
// and German name, with each parameter's label, range, unit and default, and
// its factory presets. Read from the effects themselves, so a new effect lists
// itself.
#include <string>

[[nodiscard]] std::string SVEffectListText();
