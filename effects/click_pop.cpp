#include "effects/click_pop.h"

#include <algorithm>
#include <cmath>

#include "effects/sound_process_type.h"

namespace {

constexpr LSPValueSpec kSpecs[] = {
    {"Empfindlichkeit", "%", 0.0, 100.0, 50.0, false},
    {"Maximale Länge", "ms", 0.1, 20.0, 2.0, false},
};
constexpr LSPValuePreset kPresets[] = {
    {"Schallplatte", {60.0, 2.0}},
    {"Leichte Knackser", {40.0, 1.0}},
    {"Starke Kratzer", {75.0, 5.0}},
};
constexpr LSPValueTable kTable{kLSPTypeClickPopRemoval, kSpecs, kPresets};

constexpr int kOrder = 32;
constexpr long long kBlock = 8192;
// Samples either side of a run that its model is fitted to.
constexpr long long kFitSpan = 1024;

// Adds the covariance of x[from, to) for an order-p predictor (rows n with
// from + p <= n < to) to r, (p + 1) x (p + 1), in O((to - from) p).
void Covariance(const double* x, long long from, long long to, int p, std::vector<double>& r) {
  const int m = p + 1;
  if (to - from <= p) return;
  std::vector<double> row(m, 0.0);
  // Row 0: sum of x[n] x[n - j]; the rest follow by moving the sum back one sample.
  for (int j = 0; j < m; ++j) {
    double s = 0;
    for (long long n = from + p; n < to; ++n) s += x[n] * x[n - j];
    row[j] = s;
  }
  std::vector<double> cov(static_cast<std::size_t>(m * m));
  for (int j = 0; j < m; ++j) cov[j] = cov[j * m] = row[j];
  for (int i = 0; i < p; ++i)
    for (int j = i; j < p; ++j) {
      const double v = cov[i * m + j] + x[from + p - 1 - i] * x[from + p - 1 - j] - x[to - 1 - i] * x[to - 1 - j];
      cov[(i + 1) * m + j + 1] = cov[(j + 1) * m + i + 1] = v;
    }
  for (int k = 0; k < m * m; ++k) r[k] += cov[k];
}

// The prediction error filter c (c[0] = 1) from a covariance r; false when singular.
bool Solve(std::vector<double>& r, int p, std::vector<double>& c) {
  const int m = p + 1;
  double trace = 0;
  for (int i = 1; i < m; ++i) trace += r[i * m + i];
  if (!(trace > 0)) return false;
  // A little white noise keeps a pure tone's model from being singular.
  const double ridge = 1e-9 * trace / p + 1e-30;
  std::vector<double> l(static_cast<std::size_t>(p * p), 0.0), y(p);
  for (int i = 0; i < p; ++i) {
    for (int j = 0; j <= i; ++j) {
      double s = r[(i + 1) * m + j + 1] + (i == j ? ridge : 0.0);
      for (int k = 0; k < j; ++k) s -= l[i * p + k] * l[j * p + k];
      if (i == j) {
        if (!(s > 0)) return false;
        l[i * p + i] = std::sqrt(s);
      } else {
        l[i * p + j] = s / l[j * p + j];
      }
    }
  }
  for (int i = 0; i < p; ++i) {
    double s = r[(i + 1) * m];
    for (int k = 0; k < i; ++k) s -= l[i * p + k] * y[k];
    y[i] = s / l[i * p + i];
  }
  c.assign(m, 0.0);
  c[0] = 1.0;
  for (int i = p - 1; i >= 0; --i) {
    double s = y[i];
    for (int k = i + 1; k < p; ++k) s -= l[k * p + i] * c[k + 1];
    c[i + 1] = s / l[i * p + i];
  }
  for (int i = 1; i < m; ++i) c[i] = -c[i];
  return true;
}

// Least-squares interpolation of x[from, to) under the error filter c: the
// normal equations are banded (width p), so Cholesky in band form.
void Interpolate(double* x, long long from, long long to, const std::vector<double>& c) {
  const int p = static_cast<int>(c.size()) - 1;
  const long long n = to - from;
  std::vector<double> rc(p + 1, 0.0);
  for (int k = 0; k <= p; ++k)
    for (int i = 0; i + k <= p; ++i) rc[k] += c[i] * c[i + k];
  // Errors over every row that touches the run, the run taken as zero.
  std::vector<double> known(static_cast<std::size_t>(n + p), 0.0);
  for (long long r = 0; r < n + p; ++r) {
    const long long t = from + r;
    double s = 0;
    for (int k = 0; k <= p; ++k) {
      const long long at = t - k;
      if (at < from || at >= to) s += c[k] * x[at];
    }
    known[r] = s;
  }
  std::vector<double> b(n);
  for (long long i = 0; i < n; ++i) {
    double s = 0;
    for (int k = 0; k <= p; ++k) s += c[k] * known[i + k];
    b[i] = -s;
  }
  const int w = p + 1;
  std::vector<double> l(static_cast<std::size_t>(n * w), 0.0);  // l[i * w + (i - j)]
  const double ridge = 1e-12 * rc[0];
  for (long long i = 0; i < n; ++i) {
    for (long long j = std::max(0LL, i - p); j <= i; ++j) {
      double s = rc[i - j] + (i == j ? ridge : 0.0);
      for (long long k = std::max(0LL, i - p); k < j; ++k) s -= l[i * w + (i - k)] * l[j * w + (j - k)];
      if (i == j) {
        l[i * w] = std::sqrt(std::max(s, 1e-300));
      } else {
        l[i * w + (i - j)] = s / l[j * w];
      }
    }
  }
  for (long long i = 0; i < n; ++i) {
    double s = b[i];
    for (long long k = std::max(0LL, i - p); k < i; ++k) s -= l[i * w + (i - k)] * b[k];
    b[i] = s / l[i * w];
  }
  for (long long i = n - 1; i >= 0; --i) {
    double s = b[i];
    for (long long k = i + 1; k <= std::min(n - 1, i + p); ++k) s -= l[k * w + (k - i)] * b[k];
    b[i] = s / l[i * w];
  }
  for (long long i = 0; i < n; ++i) x[from + i] = b[i];
}

}  // namespace

LSPClickPopRemoval::LSPClickPopRemoval() : LSoundProcessValues(kTable) {}

LSoundSource LSPClickPopRemoval::OpenSource(LSoundSource& input) {
  return LMakeSource<LSRCClickPopRemoval>(input, OpenValue(kLSPClickSensitivity), OpenValue(kLSPClickMaxMs));
}

bool LClickRepair(double* x, long long count, long long from, long long to) {
  if (from < 0 || to > count || to <= from) return false;
  const long long left = std::min(from, kFitSpan);
  const long long right = std::min(count - to, kFitSpan);
  const int p = static_cast<int>(std::min<long long>(kOrder, std::min(left, right) / 2));
  if (p < 2) return false;
  std::vector<double> r(static_cast<std::size_t>((p + 1) * (p + 1)), 0.0), c;
  Covariance(x, from - left, from, p, r);
  Covariance(x, to, to + right, p, r);
  if (!Solve(r, p, c)) return false;
  Interpolate(x, from, to, c);
  return true;
}

LSRCClickPopRemoval::LSRCClickPopRemoval(const LSoundSource& input, double sensitivity, double maxMs)
    : LSoundProcessBase(input) {
  factor_ = 100.0 * std::pow(0.03, std::clamp(sensitivity, 0.0, 100.0) / 100.0);
  maxRun_ = std::max(1LL, std::llround(maxMs * GetSampleRate() / 1000.0));
  margin_ = std::max<long long>(kFitSpan, maxRun_ + 8 * kOrder);
}

void LSRCClickPopRemoval::Read(float* buffer, long long frames) {
  const int channels = GetChannels();
  for (long long done = 0; done < frames;) {
    if (position_ < 0) {
      const long long n = std::min(frames - done, -position_);
      std::fill(buffer + done * channels, buffer + (done + n) * channels, 0.0f);
      done += n;
      position_ += n;
      continue;
    }
    const long long block = position_ / kBlock;
    if (block != block_) MakeBlock(block);
    const long long n = std::min(frames - done, (block + 1) * kBlock - position_);
    const long long at = margin_ + position_ - block * kBlock;
    std::copy(window_.begin() + at * channels, window_.begin() + (at + n) * channels, buffer + done * channels);
    done += n;
    position_ += n;
  }
}

void LSRCClickPopRemoval::MakeBlock(long long block) {
  const int channels = GetChannels();
  const long long start = block * kBlock - margin_;
  const long long size = kBlock + 2 * margin_;
  window_.assign(static_cast<std::size_t>(size * channels), 0.0f);
  const long long from = std::max(0LL, start);
  LSoundProcessBase::Seek(from);
  ReadInput(window_.data() + (from - start) * channels, size - (from - start));
  block_ = block;
  for (int c = 0; c < channels; ++c) repaired_ += Channel(c);
}

long long LSRCClickPopRemoval::Channel(int channel) {
  const int channels = GetChannels();
  const long long size = kBlock + 2 * margin_;
  x_.resize(size);
  double energy = 0;
  for (long long n = 0; n < size; ++n) {
    x_[n] = window_[n * channels + channel];
    energy += x_[n] * x_[n];
  }
  if (energy == 0) return 0;
  std::vector<double> r(static_cast<std::size_t>((kOrder + 1) * (kOrder + 1)), 0.0), c;
  Covariance(x_.data(), 0, size, kOrder, r);
  if (!Solve(r, kOrder, c)) return 0;
  ef_.assign(size, 0.0);
  eb_.assign(size, 0.0);
  for (long long n = kOrder; n < size - kOrder; ++n) {
    double f = 0, b = 0;
    for (int k = 0; k <= kOrder; ++k) {
      f += c[k] * x_[n - k];
      b += c[k] * x_[n + k];
    }
    ef_[n] = std::fabs(f);
    eb_[n] = std::fabs(b);
  }
  work_.assign(ef_.begin() + kOrder, ef_.end() - kOrder);
  std::nth_element(work_.begin(), work_.begin() + work_.size() / 2, work_.end());
  const double typical = work_[work_.size() / 2];
  // Quiet audio that the model predicts almost exactly has almost no error; a
  // floor 60 dB under the window's level keeps rounding from counting as clicks.
  const double threshold = std::max(factor_ * typical, 1e-3 * std::sqrt(energy / static_cast<double>(size)));
  bad_.assign(size, 0);
  for (long long n = kOrder; n < size - kOrder; ++n) bad_[n] = ef_[n] > threshold && eb_[n] > threshold;
  long long runs = 0;
  for (long long n = 0; n < size;) {
    if (!bad_[n]) {
      ++n;
      continue;
    }
    long long end = n + 1;
    // Samples of a click that happen to be predicted well still belong to it.
    for (long long look = end; look < std::min(size, end + 4); ++look)
      if (bad_[look]) end = look + 1;
    for (;;) {
      long long next = end;
      for (long long look = end; look < std::min(size, end + 4); ++look)
        if (bad_[look]) next = look + 1;
      if (next == end) break;
      end = next;
    }
    const bool inBlock = end > margin_ && n < margin_ + kBlock;
    if (inBlock && end - n <= maxRun_ && LClickRepair(x_.data(), size, n, end)) {
      for (long long i = n; i < end; ++i) window_[i * channels + channel] = static_cast<float>(x_[i]);
      if (n >= margin_) ++runs;
    }
    n = end;
  }
  return runs;
}
