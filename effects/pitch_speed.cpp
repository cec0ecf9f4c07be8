#include "effects/pitch_speed.h"

#include <rubberband/RubberBandStretcher.h>

#include <algorithm>
#include <cmath>

#include "effects/sound_process_type.h"
#include "engine/resample_source.h"

namespace {

constexpr LSPValueSpec kPitchSpeedSpecs[] = {
    {"Tempo", "%", 10.0, 1000.0, 100.0, false},
    {"Halbtöne", "", -24.0, 24.0, 0.0, true},
    {"Cent", "", -100.0, 100.0, 0.0, true},
    {"Geschwindigkeit", "%", 10.0, 1000.0, 100.0, false},
};
constexpr LSPValuePreset kPitchSpeedPresets[] = {
    {"Langsamer", {75.0, 0.0, 0.0, 100.0}},
    {"Schneller", {125.0, 0.0, 0.0, 100.0}},
    {"Oktave höher", {100.0, 12.0, 0.0, 100.0}},
    {"Halbe Geschwindigkeit", {100.0, 0.0, 0.0, 50.0}},
    {"PAL nach Film", {100.0, 0.0, 0.0, 95.9}},
};
constexpr LSPValueSpec kPitchSpecs[] = {
    {"Halbtöne", "", -24.0, 24.0, 0.0, true},
    {"Cent", "", -100.0, 100.0, 0.0, true},
    {"Formanten erhalten", "", 0.0, 1.0, 0.0, true},
};
constexpr LSPValuePreset kPitchPresets[] = {
    {"Oktave tiefer", {-12.0, 0.0, 0.0}},
    {"Quinte höher", {7.0, 0.0, 0.0}},
    {"Stimme höher", {4.0, 0.0, 1.0}},
    {"Stimme tiefer", {-4.0, 0.0, 1.0}},
};
constexpr LSPValueTable kPitchSpeedTable{kLSPTypePitchSpeed, kPitchSpeedSpecs, kPitchSpeedPresets};
constexpr LSPValueTable kPitchTable{kLSPTypePitch, kPitchSpecs, kPitchPresets};

// Frames handed to the stretcher at a time.
constexpr long long kBlock = 1024;

double PitchScale(double semitones, double cents) { return std::pow(2.0, (semitones + cents / 100.0) / 12.0); }

// The curve's tempo and pitch at share x of the input.
LStretchPoint ProfileAt(const std::vector<LStretchPoint>& profile, double x) {
  if (x <= profile.front().at) return profile.front();
  for (std::size_t i = 1; i < profile.size(); ++i) {
    const LStretchPoint& a = profile[i - 1];
    const LStretchPoint& b = profile[i];
    if (x <= b.at) {
      const double t = b.at > a.at ? (x - a.at) / (b.at - a.at) : 1.0;
      return {x, a.tempoPercent + t * (b.tempoPercent - a.tempoPercent), a.semitones + t * (b.semitones - a.semitones)};
    }
  }
  return profile.back();
}

// The input under a faster (or slower) clock: resampled back to the real rate,
// pace and pitch move together.
class LSRCClock final : public LSoundProcessBase {
public:
  LSRCClock(const LSoundSource& input, std::uint32_t rate) : LSoundProcessBase(input) {
    SetFormat(rate, GetChannels());
  }
  void Read(float* buffer, long long frames) override { ReadInput(buffer, frames); }
};

}  // namespace

LSPPitchSpeed::LSPPitchSpeed() : LSoundProcessValues(kPitchSpeedTable) {}
LSPPitch::LSPPitch() : LSoundProcessValues(kPitchTable) {}

LSoundSource LSPPitchSpeed::OpenSource(LSoundSource& input) {
  LStretchSettings s;
  s.timeRatio = 100.0 / OpenValue(kLSPPitchSpeedTempo);
  s.pitchScale = PitchScale(OpenValue(kLSPPitchSpeedSemitones), OpenValue(kLSPPitchSpeedCents));
  s.preview = preview_;
  return LOpenPitchSpeed(input, s, OpenValue(kLSPPitchSpeedSpeed) / 100.0);
}

LSoundSource LSPPitch::OpenSource(LSoundSource& input) {
  LStretchSettings s;
  s.pitchScale = PitchScale(OpenValue(kLSPPitchSemitones), OpenValue(kLSPPitchCents));
  s.formants = OpenValue(kLSPPitchFormants) >= 0.5;
  s.preview = preview_;
  return LOpenPitchSpeed(input, s, 1.0);
}

LSoundSource LOpenPitchSpeed(LSoundSource& input, const LStretchSettings& stretch, double speed) {
  LSoundSource current = input;
  if (stretch.timeRatio != 1.0 || stretch.pitchScale != 1.0 || !stretch.profile.empty())
    current = LMakeSource<LSRCStretch>(current, stretch);
  if (speed != 1.0) {
    const std::uint32_t rate = current.GetSampleRate();
    const auto faster = static_cast<std::uint32_t>(std::llround(rate * speed));
    LSoundSource clock = LMakeSource<LSRCClock>(current, std::max<std::uint32_t>(1, faster));
    current = LSRCResample::Convert(clock, rate);
  }
  return current;
}

struct LSRCStretch::Engine {
  RubberBand::RubberBandStretcher stretcher;
  Engine(std::size_t rate, std::size_t channels, RubberBand::RubberBandStretcher::Options options, double ratio,
         double pitch)
      : stretcher(rate, channels, options, ratio, pitch) {}
};

LSRCStretch::LSRCStretch(const LSoundSource& input, const LStretchSettings& settings)
    : LSoundProcessBase(input), s_(settings) {
  using RB = RubberBand::RubberBandStretcher;
  RB::Options options = RB::OptionProcessRealTime | RB::OptionChannelsTogether;
  options |= s_.preview ? RB::OptionEngineFaster | RB::OptionPitchHighSpeed
                       : RB::OptionEngineFiner | RB::OptionPitchHighQuality;
  if (s_.formants) options |= RB::OptionFormantPreserved;
  if (!s_.profile.empty()) {
    // A pitch that moves must not jump where the stretcher switches its resampler.
    options |= RB::OptionPitchHighConsistency;
    std::sort(s_.profile.begin(), s_.profile.end(),
              [](const LStretchPoint& a, const LStretchPoint& b) { return a.at < b.at; });
    for (LStretchPoint& p : s_.profile) p.tempoPercent = std::clamp(p.tempoPercent, 10.0, 1000.0);
    const long long in = std::max(0LL, Input().GetEndSample());
    blockOut_.reserve(static_cast<std::size_t>(in / kBlock + 2));
    double out = 0;
    for (long long at = 0; at < in; at += kBlock) {
      blockOut_.push_back(out);
      const double x = in > 0 ? static_cast<double>(at) / static_cast<double>(in) : 0.0;
      out += static_cast<double>(std::min(kBlock, in - at)) * 100.0 / ProfileAt(s_.profile, x).tempoPercent;
    }
    blockOut_.push_back(out);
  }
  const int channels = GetChannels();
  engine_ = std::make_unique<Engine>(GetSampleRate(), channels, options, s_.timeRatio, s_.pitchScale);
  engine_->stretcher.setMaxProcessSize(kBlock);
  interleaved_.resize(static_cast<std::size_t>(kBlock * channels));
  planes_.assign(static_cast<std::size_t>(channels), std::vector<float>(static_cast<std::size_t>(kBlock)));
  Restart(0);
}

LSRCStretch::~LSRCStretch() = default;

long long LSRCStretch::GetEndSample() const {
  if (!blockOut_.empty()) return std::llround(blockOut_.back());
  const long long in = Input().GetEndSample();
  return in < 0 ? in : std::llround(static_cast<double>(in) * s_.timeRatio);
}

void LSRCStretch::Restart(long long inputFrame) {
  RubberBand::RubberBandStretcher& rb = engine_->stretcher;
  rb.reset();
  SetBlockRatios(inputFrame);
  Input().Seek(inputFrame);
  inputAt_ = inputFrame;
  // The pad lets the first frame come out whole; the delay is what the stretcher holds back.
  std::vector<float*> zero(planes_.size());
  for (auto& p : planes_) std::fill(p.begin(), p.end(), 0.0f);
  for (std::size_t c = 0; c < planes_.size(); ++c) zero[c] = planes_[c].data();
  for (long long pad = static_cast<long long>(rb.getPreferredStartPad()); pad > 0; pad -= kBlock)
    rb.process(zero.data(), static_cast<std::size_t>(std::min(pad, kBlock)), false);
  discard_ = static_cast<long long>(rb.getStartDelay());
}

void LSRCStretch::SetBlockRatios(long long at) {
  RubberBand::RubberBandStretcher& rb = engine_->stretcher;
  if (s_.profile.empty()) {
    rb.setTimeRatio(s_.timeRatio);
    rb.setPitchScale(s_.pitchScale);
    return;
  }
  const double in = static_cast<double>(std::max(1LL, Input().GetEndSample()));
  const LStretchPoint p = ProfileAt(s_.profile, std::min(1.0, static_cast<double>(at) / in));
  rb.setTimeRatio(100.0 / p.tempoPercent);
  rb.setPitchScale(PitchScale(p.semitones, 0.0));
}

void LSRCStretch::Feed() {
  if (!s_.profile.empty()) SetBlockRatios(inputAt_);
  const int channels = GetChannels();
  const long long end = Input().GetEndSample();
  const long long real = std::clamp(end - inputAt_, 0LL, kBlock);
  if (real > 0) ReadInput(interleaved_.data(), real);
  std::fill(interleaved_.begin() + real * channels, interleaved_.end(), 0.0f);
  std::vector<float*> planes(planes_.size());
  for (int c = 0; c < channels; ++c) {
    float* plane = planes_[static_cast<std::size_t>(c)].data();
    for (long long i = 0; i < kBlock; ++i) plane[i] = interleaved_[static_cast<std::size_t>(i * channels + c)];
    planes[static_cast<std::size_t>(c)] = plane;
  }
  engine_->stretcher.process(planes.data(), static_cast<std::size_t>(kBlock), false);
  inputAt_ += kBlock;
}

void LSRCStretch::Read(float* buffer, long long frames) {
  const int channels = GetChannels();
  const long long end = GetEndSample();
  const long long real = end < 0 ? frames : std::clamp(end - position_, 0LL, frames);
  RubberBand::RubberBandStretcher& rb = engine_->stretcher;
  std::vector<float*> planes(planes_.size());
  long long done = 0;
  while (done < real) {
    int available = rb.available();
    if (available <= 0) {
      Feed();
      continue;
    }
    const long long want = discard_ > 0 ? discard_ : real - done;
    const long long n = std::min({want, static_cast<long long>(available), kBlock});
    for (std::size_t c = 0; c < planes_.size(); ++c) planes[c] = planes_[c].data();
    const long long got = static_cast<long long>(rb.retrieve(planes.data(), static_cast<std::size_t>(n)));
    if (discard_ > 0) {
      discard_ -= got;
      continue;
    }
    float* out = buffer + done * channels;
    for (long long i = 0; i < got; ++i)
      for (int c = 0; c < channels; ++c) out[i * channels + c] = planes_[static_cast<std::size_t>(c)][i];
    done += got;
  }
  std::fill(buffer + real * channels, buffer + frames * channels, 0.0f);
  position_ += real;
}

void LSRCStretch::Seek(long long frame) {
  frame = std::max(0LL, frame);
  if (!blockOut_.empty()) {
    // The block whose output holds the target, from its start on.
    const auto next = std::upper_bound(blockOut_.begin(), blockOut_.end() - 1, static_cast<double>(frame));
    const long long block = std::max<long long>(0, next - blockOut_.begin() - 1);
    Restart(block * kBlock);
    discard_ += std::max(0LL, frame - std::llround(blockOut_[static_cast<std::size_t>(block)]));
    position_ = frame;
    return;
  }
  const auto at = static_cast<long long>(std::floor(static_cast<double>(frame) / s_.timeRatio));
  Restart(at);
  // Whatever of the target lies between input frames.
  discard_ += frame - std::llround(static_cast<double>(at) * s_.timeRatio);
  position_ = frame;
}
