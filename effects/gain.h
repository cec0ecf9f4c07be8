#pragma once
// LSPGain (type 1, "Verstärkung"): a constant gain in decibels ("Pegel", -60 ... +30
// dB), and LSRCGain, its processing source. The output is not clamped.
//
// Saved layout after the base container: 0x2001 blob of 8 bytes, the gain as an
// IEEE double (SDF has no double chunk). The older flat layout is that one chunk.
#include "effects/sound_process.h"
#include "effects/sound_process_base.h"

// Chunk id of the gain. On disk: never change.
inline constexpr unsigned short kLSPGainChunkDb = 0x2001;

// Bounds of the gain parameter in dB; sources clamp to them.
inline constexpr double kLSPGainMinDb = -60.0;
inline constexpr double kLSPGainMaxDb = 30.0;

class LSPGain final : public LSoundProcess {
public:
  LSPGain() = default;
  explicit LSPGain(double gainDb) : gainDb_(gainDb) {}
  LSPGain(const LSPGain&) = default;

  double GetGainDb() const { return gainDb_; }
  void SetGainDb(double gainDb) { gainDb_ = gainDb; }

  [[nodiscard]] LSoundSource OpenSource(LSoundSource& input) override;
  char* GetName(char* buffer) const override;
  int GetSoundProcessType() const override;
  [[nodiscard]] LSoundProcess* GetNewCopy() const override { return new LSPGain(*this); }
  // A gain that is not a number (damaged data) is not applied by a chain.
  bool IsValid() const override;

  int GetNumParameters() const override;
  // 0: a double in dB.
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

private:
  double gainDb_ = 0.0;
};

// Multiplies every sample by one factor.
class LSRCGain final : public LSoundProcessBase {
public:
  LSRCGain(const LSoundSource& input, double gainDb);

  void Read(float* buffer, long long frames) override;
  float GetFactor() const { return factor_; }

private:
  float factor_;
};
