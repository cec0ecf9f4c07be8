// Effects on stereo 44.1 kHz noise, read in the pump's blocks; x_realtime is
// seconds of audio per second of wall time.
#include <memory>

#include <benchmark/benchmark.h>

#include "bench/bench_support.h"
#include "effects/am_radio.h"
#include "effects/cb_radio_chain.h"
#include "effects/chorus.h"
#include "effects/click_pop.h"
#include "effects/deesser.h"
#include "effects/distortion.h"
#include "effects/doppler.h"
#include "effects/drc_point_line.h"
#include "effects/echo.h"
#include "effects/eq.h"
#include "effects/eq_point_line.h"
#include "effects/flanger.h"
#include "effects/gain.h"
#include "effects/graphic_eq.h"
#include "effects/multiband_gate.h"
#include "effects/noise_reduce.h"
#include "effects/phaser.h"
#include "effects/pitch_speed.h"
#include "effects/point_list.h"
#include "effects/reduce_vocals.h"
#include "effects/reverb.h"
#include "effects/telephone.h"
#include "effects/tremolo.h"
#include "effects/vibrato.h"
#include "effects/voice_pitch.h"
#include "effects/wahwah.h"
#include "engine/source_to_sink.h"

namespace {

// Longer than any run reads, so the input never runs dry.
constexpr long long kEndlessFrames = 24LL * 3600 * kBenchRate;

// A band selection as the equaliser gets it: 1 to 2 kHz kept, the rest taken down to the floor.
LSPEq BandPass() {
  LPointList points;
  for (const LPoint& p : {LPoint{10, -60}, LPoint{999, -60}, LPoint{1000, 0}, LPoint{2000, 0}, LPoint{2001, -60},
                          LPoint{20000, -60}})
    points.Add(p.frequency, p.gainDb);
  LSPEq eq;
  points.MapPointListToEq(eq, kBenchRate);
  return eq;
}

// Reads one second of the effect per iteration. The equaliser works in blocks
// of about three seconds, so a run lasts long enough to average over many.
void ReadRealTime(benchmark::State& state, LSoundProcess& effect) {
  LSoundSource input = LMakeSource<BenchNoiseSource>(kEndlessFrames, kBenchChannels);
  LSoundSource output = effect.OpenSource(input);
  LArray<float> buffer(static_cast<std::size_t>(kLPumpBlockFrames * kBenchChannels));
  for (auto _ : state) {
    for (long long at = 0; at < kBenchRate; at += kLPumpBlockFrames)
      output.Read(buffer.data(), std::min<long long>(kLPumpBlockFrames, kBenchRate - at));
    benchmark::DoNotOptimize(buffer.data());
  }
  state.counters["x_realtime"] =
      benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}

void BM_EqBand(benchmark::State& state) {
  LSPEq eq = BandPass();
  ReadRealTime(state, eq);
}
BENCHMARK(BM_EqBand)->UseRealTime()->MinTime(3.0)->Unit(benchmark::kMillisecond);

// What opening the equaliser costs before the first frame: the filter's design and the FFT plans.
void BM_EqOpen(benchmark::State& state) {
  LSPEq eq = BandPass();
  LSoundSource input = LMakeSource<BenchNoiseSource>(kEndlessFrames, kBenchChannels);
  for (auto _ : state) {
    LSoundSource output = eq.OpenSource(input);
    benchmark::DoNotOptimize(output.Get());
  }
}
BENCHMARK(BM_EqOpen)->UseRealTime()->Unit(benchmark::kMillisecond);

void BM_Echo(benchmark::State& state) {
  LSPEcho echo;
  echo.SetGain(30);
  echo.SetTime(1000);
  ReadRealTime(state, echo);
}
BENCHMARK(BM_Echo)->UseRealTime()->Unit(benchmark::kMillisecond);

void BM_Gain(benchmark::State& state) {
  LSPGain gain(-6.0);
  ReadRealTime(state, gain);
}
BENCHMARK(BM_Gain)->UseRealTime()->Unit(benchmark::kMillisecond);

// The family of dynamics and equalisers, each over ten minutes (600 one-second reads).
void BM_GraphicCompressor(benchmark::State& state) {
  LSPDRCPointLine drc;
  drc.SetPreset(1);
  ReadRealTime(state, drc);
}
BENCHMARK(BM_GraphicCompressor)->UseRealTime()->Iterations(600)->Unit(benchmark::kMillisecond);

// Every one of 31 bands away from flat: the most bells the graphic EQ runs.
void BM_GraphicEq31(benchmark::State& state) {
  LSPGraphicEqBand eq;
  eq.SetValue(kLSPGraphicBands, 31);
  for (int i = 0; i < kLSPGraphicMaxBands; ++i) eq.SetValue(kLSPGraphicFirstGain + i, i % 2 ? 3.0 : -3.0);
  ReadRealTime(state, eq);
}
BENCHMARK(BM_GraphicEq31)->UseRealTime()->Iterations(600)->Unit(benchmark::kMillisecond);

void BM_Deesser(benchmark::State& state) {
  LSPDeesser2 deesser;
  deesser.SetValue(kLSPDeesserThreshold, -40.0);
  ReadRealTime(state, deesser);
}
BENCHMARK(BM_Deesser)->UseRealTime()->Iterations(600)->Unit(benchmark::kMillisecond);

void BM_VisualEq(benchmark::State& state) {
  LSPEqPointLine eq;
  eq.SetPreset(1);
  ReadRealTime(state, eq);
}
BENCHMARK(BM_VisualEq)->UseRealTime()->Iterations(600)->Unit(benchmark::kMillisecond);

void BM_MultiBandGate(benchmark::State& state) {
  LSPMultiBandNoiseGating gate;
  gate.SetPreset(1);
  ReadRealTime(state, gate);
}
BENCHMARK(BM_MultiBandGate)->UseRealTime()->Iterations(600)->Unit(benchmark::kMillisecond);

// Delay, modulation and character, each over ten minutes.
void BM_Doppler(benchmark::State& state) {
  LSPDoppler doppler;
  doppler.SetPreset(1);
  ReadRealTime(state, doppler);
}
BENCHMARK(BM_Doppler)->UseRealTime()->Iterations(600)->Unit(benchmark::kMillisecond);

void BM_Wahwah(benchmark::State& state) {
  LSPWahwah wah;
  ReadRealTime(state, wah);
}
BENCHMARK(BM_Wahwah)->UseRealTime()->Iterations(600)->Unit(benchmark::kMillisecond);

// Twelve stages: the most the phaser runs.
void BM_Phaser12(benchmark::State& state) {
  LSPPhaser phaser;
  phaser.SetValue(kLSPPhaserStages, 12);
  ReadRealTime(state, phaser);
}
BENCHMARK(BM_Phaser12)->UseRealTime()->Iterations(600)->Unit(benchmark::kMillisecond);

void BM_AMRadio(benchmark::State& state) {
  LSPAMRadio radio;
  ReadRealTime(state, radio);
}
BENCHMARK(BM_AMRadio)->UseRealTime()->Iterations(600)->Unit(benchmark::kMillisecond);

void BM_Telephone(benchmark::State& state) {
  LSPTelephone phone;
  ReadRealTime(state, phone);
}
BENCHMARK(BM_Telephone)->UseRealTime()->Iterations(600)->Unit(benchmark::kMillisecond);

void BM_VoiceChange(benchmark::State& state) {
  LSPVoicePitch voice;
  voice.SetPreset(1);
  ReadRealTime(state, voice);
}
BENCHMARK(BM_VoiceChange)->UseRealTime()->Iterations(600)->Unit(benchmark::kMillisecond);

// Reads one second of an opened source per iteration, for what is not one effect of the table.
void ReadOpenedRealTime(benchmark::State& state, LSoundSource output) {
  LArray<float> buffer(static_cast<std::size_t>(kLPumpBlockFrames * kBenchChannels));
  for (auto _ : state) {
    for (long long at = 0; at < kBenchRate; at += kLPumpBlockFrames)
      output.Read(buffer.data(), std::min<long long>(kLPumpBlockFrames, kBenchRate - at));
    benchmark::DoNotOptimize(buffer.data());
  }
  state.counters["x_realtime"] =
      benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}

void BM_ReduceVocals(benchmark::State& state) {
  LSoundSource input = LMakeSource<BenchNoiseSource>(kEndlessFrames, kBenchChannels);
  ReadOpenedRealTime(state, LMakeSource<LSRCReduceVocals>(input));
}
BENCHMARK(BM_ReduceVocals)->UseRealTime()->Iterations(600)->Unit(benchmark::kMillisecond);

void BM_CBRadioChain(benchmark::State& state) {
  LSoundProcessMulti chain = LCBRadioChain();
  LSoundSource input = LMakeSource<BenchNoiseSource>(kEndlessFrames, kBenchChannels);
  ReadOpenedRealTime(state, chain.OpenSource(input));
}
BENCHMARK(BM_CBRadioChain)->UseRealTime()->Iterations(600)->Unit(benchmark::kMillisecond);

// Target 50x: every block is searched for clicks although the noise has none.
void BM_ClickPopRemoval(benchmark::State& state) {
  LSPClickPopRemoval clicks;
  ReadRealTime(state, clicks);
}
BENCHMARK(BM_ClickPopRemoval)->UseRealTime()->Iterations(600)->Unit(benchmark::kMillisecond);

// Target 20x, with a profile of a second of the same noise.
void BM_NoiseReduce(benchmark::State& state) {
  LSoundSource noise = LMakeSource<BenchNoiseSource>(kBenchRate, kBenchChannels);
  LNoiseProfile profile;
  if (!LNoiseProfileLearn(noise, profile)) state.SkipWithError("no noise profile");
  LSoundSource input = LMakeSource<BenchNoiseSource>(kEndlessFrames, kBenchChannels);
  ReadOpenedRealTime(state, LMakeSource<LSRCNoiseReduce>(input, profile));
}
BENCHMARK(BM_NoiseReduce)->UseRealTime()->Iterations(600)->Unit(benchmark::kMillisecond);

// Delay, modulation, reverb and character, each over ten minutes at a typical preset.
void BM_Chorus(benchmark::State& state) {
  LSPChorus chorus;
  chorus.SetPreset(2);  // four voices
  ReadRealTime(state, chorus);
}
BENCHMARK(BM_Chorus)->UseRealTime()->Iterations(600)->Unit(benchmark::kMillisecond);

void BM_Distortion(benchmark::State& state) {
  LSPDistortion distortion;
  distortion.SetPreset(1);
  ReadRealTime(state, distortion);
}
BENCHMARK(BM_Distortion)->UseRealTime()->Iterations(600)->Unit(benchmark::kMillisecond);

void BM_Flanger(benchmark::State& state) {
  LSPFlanger flanger;
  flanger.SetPreset(1);
  ReadRealTime(state, flanger);
}
BENCHMARK(BM_Flanger)->UseRealTime()->Iterations(600)->Unit(benchmark::kMillisecond);

void BM_Reverb(benchmark::State& state) {
  LSPReverb3 reverb;
  reverb.SetPreset(2);
  ReadRealTime(state, reverb);
}
BENCHMARK(BM_Reverb)->UseRealTime()->Iterations(600)->Unit(benchmark::kMillisecond);

void BM_Tremolo(benchmark::State& state) {
  LSPTremolo tremolo;
  tremolo.SetPreset(3);  // the two channels apart
  ReadRealTime(state, tremolo);
}
BENCHMARK(BM_Tremolo)->UseRealTime()->Iterations(600)->Unit(benchmark::kMillisecond);

void BM_Vibrato(benchmark::State& state) {
  LSPVibrato vibrato;
  vibrato.SetPreset(1);
  ReadRealTime(state, vibrato);
}
BENCHMARK(BM_Vibrato)->UseRealTime()->Iterations(600)->Unit(benchmark::kMillisecond);

// Tempo and pitch in rubberband's engine for rendering and in its faster one for
// preview; one second of output per iteration.
void BM_PitchShift(benchmark::State& state) {
  LSPPitch pitch;
  pitch.SetValue(kLSPPitchSemitones, 3);
  pitch.SetPreview(state.range(0) != 0);
  ReadRealTime(state, pitch);
}
BENCHMARK(BM_PitchShift)->Arg(0)->Arg(1)->UseRealTime()->MinTime(3.0)->Unit(benchmark::kMillisecond);

void BM_Tempo(benchmark::State& state) {
  LSPPitchSpeed tempo;
  tempo.SetValue(kLSPPitchSpeedTempo, 80);
  tempo.SetPreview(state.range(0) != 0);
  ReadRealTime(state, tempo);
}
BENCHMARK(BM_Tempo)->Arg(0)->Arg(1)->UseRealTime()->MinTime(3.0)->Unit(benchmark::kMillisecond);

// Speed by resampling alone.
void BM_Speed(benchmark::State& state) {
  LSPPitchSpeed speed;
  speed.SetValue(kLSPPitchSpeedSpeed, 125);
  ReadRealTime(state, speed);
}
BENCHMARK(BM_Speed)->UseRealTime()->MinTime(3.0)->Unit(benchmark::kMillisecond);

// The noise alone: what the numbers above include for their input.
void BM_NoiseInput(benchmark::State& state) {
  LSoundSource input = LMakeSource<BenchNoiseSource>(kEndlessFrames, kBenchChannels);
  LArray<float> buffer(static_cast<std::size_t>(kLPumpBlockFrames * kBenchChannels));
  for (auto _ : state) {
    for (long long at = 0; at < kBenchRate; at += kLPumpBlockFrames)
      input.Read(buffer.data(), std::min<long long>(kLPumpBlockFrames, kBenchRate - at));
    benchmark::DoNotOptimize(buffer.data());
  }
  state.counters["x_realtime"] =
      benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}
BENCHMARK(BM_NoiseInput)->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace
