#include "effects/sound_process_table.h"
#include "effects/am_radio.h"
#include "effects/chorus.h"
#include "effects/click_pop.h"
#include "effects/compressor.h"
#include "effects/deesser.h"
#include "effects/distortion.h"
#include "effects/doppler.h"
#include "effects/drc_point_line.h"
#include "effects/echo.h"
#include "effects/eq.h"
#include "effects/eq_point_line.h"
#include "effects/eq_simple_3band.h"
#include "effects/flanger.h"
#include "effects/gain.h"
#include "effects/graphic_eq.h"
#include "effects/multiband_gate.h"
#include "effects/noise_gate.h"
#include "effects/parametric_eq.h"
#include "effects/pass_filter.h"
#include "effects/phaser.h"
#include "effects/pitch_speed.h"
#include "effects/reverb.h"
#include "effects/sound_process_type.h"
#include "effects/telephone.h"
#include "effects/tremolo.h"
#include "effects/vibrato.h"
#include "effects/voice_pitch.h"
#include "effects/wahwah.h"

namespace {

template <class T>
std::unique_ptr<LSoundProcess> Make() {
  return std::make_unique<T>();
}

// The ids left out (18, 25, 26) were never assigned; like every id above 33 they load as LSPUnknown.
constexpr LSoundProcessTypeRow kRows[] = {
    {kLSPTypeGain, "gain", "Verstärkung", Make<LSPGain>},
    {kLSPTypeDRCSimple, "kompressor", "Kompressor", Make<LSPDRCSimple>},
    {kLSPTypeEcho, "echo", "Echo", Make<LSPEcho>},
    {kLSPTypeChorus, "chor", "Chor", Make<LSPChorus>},
    {kLSPTypeDistortion, "verzerrung", "Verzerrung", Make<LSPDistortion>},
    {kLSPTypeHighPass, "hochpass", "Hochpass", Make<LSPHighPass>},
    {kLSPTypeFlanger, "flanger", "Flanger", Make<LSPFlanger>},
    {kLSPTypeReverb3, "hall", "Hall", Make<LSPReverb3>},
    // Flat until points are given ("equalizer 100=-6 1000=3").
    {kLSPTypePointListEq, "equalizer", "Equalizer", Make<LSPEq>},
    {kLSPTypeParametricEqBand, "parametrischereq", "Parametrischer EQ", Make<LSPParametricEqBand>},
    {kLSPTypeGraphicEqBand, "grafischereq", "Grafischer EQ", Make<LSPGraphicEqBand>},
    {kLSPTypeEqPointLine, "visuellereq", "Visueller EQ", Make<LSPEqPointLine>},
    {kLSPTypePitchSpeed, "tempotonhoehe", "Pitch Shifter", Make<LSPPitchSpeed>},
    {kLSPTypePitch, "pitch", "Pitch Shifter", Make<LSPPitch>},
    {kLSPTypeLowPass, "tiefpass", "Tiefpass", Make<LSPLowPass>},
    {kLSPTypeEqSimple, nullptr, "Unbenannter Effekt", nullptr},
    {kLSPTypeEqSimple3Band, "eq3", "3-Band-Equalizer", Make<LSPEqSimple3Band>},
    {kLSPTypeTremolo, "tremolo", "Tremolo", Make<LSPTremolo>},
    {kLSPTypeVibrato, "vibrato", "Vibrato", Make<LSPVibrato>},
    {kLSPTypeDoppler, "doppler", "Doppler", Make<LSPDoppler>},
    {kLSPTypeWahwah, "wahwah", "Wah-Wah", Make<LSPWahwah>},
    {kLSPTypeDRCPointLine, "grafikkompressor", "Grafikkompressor", Make<LSPDRCPointLine>},
    {kLSPTypeVoicePitch, "stimmenverzerrer", "Pitch Shifter für Stimme", Make<LSPVoicePitch>},
    {kLSPTypePhaser, "phaser", "Phaser", Make<LSPPhaser>},
    {kLSPTypeAMRadio, "amradio", "AM Radio", Make<LSPAMRadio>},
    {kLSPTypeTelephone, "telefon", "Telefon", Make<LSPTelephone>},
    {kLSPTypeNoiseGate, "noisegate", "Noise-Gate", Make<LSPNoiseGate>},
    {kLSPTypeMultiBandNoiseGating, "multibandgate", "Multiband Noise Gating", Make<LSPMultiBandNoiseGating>},
    {kLSPTypeClickPopRemoval, "clickpop", "Click/Pop-Entfernung", Make<LSPClickPopRemoval>},
    {kLSPTypeDeesser2, "deesser", "De-esser", Make<LSPDeesser2>},
    // There are no Audio Units to host here.
    {kLSPTypeAudioUnitPlugin, nullptr, "Audio-Unit-Plug-in", nullptr},
};

}  // namespace

std::span<const LSoundProcessTypeRow> LSoundProcessTypeRows() { return kRows; }

const LSoundProcessTypeRow* LSoundProcessTypeRowOf(int type) {
  for (const LSoundProcessTypeRow& row : kRows) {
    if (row.type == type) return &row;
  }
  return nullptr;
}

const char* LSoundProcessTypeName(int type) {
  const LSoundProcessTypeRow* row = LSoundProcessTypeRowOf(type);
  return row ? row->name : nullptr;
}
