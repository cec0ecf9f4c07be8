#pragma once
// Effect type ids: what GetSoundProcessType answers and what saved chains record
// before each effect. On disk: never change. Their names and makers are in
// sound_process_table.h.

inline constexpr int kLSPTypeNone = 0;  // the LSoundProcess base; ends a chain
inline constexpr int kLSPTypeGain = 1;
inline constexpr int kLSPTypeDRCSimple = 2;
inline constexpr int kLSPTypeEcho = 3;
inline constexpr int kLSPTypeChorus = 4;
inline constexpr int kLSPTypeDistortion = 5;
inline constexpr int kLSPTypeHighPass = 6;
inline constexpr int kLSPTypeFlanger = 7;
inline constexpr int kLSPTypeReverb3 = 8;
inline constexpr int kLSPTypePointListEq = 9;  // dropped from chain records on load, by design
inline constexpr int kLSPTypeParametricEqBand = 10;
inline constexpr int kLSPTypeGraphicEqBand = 11;
inline constexpr int kLSPTypeEqPointLine = 12;
inline constexpr int kLSPTypePitchSpeed = 13;
inline constexpr int kLSPTypePitch = 14;
inline constexpr int kLSPTypeLowPass = 15;
inline constexpr int kLSPTypeEqSimple = 16;
inline constexpr int kLSPTypeEqSimple3Band = 17;
inline constexpr int kLSPTypeTremolo = 19;
inline constexpr int kLSPTypeVibrato = 20;
inline constexpr int kLSPTypeDoppler = 21;
inline constexpr int kLSPTypeWahwah = 22;
inline constexpr int kLSPTypeDRCPointLine = 23;
inline constexpr int kLSPTypeVoicePitch = 24;
inline constexpr int kLSPTypePhaser = 27;
inline constexpr int kLSPTypeAMRadio = 28;
inline constexpr int kLSPTypeTelephone = 29;
inline constexpr int kLSPTypeNoiseGate = 30;
inline constexpr int kLSPTypeMultiBandNoiseGating = 31;
inline constexpr int kLSPTypeClickPopRemoval = 32;
inline constexpr int kLSPTypeDeesser2 = 33;
inline constexpr int kLSPTypePluginInfo = 16384;  // id of the plug-in description container; ends a chain
inline constexpr int kLSPTypeAudioUnitPlugin = 32766;
