#pragma once
// LSoundProcessValues: the settings side of an effect whose settings are a short
// row of numbers, each described once in a static table (German label, unit,
// bounds, default, whole or not) with its factory presets beside it. The filters,
// equalisers and dynamics share it; each keeps only its table and its source.
//
// Saved layout after the base container: for setting i a blob chunk 0x2001 + i of
// 8 bytes, the value as an IEEE double (SDF has no double chunk). A short or
// missing chunk keeps the setting. The older flat layout is the same doubles,
// one per consecutive chunk.
// Parameters of whole values are described as int (type 0) and set from an int;
// the others as double (type 3). A source is opened with every value clamped to
// its bounds, and a value that is not a number taken as its default.
#include <array>
#include <span>

#include "effects/sound_process.h"

// Most settings one such effect has.
inline constexpr int kLSPValuesMax = 32;

struct LSPValueSpec {
  const char* label;  // German
  const char* unit;
  double min;
  double max;
  double byDefault;
  bool whole;  // an int parameter
};

struct LSPValuePreset {
  const char* name;  // German
  std::array<double, kLSPValuesMax> values;
};

struct LSPValueTable {
  int type;
  std::span<const LSPValueSpec> specs;
  std::span<const LSPValuePreset> presets;
};

class LSoundProcessValues : public LSoundProcess {
public:
  char* GetName(char* buffer) const override;
  int GetSoundProcessType() const override { return table_->type; }
  bool IsValid() const override;

  int GetNumParameters() const override;
  // A double, or an int for whole values.
  void SetParameterByIndex(int index, void* value) override;
  void GetParameterByIndex(int index, LSoundProcessParameter* out) const override;

  void SaveToSDF(LSDFWriter& writer) const override;
  void LoadFromSDF(LSDFReader& reader, LSDFReaderChunkIterator& iterator) override;
  void LoadFromSDF(LSDFReaderChunkIterator& iterator) override;

  int GetNumPresets() const override;
  void GetPresetsName(int index, char* out) const override;
  void SetPreset(int index) override;
  int GetIndexInPreset() const override;
  void ResetToDefault() override;

  // The stored value, as set or loaded (0 for an index out of range).
  double Value(int index) const;
  void SetValue(int index, double value);
  // The value a source is opened with: within the bounds, whole where it must be.
  double OpenValue(int index) const;
  // Setting `index` of preset `preset` (0 outside either range).
  double PresetValue(int preset, int index) const;

protected:
  explicit LSoundProcessValues(const LSPValueTable& table);
  LSoundProcessValues(const LSoundProcessValues&) = default;

private:
  int Count() const { return static_cast<int>(table_->specs.size()); }

  const LSPValueTable* table_;
  std::array<double, kLSPValuesMax> values_{};
};
