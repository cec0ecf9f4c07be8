// Effect-chain files (".ecf") on any bytes. A chain that loads is played over a
// short stereo signal, every effect is copied and asked for its parameters and
// presets, and the chain is saved; loading and saving that file again must give
// the same bytes.
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "base/memory_stream.h"
#include "effects/effect_chain_file.h"
#include "effects/sound_process_parameter.h"
#include "fuzz_check.h"

namespace {

constexpr int kChannels = 2;
constexpr std::uint32_t kRate = 8000;
constexpr long long kFrames = 300;
// More than any effect has; indexes past the count must be ignored.
constexpr int kMostParameters = 8;
constexpr int kMostPresets = 8;

class RampSource final : public LSoundSourceBase {
public:
  RampSource() : LSoundSourceBase(kRate, kChannels) {}
  void Read(float* buffer, long long frames) override {
    for (long long i = 0; i < frames; ++i, ++position_) {
      const bool inside = position_ >= 0 && position_ < kFrames;
      for (int c = 0; c < kChannels; ++c) buffer[i * kChannels + c] = inside ? 0.001f * static_cast<float>(position_) : 0.0f;
    }
  }
  long long GetPositionSample() const override { return position_; }
  long long GetEndSample() const override { return kFrames; }
  void Seek(long long frame) override { position_ = frame; }

private:
  long long position_ = 0;
};

void Play(const LSoundProcessMulti& chain) {
  LSoundSource input = LMakeSource<RampSource>();
  LSoundSource output = chain.OpenSource(input);
  FuzzCheck(output.GetChannels() == kChannels, "a chain keeps the channels");
  std::vector<float> block(static_cast<std::size_t>(97 * kChannels));
  for (long long at = -50; at < kFrames + 50; at += 97) output.Read(block.data(), 97);
  output.Seek(17);
  output.Read(block.data(), 97);
}

void AskEveryEffect(const LSoundProcessMulti& chain) {
  for (LSoundProcess* effect = chain.GetFirst(); effect; effect = effect->pNext) {
    char name[kLPathMax];
    effect->GetName(name);
    std::unique_ptr<LSoundProcess> copy(effect->GetNewCopy());
    if (!copy) continue;
    for (int i = -1; i < kMostParameters; ++i) {
      LSoundProcessParameter parameter;
      copy->GetParameterByIndex(i, &parameter);
      if (parameter.bOwned && parameter.pValue) copy->SetParameterByIndex(i, parameter.pValue);
    }
    for (int i = -1; i < kMostPresets; ++i) {
      copy->GetPresetsName(i, name);
      copy->SetPreset(i);
      (void)copy->GetIndexInPreset();
    }
    copy->ResetToDefault();
  }
}

std::vector<unsigned char> Save(const LSoundProcessMulti& chain) {
  LMemoryStream stream;
  FuzzCheck(LEffectChainSave(chain, stream), "a chain saves to memory");
  return stream.Bytes();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  LMemoryStream stream(data, size);
  LSoundProcessMulti chain;
  if (LEffectChainLoad(chain, stream) != LEffectChainLoadResult::kOK) {
    FuzzCheck(chain.GetCount() == 0, "a refused file loads nothing");
    return 0;
  }
  Play(chain);
  AskEveryEffect(chain);
  const std::vector<unsigned char> first = Save(chain);
  LMemoryStream again(first);
  LSoundProcessMulti reloaded;
  FuzzCheck(LEffectChainLoad(reloaded, again) == LEffectChainLoadResult::kOK, "a saved chain loads");
  FuzzCheck(reloaded.GetCount() == chain.GetCount(), "a saved chain loads every effect");
  FuzzCheck(Save(reloaded) == first, "saving a loaded chain again gives the same file");
  return 0;
}
