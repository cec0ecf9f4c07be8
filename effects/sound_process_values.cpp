#include "effects/sound_process_values.h"

#include <algorithm>
#include <cmath>

#include "effects/sound_process_table.h"

namespace {

bool ReadDouble(LSDFReaderChunk chunk, double& value) {
  double v = 0.0;
  if (chunk.ReadData(&v, sizeof v) != sizeof v) return false;
  value = v;
  return true;
}

}  // namespace

LSoundProcessValues::LSoundProcessValues(const LSPValueTable& table) : table_(&table) { ResetToDefault(); }

char* LSoundProcessValues::GetName(char* buffer) const {
  LSoundProcessCopyName(buffer, LSoundProcessTypeName(table_->type));
  return buffer;
}

bool LSoundProcessValues::IsValid() const {
  for (int i = 0; i < Count(); ++i)
    if (!std::isfinite(values_[i])) return false;
  return true;
}

int LSoundProcessValues::GetNumParameters() const { return Count(); }

void LSoundProcessValues::SetParameterByIndex(int index, void* value) {
  if (index < 0 || index >= Count() || !value) return;
  values_[index] = table_->specs[index].whole ? LSoundProcessParameter::Get<int>(value)
                                              : LSoundProcessParameter::Get<double>(value);
}

void LSoundProcessValues::GetParameterByIndex(int index, LSoundProcessParameter* out) const {
  if (index < 0 || index >= Count() || !out) return;
  const LSPValueSpec& shape = table_->specs[index];
  if (shape.whole) {
    out->Init<int>(kLSPParamInt, static_cast<int>(shape.min), static_cast<int>(shape.max), shape.label, shape.unit);
    out->SetValue<int>(static_cast<int>(std::lround(OpenValue(index))));
  } else {
    out->Init<double>(kLSPParamDouble, shape.min, shape.max, shape.label, shape.unit);
    out->SetValue<double>(values_[index]);
  }
}

void LSoundProcessValues::SaveToSDF(LSDFWriter& writer) const {
  SaveBaseToSDF(writer);
  for (int i = 0; i < Count(); ++i)
    writer.WriteBlob(static_cast<unsigned short>(kLSPChunkFirstSetting + i),
                     reinterpret_cast<const unsigned char*>(&values_[i]), sizeof(double));
}

void LSoundProcessValues::LoadFromSDF(LSDFReader& reader, LSDFReaderChunkIterator& iterator) {
  LoadSettingsFromSDF(reader, iterator, [this](LSDFReaderChunkIterator& it) {
    const int index = it.Id() - kLSPChunkFirstSetting;
    if (index >= 0 && index < Count()) (void)ReadDouble(it.Chunk(), values_[index]);
  });
}

void LSoundProcessValues::LoadFromSDF(LSDFReaderChunkIterator& iterator) {
  for (int i = 0; i < Count() && iterator.StartNextChunk(); ++i) (void)ReadDouble(iterator.Chunk(), values_[i]);
}

int LSoundProcessValues::GetNumPresets() const { return static_cast<int>(table_->presets.size()); }

void LSoundProcessValues::GetPresetsName(int index, char* out) const {
  if (index >= 0 && index < GetNumPresets()) LSoundProcessCopyName(out, table_->presets[index].name);
}

void LSoundProcessValues::SetPreset(int index) {
  if (index < 0 || index >= GetNumPresets()) return;
  for (int i = 0; i < Count(); ++i) values_[i] = table_->presets[index].values[i];
}

int LSoundProcessValues::GetIndexInPreset() const {
  for (int p = 0; p < GetNumPresets(); ++p) {
    bool same = true;
    for (int i = 0; i < Count() && same; ++i) same = table_->presets[p].values[i] == values_[i];
    if (same) return p;
  }
  return -1;
}

void LSoundProcessValues::ResetToDefault() {
  for (int i = 0; i < Count(); ++i) values_[i] = table_->specs[i].byDefault;
}

double LSoundProcessValues::Value(int index) const { return index >= 0 && index < Count() ? values_[index] : 0.0; }

void LSoundProcessValues::SetValue(int index, double value) {
  if (index >= 0 && index < Count()) values_[index] = value;
}

double LSoundProcessValues::PresetValue(int preset, int index) const {
  if (preset < 0 || preset >= GetNumPresets() || index < 0 || index >= Count()) return 0.0;
  return table_->presets[preset].values[index];
}

double LSoundProcessValues::OpenValue(int index) const {
  if (index < 0 || index >= Count()) return 0.0;
  const LSPValueSpec& shape = table_->specs[index];
  double v = std::isfinite(values_[index]) ? std::clamp(values_[index], shape.min, shape.max) : shape.byDefault;
  return shape.whole ? std::round(v) : v;
}
