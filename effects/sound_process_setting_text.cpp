#include "effects/sound_process_setting_text.h"

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "effects/sound_process_by_name.h"

namespace {

// A decimal number; a comma works as the decimal point, as Germans write it.
bool ParseValue(const std::string& text, double* value) {
  std::string s = text;
  for (char& c : s) {
    if (c == ',') c = '.';
  }
  char* end = nullptr;
  const double v = std::strtod(s.c_str(), &end);
  if (s.empty() || end != s.c_str() + s.size() || !std::isfinite(v)) return false;
  *value = v;
  return true;
}

// A bound or value buffer of the descriptor's type, as a double.
double Read(const LSoundProcessParameter& p, const void* buffer) {
  switch (p.type) {
    case kLSPParamUInt8: return LSoundProcessParameter::Get<std::uint8_t>(buffer);
    case kLSPParamDouble: return LSoundProcessParameter::Get<double>(buffer);
    case kLSPParamLevelDb: return LSoundProcessParameter::Get<std::int8_t>(buffer);
    case kLSPParamBool: return LSoundProcessParameter::Get<bool>(buffer) ? 1 : 0;
    case kLSPParamInt64: return static_cast<double>(LSoundProcessParameter::Get<long long>(buffer));
    case kLSPParamUInt16: return LSoundProcessParameter::Get<std::uint16_t>(buffer);
    case kLSPParamInt:
    default: return LSoundProcessParameter::Get<std::int32_t>(buffer);
  }
}

std::string Number(double v) {
  char text[64];
  std::snprintf(text, sizeof text, "%g", v);
  std::string s = text;
  for (char& c : s) {
    if (c == '.') c = ',';
  }
  return s;
}

LSPSettingTextResult Refuse(LSPSettingTextResult result, std::string* message, const std::string& text) {
  if (message) *message = text;
  return result;
}

LSPSettingTextResult SetPreset(LSoundProcess& effect, const std::string& name, std::string* message) {
  const std::string wanted = LSoundProcessFoldName(name);
  for (int i = 0; i < effect.GetNumPresets(); ++i) {
    char presetName[kLPathMax] = {};
    effect.GetPresetsName(i, presetName);
    if (LSoundProcessFoldName(presetName) == wanted) {
      effect.SetPreset(i);
      return LSPSettingTextResult::kOK;
    }
  }
  return Refuse(LSPSettingTextResult::kUnknownPreset, message,
                "Der Effekt kennt die Voreinstellung \"" + name + "\" nicht.");
}

}  // namespace

LSPSettingTextResult LSoundProcessSetFromText(LSoundProcess& effect, const std::string& assignment,
                                              std::string* message) {
  const auto eq = assignment.find('=');
  if (eq == std::string::npos || eq == 0) {
    return Refuse(LSPSettingTextResult::kNotAnAssignment, message,
                  "Erwartet PARAMETER=WERT, nicht \"" + assignment + "\".");
  }
  const std::string label = assignment.substr(0, eq);
  const std::string text = assignment.substr(eq + 1);
  if (LSoundProcessFoldName(label) == "preset") return SetPreset(effect, text, message);

  for (int i = 0; i < effect.GetNumParameters(); ++i) {
    LSoundProcessParameter p;
    effect.GetParameterByIndex(i, &p);
    if (LSoundProcessFoldName(p.szName) != LSoundProcessFoldName(label)) continue;
    double v = 0;
    if (!ParseValue(text, &v)) {
      return Refuse(LSPSettingTextResult::kNotANumber, message,
                    "\"" + text + "\" ist keine Zahl und damit kein gültiger Wert für " + p.szName + ".");
    }
    if (p.type != kLSPParamDouble) v = p.type == kLSPParamBool ? (v != 0) : std::round(v);
    const double min = Read(p, p.pMin), max = Read(p, p.pMax);
    if (p.type != kLSPParamBool && (v < min || v > max)) {
      const std::string unit = *p.szUnit ? std::string(" ") + p.szUnit : "";
      return Refuse(LSPSettingTextResult::kOutOfRange, message,
                    std::string(p.szName) + " muss zwischen " + Number(min) + " und " + Number(max) + unit +
                        " liegen, nicht " + text + ".");
    }
    // Wide enough for every type; a setter that reads fewer bytes takes the low ones.
    alignas(8) unsigned char value[8] = {};
    if (p.type == kLSPParamDouble) {
      std::memcpy(value, &v, sizeof v);
    } else if (p.type == kLSPParamBool) {
      const bool b = v != 0;
      std::memcpy(value, &b, sizeof b);
    } else {
      const long long n = std::llround(v);
      std::memcpy(value, &n, sizeof n);
    }
    effect.SetParameterByIndex(i, value);
    return LSPSettingTextResult::kOK;
  }
  return Refuse(LSPSettingTextResult::kUnknownLabel, message, "Der Effekt hat keinen Parameter \"" + label + "\".");
}
