#pragma once
// Setting an effect from text as a person types it: "LABEL=VALUE" for a
// parameter (the German label, compared as LSoundProcessFoldName does; a comma
// works as the decimal point) or "preset=NAME" for a factory preset. A value
// outside the parameter's bounds is refused, never clamped, so what runs is what
// was asked for. A whole parameter whose unit names its values ("0 = Glocke,
// 1 = ...") also takes a name. Effects with a curve of points take "X=Y" for a
// point and "Punkte=X:Y;X:Y..." for the whole curve.
#include <string>

#include "effects/sound_process.h"

enum class LSPSettingTextResult {
  kOK,
  kNotAnAssignment,  // no "=" or nothing before it
  kUnknownLabel,     // the effect has no parameter of that label
  kUnknownPreset,    // the effect has no preset of that name
  kNotANumber,       // the value is not a number
  kOutOfRange,       // the value lies outside the parameter's bounds
};

// Applies one assignment; on anything but kOK the effect is unchanged and
// message (when given) holds the German reason, naming the range where one applies.
[[nodiscard]] LSPSettingTextResult LSoundProcessSetFromText(LSoundProcess& effect, const std::string& assignment,
                                                            std::string* message);

// A bound or value buffer of a descriptor, read with the descriptor's type.
[[nodiscard]] double LSoundProcessParameterNumber(const LSoundProcessParameter& p, const void* buffer);
// A number as Germans write it ("0,5"), as short as it goes.
[[nodiscard]] std::string LSoundProcessNumberText(double value);
