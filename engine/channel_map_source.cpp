#include "engine/channel_map_source.h"

#include <algorithm>
#include <cstring>

namespace {

// Frames taken from the input per step.
constexpr long long kBlockFrames = 4096;
constexpr int kMaxChannels = 255;

}  // namespace

LSRCChannelMap::LSRCChannelMap(LSoundSource input, Map map)
    : LSoundSourceBase(input.GetSampleRate(), 1), input_(std::move(input)), map_(std::move(map)) {
  const int inChannels = input_.GetChannels();
  if (map_.empty() || map_.size() > static_cast<size_t>(kMaxChannels)) {
    map_.assign(1, {});
    SetErrorCode(kLSourceBadInput);
  }
  if (input_.IsError()) SetErrorCode(kLSourceBadInput);
  // Terms naming channels that are not there are dropped, so Read never looks past a frame.
  for (auto& terms : map_) {
    std::erase_if(terms, [&](const Term& t) { return t.input < 0 || t.input >= inChannels; });
  }
  SetFormat(input_.GetSampleRate(), static_cast<std::uint8_t>(map_.size()));
  buffer_.resize(static_cast<size_t>(kBlockFrames * inChannels));
}

void LSRCChannelMap::Read(float* out, long long frames) {
  const int inChannels = input_.GetChannels();
  const int outChannels = GetChannels();
  while (frames > 0) {
    const long long n = std::min(frames, kBlockFrames);
    input_.Read(buffer_.data(), n);
    const float* in = buffer_.data();
    for (int o = 0; o < outChannels; ++o) {
      const auto& terms = map_[static_cast<size_t>(o)];
      float* dst = out + o;
      if (terms.empty()) {
        for (long long f = 0; f < n; ++f) dst[f * outChannels] = 0.0f;
        continue;
      }
      const Term& first = terms.front();
      const float* src = in + first.input;
      if (first.weight == 1.0f) {
        for (long long f = 0; f < n; ++f) dst[f * outChannels] = src[f * inChannels];
      } else {
        for (long long f = 0; f < n; ++f) dst[f * outChannels] = src[f * inChannels] * first.weight;
      }
      for (size_t t = 1; t < terms.size(); ++t) {
        const float* more = in + terms[t].input;
        const float w = terms[t].weight;
        for (long long f = 0; f < n; ++f) dst[f * outChannels] += more[f * inChannels] * w;
      }
    }
    out += n * outChannels;
    frames -= n;
  }
}

LSoundSource LSRCChannelMap::Make(LSoundSource input, Map map) {
  return LMakeSource<LSRCChannelMap>(std::move(input), std::move(map));
}

LSoundSource LSRCChannelMap::Pick(LSoundSource input, int k) {
  const int last = std::max(0, input.GetChannels() - 1);
  Map map(1);
  map[0].push_back({std::clamp(k, 0, last), 1.0f});
  return Make(std::move(input), std::move(map));
}

LSoundSource LSRCChannelMap::Convert(LSoundSource input, int channels) {
  const int inChannels = input.GetChannels();
  channels = std::clamp(channels, 1, kMaxChannels);
  if (channels == inChannels) return input;
  Map map(static_cast<size_t>(channels));
  if (inChannels == 1) {
    for (auto& terms : map) terms.push_back({0, 1.0f});
  } else if (channels == 1) {
    const float w = 1.0f / static_cast<float>(inChannels);
    for (int i = 0; i < inChannels; ++i) map[0].push_back({i, w});
  } else {
    for (int o = 0; o < std::min(channels, inChannels); ++o) map[static_cast<size_t>(o)].push_back({o, 1.0f});
  }
  return Make(std::move(input), std::move(map));
}
