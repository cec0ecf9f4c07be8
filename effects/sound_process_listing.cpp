#include "effects/sound_process_listing.h"

#include <cstring>
#include <vector>

#include "effects/point_curve.h"
#include "effects/sound_process_setting_text.h"
#include "effects/sound_process_table.h"

namespace {

std::string Number(double v) { return LSoundProcessNumberText(v); }
double Read(const LSoundProcessParameter& p, const void* buffer) { return LSoundProcessParameterNumber(p, buffer); }

std::string Range(double min, double max, const char* unit) {
  return Number(min) + " bis " + Number(max) + (*unit ? std::string(" ") + unit : "");
}

}  // namespace

std::string LSoundProcessDescribe(const LSoundProcess& effect, const char* word) {
  char name[kLPathMax] = {};
  effect.GetName(name);
  std::string text = std::string(word) + " (" + name + ")\n";
  const auto* curve = dynamic_cast<const LSPPointCurve*>(&effect);
  const std::vector<LPoint> points = curve ? curve->CurvePoints() : std::vector<LPoint>{};
  // The points follow the fixed settings as parameters; they get a line of their own.
  const int fixed = effect.GetNumParameters() - static_cast<int>(points.size());
  for (int i = 0; i < fixed; ++i) {
    LSoundProcessParameter p;
    effect.GetParameterByIndex(i, &p);
    text += std::string("  ") + p.szName + ": ";
    if (p.type == kLSPParamBool) {
      text += "0 oder 1";
    } else if (std::strchr(p.szUnit, '=')) {
      // The unit names the values.
      text += Range(Read(p, p.pMin), Read(p, p.pMax), "") + " (" + p.szUnit + ")";
    } else {
      text += Range(Read(p, p.pMin), Read(p, p.pMax), p.szUnit);
    }
    text += " (Standard: " + Number(Read(p, p.pValue)) + ")\n";
  }
  if (curve) {
    const LSPCurveAxes& a = curve->CurveAxes();
    std::string byDefault;
    for (const LPoint& p : points) byDefault += (byDefault.empty() ? "" : ";") + Number(p.frequency) + ":" + Number(p.gainDb);
    text += std::string("  Punkte: ") + a.xLabel + " " + Range(a.xMin, a.xMax, a.xUnit) + " = " + a.yLabel + " " +
            Range(a.yMin, a.yMax, a.yUnit) + " (Standard: " + (byDefault.empty() ? "keine" : byDefault) + ")\n";
  }
  if (effect.GetNumPresets() > 0) {
    text += "  Voreinstellungen: ";
    for (int i = 0; i < effect.GetNumPresets(); ++i) {
      char preset[kLPathMax] = {};
      effect.GetPresetsName(i, preset);
      text += (i ? ", " : "") + std::string(preset);
    }
    text += "\n";
  }
  return text;
}

std::string LSoundProcessListing() {
  std::string text;
  for (const LSoundProcessTypeRow& row : LSoundProcessTypeRows()) {
    if (!row.word || !row.make) continue;
    text += LSoundProcessDescribe(*row.make(), row.word);
  }
  return text;
}
