#include "effects/echo.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "effects/sound_process_table.h"
#include "effects/sound_process_type.h"

namespace {

struct EchoPreset {
  const char* name;
  int gain;
  long long time;
};

constexpr EchoPreset kPresets[] = {
    {"Wohnzimmer", 10, 50},
    {"Höhle", 40, 400},
    {"Grand Canyon", 75, 750},
};
constexpr int kPresetCount = static_cast<int>(sizeof kPresets / sizeof kPresets[0]);

constexpr int kDefaultGain = 50;
constexpr long long kDefaultTime = 1000;
constexpr int kParamGain = 0;
constexpr int kParamTime = 1;
constexpr int kParamCount = 2;
constexpr long long kMsPerSecond = 1000;

}  // namespace

LSoundSource LSPEcho::OpenSource(LSoundSource& input) { return LMakeSource<LSRCEcho>(input, gain_, time_); }

char* LSPEcho::GetName(char* buffer) const {
  LSoundProcessCopyName(buffer, LSoundProcessTypeName(kLSPTypeEcho));
  return buffer;
}

int LSPEcho::GetSoundProcessType() const { return kLSPTypeEcho; }

int LSPEcho::GetNumParameters() const { return kParamCount; }

void LSPEcho::SetParameterByIndex(int index, void* value) {
  if (!value) return;
  if (index == kParamGain) {
    gain_ = LSoundProcessParameter::Get<int>(value);
  } else if (index == kParamTime) {
    // 32 bits in, although the descriptor says 64: what callers pass.
    time_ = LSoundProcessParameter::Get<int>(value);
  }
}

void LSPEcho::GetParameterByIndex(int index, LSoundProcessParameter* out) const {
  if (!out) return;
  if (index == kParamGain) {
    out->Init<int>(kLSPParamInt, kLSPEchoGainMin, kLSPEchoGainMax, "Zunahme", "%");
    out->SetValue<int>(gain_);
  } else if (index == kParamTime) {
    out->InitSized(kLSPParamInt64, sizeof(long long), "Zeit", "ms");
    std::memcpy(out->pMin, &kLSPEchoTimeMin, sizeof(long long));
    std::memcpy(out->pMax, &kLSPEchoTimeMax, sizeof(long long));
    out->SetValue<long long>(time_);
  }
}

void LSPEcho::SaveToSDF(LSDFWriter& writer) const {
  SaveBaseToSDF(writer);
  writer.WriteInt(kLSPEchoChunkGain, gain_);
  // Twice on purpose: 32 bits for older readers, then the whole value.
  writer.WriteInt(kLSPEchoChunkTime, static_cast<int>(time_));
  writer.WriteInt64(kLSPEchoChunkTime64, time_);
}

void LSPEcho::LoadFromSDF(LSDFReader& reader, LSDFReaderChunkIterator& iterator) {
  LoadSettingsFromSDF(reader, iterator, [this](LSDFReaderChunkIterator& it) {
    switch (it.Id()) {
      case kLSPEchoChunkGain: {
        int gain = 0;
        if (it.Chunk().ReadInt(gain)) gain_ = gain;
        break;
      }
      case kLSPEchoChunkTime: {
        int time = 0;
        time_ = it.Chunk().ReadInt(time) ? time : 0;  // a short time opens as the minimum
        break;
      }
      case kLSPEchoChunkTime64:
        // Whatever part arrived replaces the low bytes.
        (void)it.Chunk().ReadInt64(time_);
        break;
      default:
        break;
    }
  });
}

void LSPEcho::LoadFromSDF(LSDFReaderChunkIterator& iterator) {
  if (iterator.StartNextChunk()) {
    int gain = 0;
    if (iterator.Chunk().ReadInt(gain)) gain_ = gain;
  }
  if (iterator.StartNextChunk()) {
    int time = 0;
    if (iterator.Chunk().ReadInt(time)) time_ = time;
  }
}

int LSPEcho::GetNumPresets() const { return kPresetCount; }

void LSPEcho::GetPresetsName(int index, char* out) const {
  if (index >= 0 && index < kPresetCount) LSoundProcessCopyName(out, kPresets[index].name);
}

void LSPEcho::SetPreset(int index) {
  if (index < 0 || index >= kPresetCount) return;
  gain_ = kPresets[index].gain;
  time_ = kPresets[index].time;
}

int LSPEcho::GetIndexInPreset() const {
  for (int i = 0; i < kPresetCount; ++i)
    if (kPresets[i].gain == gain_ && kPresets[i].time == time_) return i;
  return -1;
}

void LSPEcho::ResetToDefault() {
  gain_ = kDefaultGain;
  time_ = kDefaultTime;
}

LSRCEcho::LSRCEcho(const LSoundSource& input, int gainPercent, long long timeMs)
    : LSoundProcessBase(input),
      // A gain of 100 % or more from a file would make the line grow without end.
      feedback_(static_cast<float>(std::clamp(gainPercent, kLSPEchoGainMin, kLSPEchoGainMax)) / 100.0f),
      timeMs_(std::clamp(timeMs, kLSPEchoTimeMin, kLSPEchoTimeMax)) {
  long long rate = GetSampleRate();
  long long frames = (timeMs_ / kMsPerSecond) * rate + (timeMs_ % kMsPerSecond) * rate / kMsPerSecond;
  length_ = std::max(static_cast<long long>(GetChannels()) * frames, kLSRCEchoMinLine);
  line_.reset(new (std::nothrow) float[static_cast<std::size_t>(length_)]());
  if (!line_) {
    // Too long to hold: the shortest line still gives an echo.
    length_ = kLSRCEchoMinLine;
    line_.reset(new float[static_cast<std::size_t>(length_)]());
  }
}

void LSRCEcho::Read(float* buffer, long long frames) {
  ReadInput(buffer, frames);
  const long long samples = frames * GetChannels();
  const float g = feedback_;
  long long index = index_;
  // In runs up to the line's wrap, each sample meets only its own place in the
  // line, so a run has no dependency and the compiler vectorises it.
  for (long long i = 0; i < samples;) {
    const long long run = std::min(samples - i, length_ - index);
    float* __restrict out = buffer + i;
    float* __restrict line = line_.get() + index;
    for (long long k = 0; k < run; ++k) {
      const float y = line[k] * g + out[k];
      out[k] = y;
      line[k] = y;
    }
    i += run;
    index += run;
    if (index == length_) index = 0;
  }
  index_ = index;
}

void LSRCEcho::Seek(long long frame) {
  std::memset(line_.get(), 0, static_cast<std::size_t>(length_) * sizeof(float));
  Input().Seek(frame);
}
