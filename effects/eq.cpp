#include "effects/eq.h"

#include "effects/fftw_support.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <mutex>
#include <new>
#include <numbers>

#include "effects/sound_process_table.h"
#include "effects/sound_process_type.h"

namespace {

// Bounds of the design grid in points. The grid is the smallest power of two
// that is at least twice the rate, so it is spaced below 0.5 Hz ... 1 Hz.
constexpr long long kMinGrid = 256;
constexpr long long kMaxGrid = 1LL << 21;

long long GridFor(std::uint32_t rate) {
  long long grid = kMinGrid;
  while (grid < 2LL * rate && grid < kMaxGrid) grid *= 2;
  return grid;
}

using RealBuffer = LFftwReal;
using ComplexBuffer = LFftwComplex;

RealBuffer AllocReal(long long count) { return LFftwAllocReal(count); }
ComplexBuffer AllocComplex(long long count) { return LFftwAllocComplex(count); }
std::mutex& PlannerMutex() { return LFftwPlannerMutex(); }

double DbToFactor(double db) { return std::pow(10.0, db / 20.0); }

}  // namespace

// ---- LSPEq ----

namespace {

constexpr LSPCurveAxes kAxes{"Frequenz", "Hz", 0.0, kLEqPointsRate / 2.0, "Verstärkung", "dB", kLEqFloorDb,
                             kLEqCeilingDb};

}  // namespace

void LSPEq::SetGains(LArray<float> gainsDb) {
  points_.Clear();
  for (float& g : gainsDb) {
    // A value that is not a number is left flat.
    if (std::isnan(g)) g = 0.0f;
    g = std::clamp(g, static_cast<float>(kLEqFloorDb), static_cast<float>(kLEqCeilingDb));
  }
  gainsDb_ = std::move(gainsDb);
}

void LSPEq::ResetToDefault() {
  gainsDb_.clear();
  points_.Clear();
}

void LSPEq::SetParameterByIndex(int index, void* value) {
  if (index < 0 || index >= GetNumParameters() || !value) return;
  std::vector<LPoint> points = CurvePoints();
  points[static_cast<std::size_t>(index)].gainDb = LSoundProcessParameter::Get<double>(value);
  points_.Clear();
  for (const LPoint& p : points) points_.Add(p.frequency, p.gainDb);
  MapPoints();
}

void LSPEq::GetParameterByIndex(int index, LSoundProcessParameter* out) const {
  if (index < 0 || index >= GetNumParameters() || !out) return;
  const LPoint& p = points_.At(static_cast<std::size_t>(index));
  char label[kLPathMax];
  LSPPointLabel(label, p.frequency, kAxes.xUnit);
  out->Init<double>(kLSPParamDouble, kAxes.yMin, kAxes.yMax, label, kAxes.yUnit);
  out->SetValue<double>(p.gainDb);
}

const LSPCurveAxes& LSPEq::CurveAxes() const { return kAxes; }

std::vector<LPoint> LSPEq::CurvePoints() const {
  std::vector<LPoint> points;
  for (std::size_t i = 0; i < points_.Count(); ++i) points.push_back(points_.At(i));
  return points;
}

void LSPEq::SetCurvePoint(double frequencyHz, double gainDb) {
  std::vector<LPoint> points = CurvePoints();
  std::erase_if(points, [&](const LPoint& p) { return p.frequency == frequencyHz; });
  points_.Clear();
  for (const LPoint& p : points) points_.Add(p.frequency, p.gainDb);
  points_.Add(frequencyHz, gainDb);
  MapPoints();
}

void LSPEq::ClearCurvePoints() {
  points_.Clear();
  gainsDb_.clear();
}

void LSPEq::MapPoints() {
  // SetGains forgets the points; they are what the gains now come from.
  LPointList points = points_;
  points.MapPointListToEq(*this, kLEqPointsRate);
  points_ = std::move(points);
}

double LSPEq::GainAt(double frequencyHz) const {
  if (gainsDb_.empty()) return 0.0;
  if (!(frequencyHz > 0.0)) return gainsDb_.front();
  double last = static_cast<double>(gainsDb_.size() - 1);
  if (frequencyHz >= last) return gainsDb_.back();
  auto below = static_cast<std::size_t>(frequencyHz);
  double t = frequencyHz - static_cast<double>(below);
  return gainsDb_[below] + t * (gainsDb_[below + 1] - gainsDb_[below]);
}

bool LSPEq::IsFlat() const {
  return std::all_of(gainsDb_.begin(), gainsDb_.end(), [](float g) { return g == 0.0f; });
}

LSoundSource LSPEq::OpenSource(LSoundSource& input) {
  if (IsFlat()) return input;
  return LMakeSource<LSRCEq>(input, *this);
}

char* LSPEq::GetName(char* buffer) const {
  LSoundProcessCopyName(buffer, LSoundProcessTypeName(kLSPTypePointListEq));
  return buffer;
}

int LSPEq::GetSoundProcessType() const { return kLSPTypePointListEq; }

void LSPEq::SaveToSDF(LSDFWriter& writer) const {
  SaveBaseToSDF(writer);
  writer.WriteBlob(kLSPEqChunkGains, reinterpret_cast<const unsigned char*>(gainsDb_.data()),
                   gainsDb_.size() * sizeof(float));
}

namespace {

// A table of floats, or nothing when the chunk is not one.
bool ReadGains(LSDFReaderChunk chunk, LArray<float>& gains) {
  unsigned long long length = chunk.Remaining();
  if (length % sizeof(float) != 0 || length / sizeof(float) > kLEqMaxGains) return false;
  LArray<float> table(static_cast<std::size_t>(length / sizeof(float)));
  if (chunk.ReadData(table.data(), length) != length) return false;
  gains = std::move(table);
  return true;
}

}  // namespace

void LSPEq::LoadFromSDF(LSDFReader& reader, LSDFReaderChunkIterator& iterator) {
  LoadSettingsFromSDF(reader, iterator, [this](LSDFReaderChunkIterator& it) {
    LArray<float> gains;
    if (it.Id() == kLSPEqChunkGains && ReadGains(it.Chunk(), gains)) SetGains(std::move(gains));
  });
}

void LSPEq::LoadFromSDF(LSDFReaderChunkIterator& iterator) {
  LArray<float> gains;
  if (iterator.StartNextChunk() && ReadGains(iterator.Chunk(), gains)) SetGains(std::move(gains));
}

// ---- LSRCEq ----

struct LSRCEq::Fft {
  long long grid = 0;  // N
  long long size = 0;  // M = 2N, the transform length
  int channels = 0;
  ComplexBuffer filter;    // N + 1 bins, the filter's spectrum scaled by 1/M
  LArray<RealBuffer> windows;  // per channel, M input frames ending N/2 after the block
  ComplexBuffer spectrum;  // N + 1 bins
  RealBuffer time;         // M
  RealBuffer output;       // N frames, interleaved
  RealBuffer scratch;      // N frames of input, interleaved
  fftwf_plan forward = nullptr;
  fftwf_plan inverse = nullptr;

  ~Fft() {
    std::lock_guard<std::mutex> lock(PlannerMutex());
    if (forward) fftwf_destroy_plan(forward);
    if (inverse) fftwf_destroy_plan(inverse);
  }
};

LSRCEq::LSRCEq(const LSoundSource& input, const LSPEq& eq)
    : LSoundProcessBase(input), grid_(GridFor(GetSampleRate())), fft_(std::make_unique<Fft>()) {
  Fft& f = *fft_;
  const long long n = grid_;
  const long long m = 2 * n;
  const long long bins = n + 1;
  f.grid = n;
  f.size = m;
  f.channels = GetChannels();
  f.filter = AllocComplex(bins);
  for (int c = 0; c < f.channels; ++c) f.windows.push_back(AllocReal(m));
  f.spectrum = AllocComplex(bins);
  f.time = AllocReal(m);
  f.output = AllocReal(n * f.channels);
  f.scratch = AllocReal(n * f.channels);

  // Design: sample the curve on a grid of N points with zero phase, shifted by N/2
  // (the factor (-1)^k), transform back and taper with a Hann window. The taps are
  // symmetric about N/2, so the filter delays by exactly N/2 frames.
  ComplexBuffer curve = AllocComplex(n / 2 + 1);
  const double rate = GetSampleRate();
  for (long long k = 0; k <= n / 2; ++k) {
    double gain = DbToFactor(eq.GainAt(static_cast<double>(k) * rate / static_cast<double>(n)));
    curve[k][0] = static_cast<float>((k & 1) ? -gain : gain);
    curve[k][1] = 0.0f;
  }
  RealBuffer taps = AllocReal(m);
  {
    std::lock_guard<std::mutex> lock(PlannerMutex());
    fftwf_plan design = fftwf_plan_dft_c2r_1d(static_cast<int>(n), curve.get(), taps.get(), FFTW_ESTIMATE);
    fftwf_execute(design);
    fftwf_destroy_plan(design);
    f.forward = fftwf_plan_dft_r2c_1d(static_cast<int>(m), f.windows[0].get(), f.spectrum.get(), FFTW_ESTIMATE);
    f.inverse = fftwf_plan_dft_c2r_1d(static_cast<int>(m), f.spectrum.get(), f.time.get(), FFTW_ESTIMATE);
  }
  if (!f.forward || !f.inverse) throw std::bad_alloc();
  for (long long i = 0; i < n; ++i) {
    double hann = 0.5 - 0.5 * std::cos(2.0 * std::numbers::pi * static_cast<double>(i) / static_cast<double>(n));
    taps[i] = static_cast<float>(taps[i] * hann / static_cast<double>(n));
  }
  fftwf_execute_dft_r2c(f.forward, taps.get(), f.filter.get());
  // The inverse transform of each block is unscaled; the filter carries 1/M.
  const float scale = 1.0f / static_cast<float>(m);
  for (long long k = 0; k < bins; ++k) {
    f.filter[k][0] *= scale;
    f.filter[k][1] *= scale;
  }
}

LSRCEq::~LSRCEq() = default;

void LSRCEq::Seek(long long frame) {
  position_ = frame;
  // A computed block that still covers the frame stays good.
  if (blockValid_ && (frame < blockStart_ || frame >= blockStart_ + grid_)) blockValid_ = false;
}

void LSRCEq::ReadWindow(long long frame, long long frames, long long offset) {
  Fft& f = *fft_;
  const int ch = f.channels;
  while (frames > 0) {
    long long n = std::min(frames, f.grid);
    if (frame < 0) {
      n = std::min(n, -frame);
      for (int c = 0; c < ch; ++c) std::memset(f.windows[c].get() + offset, 0, static_cast<std::size_t>(n) * sizeof(float));
    } else {
      if (Input().GetPositionSample() != frame) Input().Seek(frame);
      ReadInput(f.scratch.get(), n);
      const float* in = f.scratch.get();
      for (int c = 0; c < ch; ++c) {
        float* w = f.windows[c].get() + offset;
        for (long long i = 0; i < n; ++i) w[i] = in[i * ch + c];
      }
    }
    frame += n;
    offset += n;
    frames -= n;
  }
}

void LSRCEq::ComputeBlock(long long start) {
  Fft& f = *fft_;
  const long long n = f.grid;
  const int ch = f.channels;
  if (blockValid_ && start == blockStart_ + n) {
    // Overlap-save: the newer half of each window becomes the older half.
    for (int c = 0; c < ch; ++c) std::memmove(f.windows[c].get(), f.windows[c].get() + n, static_cast<std::size_t>(n) * sizeof(float));
    ReadWindow(start + n / 2, n, n);
  } else {
    ReadWindow(start - n / 2, 2 * n, 0);
  }
  const long long bins = n + 1;
  for (int c = 0; c < ch; ++c) {
    fftwf_execute_dft_r2c(f.forward, f.windows[c].get(), f.spectrum.get());
    fftwf_complex* s = f.spectrum.get();
    const fftwf_complex* h = f.filter.get();
    for (long long k = 0; k < bins; ++k) {
      float re = s[k][0] * h[k][0] - s[k][1] * h[k][1];
      float im = s[k][0] * h[k][1] + s[k][1] * h[k][0];
      s[k][0] = re;
      s[k][1] = im;
    }
    fftwf_execute_dft_c2r(f.inverse, s, f.time.get());
    // The second half holds the frames whose whole filter span lay in the window.
    const float* t = f.time.get() + n;
    float* out = f.output.get();
    for (long long i = 0; i < n; ++i) out[i * ch + c] = t[i];
  }
  blockStart_ = start;
  blockValid_ = true;
}

void LSRCEq::Read(float* buffer, long long frames) {
  const int ch = GetChannels();
  const long long end = GetEndSample();
  while (frames > 0) {
    long long n;
    if (position_ < 0 || position_ >= end) {
      n = position_ < 0 ? std::min(frames, -position_) : frames;
      std::memset(buffer, 0, static_cast<std::size_t>(n * ch) * sizeof(float));
    } else {
      if (!blockValid_ || position_ < blockStart_ || position_ >= blockStart_ + grid_) ComputeBlock(position_);
      n = std::min({frames, blockStart_ + grid_ - position_, end - position_});
      std::memcpy(buffer, fft_->output.get() + (position_ - blockStart_) * ch,
                  static_cast<std::size_t>(n * ch) * sizeof(float));
    }
    buffer += n * ch;
    position_ += n;
    frames -= n;
  }
}
