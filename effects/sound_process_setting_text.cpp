#include "effects/sound_process_setting_text.h"

#include <cctype>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <vector>

#include "effects/point_curve.h"
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

}  // namespace

double LSoundProcessParameterNumber(const LSoundProcessParameter& p, const void* buffer) {
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

std::string LSoundProcessNumberText(double v) {
  char text[64];
  std::snprintf(text, sizeof text, "%g", v);
  std::string s = text;
  for (char& c : s) {
    if (c == '.') c = ',';
  }
  return s;
}

namespace {

std::string Number(double v) { return LSoundProcessNumberText(v); }
double Read(const LSoundProcessParameter& p, const void* buffer) { return LSoundProcessParameterNumber(p, buffer); }

// A whole parameter whose unit names its values ("0 = Glocke, 1 = Kuhschwanz tief")
// also takes the names: an exact name first, else the first that begins with the
// word, so "Kuhschwanz" is the low shelf.
bool ParseChoice(const LSoundProcessParameter& p, const std::string& text, double* value) {
  if (p.type == kLSPParamDouble) return false;
  const std::string wanted = LSoundProcessFoldName(text);
  if (wanted.empty()) return false;
  bool found = false;
  std::string unit = p.szUnit;
  for (std::size_t at = 0; at < unit.size();) {
    std::size_t end = unit.find(',', at);
    if (end == std::string::npos) end = unit.size();
    const std::string item = unit.substr(at, end - at);
    at = end + 1;
    const std::size_t eq = item.find('=');
    double number = 0;
    if (eq == std::string::npos || !ParseValue(LSoundProcessFoldName(item.substr(0, eq)), &number)) continue;
    const std::string name = LSoundProcessFoldName(item.substr(eq + 1));
    if (name == wanted) {
      *value = number;
      return true;
    }
    if (!found && name.compare(0, wanted.size(), wanted) == 0) {
      *value = number;
      found = true;
    }
  }
  return found;
}

// Labels compare folded, and a decimal point matches a comma ("31.5 Hz", "31,5 Hz").
std::string LabelKey(const std::string& label) {
  std::string key = LSoundProcessFoldName(label);
  for (char& c : key) {
    if (c == '.') c = ',';
  }
  return key;
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

LSPSettingTextResult OutOfRange(std::string* message, const char* name, double min, double max, const char* unit,
                                const std::string& text) {
  const std::string u = *unit ? std::string(" ") + unit : "";
  return Refuse(LSPSettingTextResult::kOutOfRange, message,
                std::string(name) + " muss zwischen " + Number(min) + " und " + Number(max) + u + " liegen, nicht " +
                    text + ".");
}

// One point "X=Y", with or without the x unit after X; kUnknownLabel when the label is no number.
LSPSettingTextResult SetPoint(LSPPointCurve& curve, const std::string& label, const std::string& text,
                              std::string* message, bool apply) {
  const LSPCurveAxes& axes = curve.CurveAxes();
  // Not folded: the sign of a level counts.
  auto lower = [](const std::string& in) {
    std::string out;
    for (unsigned char c : in)
      if (!std::isspace(c)) out += static_cast<char>(std::tolower(c));
    return out;
  };
  std::string number = lower(label);
  const std::string unit = lower(axes.xUnit);
  if (!unit.empty() && number.size() > unit.size() && number.ends_with(unit)) number.resize(number.size() - unit.size());
  double x = 0, y = 0;
  if (!ParseValue(number, &x)) return LSPSettingTextResult::kUnknownLabel;
  if (!ParseValue(text, &y)) {
    return Refuse(LSPSettingTextResult::kNotANumber, message,
                  "\"" + text + "\" ist keine Zahl und damit kein gültiger Wert für " + axes.yLabel + ".");
  }
  if (x < axes.xMin || x > axes.xMax) return OutOfRange(message, axes.xLabel, axes.xMin, axes.xMax, axes.xUnit, label);
  if (y < axes.yMin || y > axes.yMax) return OutOfRange(message, axes.yLabel, axes.yMin, axes.yMax, axes.yUnit, text);
  if (apply) curve.SetCurvePoint(x, y);
  return LSPSettingTextResult::kOK;
}

// "Punkte=X:Y;X:Y..." replaces the curve, or a single point "X=Y" sets one.
LSPSettingTextResult SetPoints(LSPPointCurve& curve, const std::string& label, const std::string& text,
                               std::string* message) {
  if (LSoundProcessFoldName(label) != "punkte") return SetPoint(curve, label, text, message, true);
  std::vector<std::pair<std::string, std::string>> points;
  for (std::size_t at = 0; at <= text.size();) {
    std::size_t end = text.find(';', at);
    if (end == std::string::npos) end = text.size();
    const std::string item = text.substr(at, end - at);
    at = end + 1;
    const std::size_t colon = item.find(':');
    if (colon == std::string::npos || colon == 0) {
      return Refuse(LSPSettingTextResult::kNotANumber, message,
                    "Erwartet Punkte=X:Y;X:Y, nicht \"" + text + "\".");
    }
    points.emplace_back(item.substr(0, colon), item.substr(colon + 1));
    LSPSettingTextResult check = SetPoint(curve, points.back().first, points.back().second, message, false);
    if (check == LSPSettingTextResult::kUnknownLabel) {
      return Refuse(LSPSettingTextResult::kNotANumber, message,
                    "\"" + points.back().first + "\" ist keine Zahl und damit kein gültiger Punkt.");
    }
    if (check != LSPSettingTextResult::kOK) return check;
  }
  curve.ClearCurvePoints();
  for (const auto& [x, y] : points) (void)SetPoint(curve, x, y, message, true);
  return LSPSettingTextResult::kOK;
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
    if (LabelKey(p.szName) != LabelKey(label)) continue;
    double v = 0;
    if (!ParseValue(text, &v) && !ParseChoice(p, text, &v)) {
      return Refuse(LSPSettingTextResult::kNotANumber, message,
                    "\"" + text + "\" ist keine Zahl und damit kein gültiger Wert für " + p.szName + ".");
    }
    if (p.type != kLSPParamDouble) v = p.type == kLSPParamBool ? (v != 0) : std::round(v);
    const double min = Read(p, p.pMin), max = Read(p, p.pMax);
    if (p.type != kLSPParamBool && (v < min || v > max)) return OutOfRange(message, p.szName, min, max, p.szUnit, text);
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
  if (auto* curve = dynamic_cast<LSPPointCurve*>(&effect)) {
    LSPSettingTextResult result = SetPoints(*curve, label, text, message);
    if (result != LSPSettingTextResult::kUnknownLabel) return result;
  }
  return Refuse(LSPSettingTextResult::kUnknownLabel, message, "Der Effekt hat keinen Parameter \"" + label + "\".");
}
