#include "effects/gain.h"

#include <algorithm>
#include <cmath>

#include "effects/sound_process_table.h"
#include "effects/sound_process_type.h"

namespace {

struct GainPreset {
  const char* name;
  double gainDb;
};

constexpr GainPreset kPresets[] = {
    {"Viel leiser", -12.0},
    {"Halbe Lautstärke", -6.0},
    {"Doppelte Lautstärke", 6.0},
    {"Viel lauter", 12.0},
};
constexpr int kPresetCount = static_cast<int>(sizeof kPresets / sizeof kPresets[0]);

constexpr double kDefaultGainDb = 0.0;
constexpr int kParamGain = 0;
constexpr int kParamCount = 1;

bool ReadGain(LSDFReaderChunk chunk, double& gainDb) {
  double value = 0.0;
  if (chunk.ReadData(&value, sizeof value) != sizeof value) return false;
  gainDb = value;
  return true;
}

}  // namespace

LSoundSource LSPGain::OpenSource(LSoundSource& input) { return LMakeSource<LSRCGain>(input, gainDb_); }

char* LSPGain::GetName(char* buffer) const {
  LSoundProcessCopyName(buffer, LSoundProcessTypeName(kLSPTypeGain));
  return buffer;
}

int LSPGain::GetSoundProcessType() const { return kLSPTypeGain; }

bool LSPGain::IsValid() const { return std::isfinite(gainDb_); }

int LSPGain::GetNumParameters() const { return kParamCount; }

void LSPGain::SetParameterByIndex(int index, void* value) {
  if (index == kParamGain && value) gainDb_ = LSoundProcessParameter::Get<double>(value);
}

void LSPGain::GetParameterByIndex(int index, LSoundProcessParameter* out) const {
  if (index != kParamGain || !out) return;
  out->Init<double>(kLSPParamDouble, kLSPGainMinDb, kLSPGainMaxDb, "Pegel", "dB");
  out->SetValue<double>(gainDb_);
}

void LSPGain::SaveToSDF(LSDFWriter& writer) const {
  SaveBaseToSDF(writer);
  writer.WriteBlob(kLSPGainChunkDb, reinterpret_cast<const unsigned char*>(&gainDb_), sizeof gainDb_);
}

void LSPGain::LoadFromSDF(LSDFReader& reader, LSDFReaderChunkIterator& iterator) {
  LoadSettingsFromSDF(reader, iterator, [this](LSDFReaderChunkIterator& it) {
    if (it.Id() == kLSPGainChunkDb) (void)ReadGain(it.Chunk(), gainDb_);
  });
}

void LSPGain::LoadFromSDF(LSDFReaderChunkIterator& iterator) {
  if (iterator.StartNextChunk()) (void)ReadGain(iterator.Chunk(), gainDb_);
}

int LSPGain::GetNumPresets() const { return kPresetCount; }

void LSPGain::GetPresetsName(int index, char* out) const {
  if (index >= 0 && index < kPresetCount) LSoundProcessCopyName(out, kPresets[index].name);
}

void LSPGain::SetPreset(int index) {
  if (index >= 0 && index < kPresetCount) gainDb_ = kPresets[index].gainDb;
}

int LSPGain::GetIndexInPreset() const {
  for (int i = 0; i < kPresetCount; ++i)
    if (kPresets[i].gainDb == gainDb_) return i;
  return -1;
}

void LSPGain::ResetToDefault() { gainDb_ = kDefaultGainDb; }

LSRCGain::LSRCGain(const LSoundSource& input, double gainDb) : LSoundProcessBase(input) {
  // Not a number leaves the sound as it is.
  double db = std::isfinite(gainDb) ? std::clamp(gainDb, kLSPGainMinDb, kLSPGainMaxDb) : 0.0;
  factor_ = static_cast<float>(std::pow(10.0, db / 20.0));
}

void LSRCGain::Read(float* buffer, long long frames) {
  ReadInput(buffer, frames);
  const float factor = factor_;
  const long long samples = frames * GetChannels();
  for (long long i = 0; i < samples; ++i) buffer[i] *= factor;
}
