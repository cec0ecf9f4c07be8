#include "effects/sound_process_curve.h"

#include <algorithm>
#include <cmath>

namespace {

bool ReadDouble(LSDFReaderChunk chunk, double& value) {
  double v = 0.0;
  if (chunk.ReadData(&v, sizeof v) != sizeof v) return false;
  value = v;
  return true;
}

}  // namespace

LSoundProcessCurve::LSoundProcessCurve(const LSPValueTable& values, const LSPCurveTable& curve)
    : LSoundProcessValues(values), curve_(&curve) {
  SetCurve(curve_->byDefault);
}

bool LSoundProcessCurve::IsValid() const {
  return LSoundProcessValues::IsValid() &&
         std::all_of(points_.begin(), points_.end(),
                     [](const LPoint& p) { return std::isfinite(p.frequency) && std::isfinite(p.gainDb); });
}

int LSoundProcessCurve::GetNumParameters() const { return FixedCount() + static_cast<int>(points_.size()); }

void LSoundProcessCurve::SetParameterByIndex(int index, void* value) {
  if (index < FixedCount()) return LSoundProcessValues::SetParameterByIndex(index, value);
  const std::size_t point = static_cast<std::size_t>(index - FixedCount());
  if (point < points_.size() && value) points_[point].gainDb = LSoundProcessParameter::Get<double>(value);
}

void LSoundProcessCurve::GetParameterByIndex(int index, LSoundProcessParameter* out) const {
  if (index < FixedCount()) return LSoundProcessValues::GetParameterByIndex(index, out);
  const std::size_t point = static_cast<std::size_t>(index - FixedCount());
  if (point >= points_.size() || !out) return;
  char label[kLPathMax];
  LSPPointLabel(label, points_[point].frequency, curve_->axes.xUnit);
  out->Init<double>(kLSPParamDouble, curve_->axes.yMin, curve_->axes.yMax, label, curve_->axes.yUnit);
  out->SetValue<double>(points_[point].gainDb);
}

void LSoundProcessCurve::SaveToSDF(LSDFWriter& writer) const {
  LSoundProcessValues::SaveToSDF(writer);
  writer.WriteBlob(kLSPCurveChunkPoints, reinterpret_cast<const unsigned char*>(points_.data()),
                   points_.size() * sizeof(LPoint));
}

bool LSoundProcessCurve::ReadPoints(LSDFReaderChunk chunk) {
  const unsigned long long length = chunk.Remaining();
  if (length % sizeof(LPoint) != 0 || length / sizeof(LPoint) > kLSPCurveMaxPoints) return false;
  std::vector<LPoint> points(static_cast<std::size_t>(length / sizeof(LPoint)));
  if (chunk.ReadData(points.data(), length) != length) return false;
  SetCurve(points);
  return true;
}

void LSoundProcessCurve::LoadFromSDF(LSDFReader& reader, LSDFReaderChunkIterator& iterator) {
  LoadSettingsFromSDF(reader, iterator, [this](LSDFReaderChunkIterator& it) {
    if (it.Id() == kLSPCurveChunkPoints) {
      (void)ReadPoints(it.Chunk());
      return;
    }
    const int index = it.Id() - kLSPChunkFirstSetting;
    double v = 0;
    if (index >= 0 && index < FixedCount() && ReadDouble(it.Chunk(), v)) SetValue(index, v);
  });
}

void LSoundProcessCurve::LoadFromSDF(LSDFReaderChunkIterator& iterator) {
  LSoundProcessValues::LoadFromSDF(iterator);
  if (iterator.StartNextChunk()) (void)ReadPoints(iterator.Chunk());
}

void LSoundProcessCurve::SetPreset(int index) {
  if (index < 0 || index >= GetNumPresets() || static_cast<std::size_t>(index) >= curve_->presets.size()) return;
  LSoundProcessValues::SetPreset(index);
  SetCurve(curve_->presets[static_cast<std::size_t>(index)]);
}

int LSoundProcessCurve::GetIndexInPreset() const {
  for (std::size_t p = 0; p < curve_->presets.size(); ++p) {
    const std::span<const LPoint> curve = curve_->presets[p];
    bool same = curve.size() == points_.size();
    for (std::size_t i = 0; i < curve.size() && same; ++i)
      same = curve[i].frequency == points_[i].frequency && curve[i].gainDb == points_[i].gainDb;
    for (int i = 0; i < FixedCount() && same; ++i) same = Value(i) == PresetValue(static_cast<int>(p), i);
    if (same) return static_cast<int>(p);
  }
  return -1;
}

void LSoundProcessCurve::ResetToDefault() {
  LSoundProcessValues::ResetToDefault();
  // The base constructor resets before the curve table is known.
  if (curve_) SetCurve(curve_->byDefault);
}

void LSoundProcessCurve::SetCurvePoint(double x, double y) {
  auto at = std::lower_bound(points_.begin(), points_.end(), x,
                             [](const LPoint& p, double v) { return p.frequency < v; });
  if (at != points_.end() && at->frequency == x) {
    at->gainDb = y;
  } else if (points_.size() < kLSPCurveMaxPoints) {
    points_.insert(at, LPoint{x, y});
  }
}

void LSoundProcessCurve::SetCurve(std::span<const LPoint> points) {
  points_.clear();
  for (const LPoint& p : points) SetCurvePoint(p.frequency, p.gainDb);
}

double LSoundProcessCurve::CurveAt(double x, double yAtNone) const {
  const LSPCurveAxes& a = curve_->axes;
  auto clampX = [&](double v) { return std::clamp(std::isfinite(v) ? v : a.xMin, a.xMin, a.xMax); };
  auto clampY = [&](double v) { return std::clamp(std::isfinite(v) ? v : 0.0, a.yMin, a.yMax); };
  if (points_.empty()) return yAtNone;
  auto above = std::upper_bound(points_.begin(), points_.end(), x,
                                [](double v, const LPoint& p) { return v < p.frequency; });
  if (above == points_.begin()) return clampY(points_.front().gainDb);
  if (above == points_.end()) return clampY(points_.back().gainDb);
  const LPoint& lo = *(above - 1);
  const LPoint& hi = *above;
  double x0 = clampX(lo.frequency), x1 = clampX(hi.frequency), t = 0;
  if (curve_->logX) {
    x0 = std::log(std::max(x0, 1e-6));
    x1 = std::log(std::max(x1, 1e-6));
    x = std::log(std::max(x, 1e-6));
  }
  if (x1 > x0) t = std::clamp((x - x0) / (x1 - x0), 0.0, 1.0);
  return clampY(lo.gainDb) + t * (clampY(hi.gainDb) - clampY(lo.gainDb));
}
