#include "app/ef_process_effect.h"

#include "app/ef_advanced_compressor.h"
#include "app/ef_am_radio.h"
#include "app/ef_deesser.h"
#include "app/ef_equaliser.h"
#include "app/ef_high_pass_filter.h"
#include "app/ef_low_pass_filter.h"
#include "app/ef_noise_gate.h"
#include "app/ef_telephone.h"
#include "app/ef_voice_change.h"
#include "effects/sound_process_type.h"

LSoundSource SVEfProcessEffect::OpenSource(LSoundSource& input) {
  if (!effect_) return LSoundSource::Error(kLSourceClosed);
  return effect_->OpenSource(input);
}

std::unique_ptr<SVEfProcessEffect> SVEfForEffect(LCutListAudio& list, SVSelection& selection,
                                                 const LSoundProcess& effect) {
  const char* label = nullptr;
  switch (effect.GetSoundProcessType()) {
    case kLSPTypeDRCSimple:
    case kLSPTypeDRCPointLine:
      label = kSVAdvancedCompressorLabel;
      break;
    case kLSPTypeNoiseGate:
    case kLSPTypeMultiBandNoiseGating:
      label = kSVNoiseGateLabel;
      break;
    case kLSPTypeHighPass:
      label = kSVHighPassFilterLabel;
      break;
    case kLSPTypeLowPass:
      label = kSVLowPassFilterLabel;
      break;
    case kLSPTypePointListEq:
    case kLSPTypeParametricEqBand:
    case kLSPTypeGraphicEqBand:
    case kLSPTypeEqPointLine:
    case kLSPTypeEqSimple:
    case kLSPTypeEqSimple3Band:
      label = kSVEqualiserLabel;
      break;
    case kLSPTypeDeesser2:
      label = kSVDeesserLabel;
      break;
    case kLSPTypeAMRadio:
      label = kSVAmRadioLabel;
      break;
    case kLSPTypeTelephone:
      label = kSVTelephoneLabel;
      break;
    case kLSPTypeVoicePitch:
      label = kSVVoiceChangeLabel;
      break;
    default:
      break;
  }
  char name[kLPathMax] = {};
  if (!label) label = effect.GetName(name);
  return std::make_unique<SVEfProcessEffect>(list, selection, effect, label);
}
