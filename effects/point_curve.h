#pragma once
// LSPPointCurve: what an effect whose settings include a curve of points (x, y)
// offers besides its fixed settings, so that the command and the listing can set
// and show points without knowing the effect. Points are kept sorted by x with
// one point per x; a point at an x that exists replaces it.
// In text a point is "X=Y" (the label a number, optionally followed by the x
// unit), and "Punkte=X:Y;X:Y..." replaces the whole curve.
#include <vector>

#include "effects/point_list.h"

struct LSPCurveAxes {
  const char* xLabel;  // German
  const char* xUnit;
  double xMin, xMax;
  const char* yLabel;  // German
  const char* yUnit;
  double yMin, yMax;
};

class LSPPointCurve {
public:
  virtual const LSPCurveAxes& CurveAxes() const = 0;
  virtual std::vector<LPoint> CurvePoints() const = 0;
  // Both values within the axes; the caller checks them.
  virtual void SetCurvePoint(double x, double y) = 0;
  virtual void ClearCurvePoints() = 0;

protected:
  ~LSPPointCurve() = default;
};

// The label a point parameter carries: the x value and its unit ("31,5 Hz", "-20 dB").
void LSPPointLabel(char* out, double x, const char* unit);
