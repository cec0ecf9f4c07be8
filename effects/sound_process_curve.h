#pragma once
// LSoundProcessCurve: an LSoundProcessValues whose settings also hold a curve of
// points (the visual equaliser, the graphic compressor, the thresholds of the
// multiband gate). The points follow the fixed settings as parameters: point i is
// parameter count + i, labelled by its x ("1000 Hz"), its value the y.
//
// Saved layout after the fixed settings: a blob chunk 0x2010 of doubles, x and y
// of each point in order. A chunk whose length is not whole pairs keeps the curve.
// The older flat layout is the fixed settings, then that blob in the next chunk.
// Presets hold both the fixed settings and a curve.
#include <span>
#include <vector>

#include "effects/point_curve.h"
#include "effects/sound_process_values.h"

// Chunk id of the points. On disk: never change.
inline constexpr unsigned short kLSPCurveChunkPoints = 0x2010;
// Most points a curve keeps; longer data is damaged.
inline constexpr std::size_t kLSPCurveMaxPoints = 256;

struct LSPCurveTable {
  LSPCurveAxes axes;
  // Interpolation between points: over log x (frequencies) or linear x (levels).
  bool logX;
  std::span<const LPoint> byDefault;
  // One curve per preset of the value table, in its order.
  std::span<const std::span<const LPoint>> presets;
};

class LSoundProcessCurve : public LSoundProcessValues, public LSPPointCurve {
public:
  bool IsValid() const override;
  int GetNumParameters() const override;
  void SetParameterByIndex(int index, void* value) override;
  void GetParameterByIndex(int index, LSoundProcessParameter* out) const override;

  void SaveToSDF(LSDFWriter& writer) const override;
  void LoadFromSDF(LSDFReader& reader, LSDFReaderChunkIterator& iterator) override;
  void LoadFromSDF(LSDFReaderChunkIterator& iterator) override;

  void SetPreset(int index) override;
  int GetIndexInPreset() const override;
  void ResetToDefault() override;

  const LSPCurveAxes& CurveAxes() const override { return curve_->axes; }
  std::vector<LPoint> CurvePoints() const override { return points_; }
  void SetCurvePoint(double x, double y) override;
  void ClearCurvePoints() override { points_.clear(); }
  void SetCurve(std::span<const LPoint> points);

  // y at x: interpolated between points, the end points' y held beyond them;
  // `yAtNone` for an empty curve. Points are limited to the axes here.
  double CurveAt(double x, double yAtNone) const;

protected:
  LSoundProcessCurve(const LSPValueTable& values, const LSPCurveTable& curve);
  LSoundProcessCurve(const LSoundProcessCurve&) = default;

private:
  int FixedCount() const { return LSoundProcessValues::GetNumParameters(); }
  bool ReadPoints(LSDFReaderChunk chunk);

  const LSPCurveTable* curve_;
  std::vector<LPoint> points_;  // sorted by x, one per x
};
