#include "app/command_dispatcher.h"

#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <chrono>
#include <memory>
#include <thread>

#include "app/core_utils.h"
#include "app/paste_source.h"
#include "app/undo_commands.h"
#include "audio/audio_recorder.h"
#include "audio/recording_recovery.h"
#include "app/cut_list_render.h"
#include "app/dc_offset_correction.h"
#include "app/edit_commands.h"
#include "app/ef_amplify.h"
#include "app/ef_auto_gain_control.h"
#include "app/ef_auto_trim.h"
#include "app/ef_channel_invert.h"
#include "app/ef_channel_swap.h"
#include "app/ef_delete.h"
#include "app/ef_effect_chain.h"
#include "app/ef_effect_chain_cb_radio.h"
#include "app/ef_envelope.h"
#include "app/ef_join_channels.h"
#include "app/ef_normalize.h"
#include "app/ef_normalize_lossless.h"
#include "app/ef_process_effect.h"
#include "app/ef_reduce_vocals.h"
#include "app/ef_change_speed_pitch.h"
#include "app/ef_ps_profile.h"
#include "app/ef_restoration.h"
#include "app/ef_reverse.h"
#include "app/ef_stereo_pan.h"
#include "app/file_gui.h"
#include "app/frame_time.h"
#include "app/mark_commands.h"
#include "app/project_load.h"
#include "app/project_save.h"
#include "base/safe_save.h"
#include "effects/effect_chain_file.h"
#include "effects/loudness_meter.h"
#include "effects/multiband_gate.h"
#include "formats/mp3_frame_gain.h"
#include "effects/sound_process_by_name.h"
#include "effects/sound_process_listing.h"
#include "effects/sound_process_setting_text.h"
#include "effects/sound_process_unknown.h"
#include "effects/tone_generator.h"

namespace {

constexpr const char* kNoDocument = "Es ist kein Dokument geöffnet. Mit \"open DATEI\" oder \"new\" beginnen.";
constexpr const char* kGenerateTitle = "Audio erzeugen";
constexpr const char* kCancelled = "Abgebrochen. Das Dokument bleibt, wie es war.";

SVCommandResult Failed(std::string message) { return {kLProcessFailed, std::move(message), {}}; }
SVCommandResult Done(std::string message = {}) { return {kLProcessSuccess, std::move(message), {}}; }

std::string Format(const char* format, ...) {
  char text[1024];
  va_list args;
  va_start(args, format);
  std::vsnprintf(text, sizeof text, format, args);
  va_end(args);
  return text;
}

// Adds a line to a listing.
void Line(std::string& text, const std::string& line) {
  if (!text.empty()) text += '\n';
  text += line;
}

double NumberOr(const SVCommandArgs& args, std::size_t index, double fallback) {
  return index < args.numbers.size() ? args.numbers[index] : fallback;
}

// Whether args hold at least the arguments the row requires, of each kind.
bool ArgumentsComplete(const SVCommandInfo& info, const SVCommandArgs& args) {
  std::size_t times = 0, numbers = 0, texts = 0;
  for (const SVArgSpec& shape : info.args) {
    if (shape.optional) continue;
    times += shape.kind == SVArgKind::kTime;
    numbers += shape.kind == SVArgKind::kNumber;
    texts += shape.kind == SVArgKind::kText || shape.kind == SVArgKind::kTexts;
  }
  return args.times.size() >= times && args.numbers.size() >= numbers && args.texts.size() >= texts;
}

bool SelectionValid(const SVSelection& s) { return s.end >= s.start && !(s.band && s.highFrequency < s.lowFrequency); }

}  // namespace

SVCommandDispatcher::SVCommandDispatcher(MainDialog& main) : main_(main) {}

SVFileGUI* SVCommandDispatcher::Window() const {
  SVFileGUI* window = main_.Windows().CurrentFileWindow();
  return window && window->File() ? window : nullptr;
}

std::uint32_t SVCommandDispatcher::Rate() const {
  SVFileGUI* window = Window();
  return window ? window->File()->CutList().GetSampleRate() : 44100;
}

bool SVCommandDispatcher::IsEnabled(int id) {
  const SVCommandInfo* info = SVCommandFind(id);
  if (!info) return false;
  SVFileGUI* window = Window();
  if ((info->needs & kSVNeedDocument) && !window) return false;
  if ((info->needs & kSVNeedSelection) && window->File()->Selection().IsEmpty()) return false;
  if ((info->needs & kSVNeedStereo) && window->File()->CutList().GetChannels() != 2) return false;
  switch (id) {
    case kSVCmdUndo:
      return SVUndoMenuStateGet(window->File()).undo.enabled;
    case kSVCmdRedo:
      return SVUndoMenuStateGet(window->File()).redo.enabled;
    case kSVCmdRevert:
      return window->File()->IsUndoLastSaveAvailable();
    case kSVCmdChainSave:
      return applied_.GetCount() > 0;
    case kSVCmdProjectSave:
      return main_.Windows().FileWindowCount() > 0;
    default:
      return true;
  }
}

SVCommandResult SVCommandDispatcher::Run(int id, const SVCommandArgs& args) {
  const SVCommandInfo* info = SVCommandFind(id);
  if (!info) return Failed(Format("Es gibt keinen Befehl Nummer %d.", id));
  if (!ArgumentsComplete(*info, args)) return Failed("Aufruf: " + SVCommandUsage(*info));
  main_.FrontEnd().LastErrorClear();
  SVFileGUI* window = Window();
  if ((info->needs & kSVNeedDocument) && !window) return Failed(kNoDocument);
  if ((info->needs & kSVNeedSelection) && window->File()->Selection().IsEmpty())
    return Failed(Format("Für \"%s\" zuerst einen Bereich auswählen (select).", info->label));
  if ((info->needs & kSVNeedStereo) && window->File()->CutList().GetChannels() != 2)
    return Failed(Format("\"%s\" braucht ein Stereo-Dokument.", info->label));
  const bool warned = quitWarned_;
  SVCommandResult result = Dispatch(*info, args);
  // Only a quit right after the warning discards the changes.
  if (warned) quitWarned_ = false;
  main_.UpdateUndoMenuItem();
  return result;
}

SVCommandResult SVCommandDispatcher::Dispatch(const SVCommandInfo& info, const SVCommandArgs& args) {
  switch (info.id) {
    case kSVCmdOpen:
    case kSVCmdNew:
    case kSVCmdDocs:
    case kSVCmdDoc:
    case kSVCmdClose:
      return Documents(info.id, args);
    case kSVCmdSelect:
    case kSVCmdSelectAll:
    case kSVCmdSelectNone:
    case kSVCmdBand:
    case kSVCmdBandOff:
    case kSVCmdCursor:
      return Position(info.id, args);
    case kSVCmdCopy:
    case kSVCmdCut:
    case kSVCmdPaste:
    case kSVCmdDelete:
    case kSVCmdTrim:
    case kSVCmdSilence:
    case kSVCmdRepeat:
    case kSVCmdInsertFile:
      return Edit(info, args);
    case kSVCmdGenerateTone:
    case kSVCmdGenerateNoise:
    case kSVCmdGenerateSilence:
      return Generate(info, args);
    case kSVCmdReverse:
    case kSVCmdAmplify:
    case kSVCmdNormalize:
    case kSVCmdAutoGain:
    case kSVCmdReduceVocals:
    case kSVCmdCBRadio:
    case kSVCmdTempo:
    case kSVCmdPitch:
    case kSVCmdSpeed:
    case kSVCmdVoicePitch:
    case kSVCmdPSProfile:
    case kSVCmdFadeIn:
    case kSVCmdFadeOut:
    case kSVCmdDcOffset:
    case kSVCmdAutoTrim:
    case kSVCmdSwap:
    case kSVCmdInvert:
    case kSVCmdJoin:
    case kSVCmdPan:
      return Process(info, args);
    case kSVCmdChannels: {
      const double channels = args.numbers.at(0);
      if (channels < 1 || channels > 16 || channels != std::floor(channels))
        return Failed("Aufruf: channels KANÄLE (1 bis 16)");
      return EditResult(SVEditCommands::ConvertChannels(Window(), static_cast<int>(channels)), info.label);
    }
    case kSVCmdEffect:
      return Effect(args);
    case kSVCmdClickPop:
    case kSVCmdRepair:
    case kSVCmdNoiseProfile:
    case kSVCmdNoiseReduce:
      return Restoration(info, args);
    case kSVCmdMp3Gain:
      return LosslessGain(info, args);
    case kSVCmdEffectList:
      return Done("Effekte (effect NAME [PARAMETER=WERT ...] [preset=NAME]):\n" + LSoundProcessListing());
    case kSVCmdLoudness:
      return Loudness();
    case kSVCmdChain:
    case kSVCmdChainSave:
      return Chain(info.id, args);
    case kSVCmdUndo:
    case kSVCmdRedo:
    case kSVCmdRevert:
    case kSVCmdHistory:
      return History(info.id);
    case kSVCmdBookmarkAdd:
    case kSVCmdBookmarkDelete:
    case kSVCmdBookmarks:
    case kSVCmdRegionAdd:
    case kSVCmdRegions:
    case kSVCmdTags:
    case kSVCmdTag:
      return Marks(info, args);
    case kSVCmdSave:
    case kSVCmdSaveAs:
    case kSVCmdProjectSave:
    case kSVCmdProjectOpen:
      return Files(info.id, args);
    case kSVCmdPlay:
      return Play(args);
    case kSVCmdStop:
      PlayStop();
      return Done();
    case kSVCmdRecord:
      return Record(args);
    case kSVCmdStatus:
      return Status();
    case kSVCmdHelp:
      return Done(SVCommandHelpText());
    case kSVCmdQuit:
      return Quit();
  }
  return Failed(Format("Der Befehl \"%s\" ist hier nicht verfügbar.", info.label));
}

SVCommandResult SVCommandDispatcher::EditResult(int result, const char* label) const {
  if (result == kLProcessSuccess) return Done();
  if (result == kLProcessCancelled) return {kLProcessCancelled, kCancelled, {}};
  const LStringLong& error = main_.FrontEnd().LastError();
  return Failed(error.empty() ? std::string(label) + " ist fehlgeschlagen." : error);
}

SVCommandResult SVCommandDispatcher::Job(const char* title, const SVProcessJob& job) const {
  return EditResult(main_.FrontEnd().RunProcess(title, job), title);
}

SVCommandResult SVCommandDispatcher::EditRange(SVEfCutListProcess& edit, const char* label) {
  SVFileGUI* window = Window();
  SVFile& file = *window->File();
  if (!SelectionValid(file.Selection()))
    return Failed("Die Auswahl ist ungültig: das Ende liegt vor dem Anfang oder die obere Frequenz unter der unteren.");
  const bool whole = file.Selection().IsEmpty();
  SVCommandResult result =
      EditResult(SVEditCommands::Run(window, edit, SVEditScope::kSelectionOrWhole, true, label), label);
  if (whole && result.result == kLProcessSuccess) {
    SVSelection& s = file.Selection();
    s.start = s.end = std::min(file.Cursor(), file.CutList().GetLength());
  }
  return result;
}

std::string SVCommandDispatcher::UnsavedTitles(bool recovered) const {
  std::string titles;
  SVWindowManager& m = main_.Windows();
  for (int t = 0; t < m.TabCount(); ++t) {
    for (int i = 0; i < m.TabFileWindowCount(t); ++i) {
      SVFileGUI* window = m.FileWindowAt(t, i);
      if (!window->File()->IsModified() || (!recovered && recovered_.count(window))) continue;
      titles += (titles.empty() ? "\"" : ", \"") + window->Title() + "\"";
    }
  }
  return titles;
}

SVCommandResult SVCommandDispatcher::Documents(int id, const SVCommandArgs& args) {
  SVWindowManager& m = main_.Windows();
  switch (id) {
    case kSVCmdOpen: {
      const std::string& path = args.texts.at(0);
      if (main_.FileOpen(path.c_str())) return Done();
      const LStringLong& error = main_.FrontEnd().LastError();
      return Failed(error.empty() ? "Die Datei \"" + path + "\" konnte nicht geladen werden." : error);
    }
    case kSVCmdNew: {
      const double rate = NumberOr(args, 0, 44100), channels = NumberOr(args, 1, 2);
      if (rate < 1000 || rate > 768000 || channels < 1 || channels > 16 || channels != std::floor(channels))
        return Failed("Aufruf: new [RATE [KANÄLE]] mit einer Rate von 1000 bis 768000 Hz und 1 bis 16 Kanälen.");
      LCutListAudio list;
      list.SetFormat(static_cast<std::uint32_t>(rate), static_cast<std::uint8_t>(channels));
      if (!main_.FileNewFromCutList(list, "Unbenannt", MainDialog::kInitialNewFile))
        return Failed("Es kann kein weiteres Dokument angelegt werden.");
      return Done();
    }
    case kSVCmdDocs:
    case kSVCmdDoc: {
      const int wanted = args.numbers.empty() ? 0 : static_cast<int>(args.numbers[0]);
      std::string list;
      int n = 0;
      for (int t = 0; t < m.TabCount(); ++t) {
        for (int i = 0; i < m.TabFileWindowCount(t); ++i) {
          SVFileGUI* window = m.FileWindowAt(t, i);
          if (++n == wanted) {
            m.CurrentFileWindowSet(window);
            return Done();
          }
          Line(list, Format("%s %d  %s%s", window == m.CurrentFileWindow() ? ">" : " ", n, window->Title().c_str(),
                            window->File()->IsModified() ? " *" : ""));
        }
      }
      if (id == kSVCmdDoc) return Failed(Format("Es gibt kein Dokument Nummer %d.", wanted));
      return Done(n == 0 ? "Keine Dokumente geöffnet." : list);
    }
    default: {
      SVFileGUI* window = Window();
      SVCommandResult result = Done();
      if (window->File()->IsModified())
        result.warning = "Hinweis: \"" + window->Title() + "\" wird ohne Speichern geschlossen.\n";
      // Closed unsaved, a recovered recording is offered again at the next start.
      recovered_.erase(window);
      m.FileWindowClose(window);
      if (!m.CurrentFileWindow() && m.TabCount() > 0) m.CurrentFileWindowSet(m.FileWindowAt(m.TabCount() - 1, 0));
      return result;
    }
  }
}

SVCommandResult SVCommandDispatcher::Position(int id, const SVCommandArgs& args) {
  SVFile& file = *Window()->File();
  SVSelection& s = file.Selection();
  const long long length = file.CutList().GetLength();
  switch (id) {
    case kSVCmdSelect: {
      const long long a = args.times.at(0), b = args.times.at(1);
      if (b < a) return Failed("Das Ende der Auswahl liegt vor ihrem Anfang.");
      if (b > length) return Failed(Format("Die Auswahl endet hinter dem Ende des Dokuments (%lld Frames).", length));
      s.start = a;
      s.end = b;
      file.CursorSet(a);
      return Done();
    }
    case kSVCmdSelectAll:
      s.start = 0;
      s.end = length;
      return Done();
    case kSVCmdSelectNone:
      s.start = s.end = file.Cursor();
      return Done();
    case kSVCmdBand: {
      const double low = args.numbers.at(0), high = args.numbers.at(1);
      if (low < 0 || high > file.CutList().GetSampleRate() / 2.0)
        return Failed("Das Band muss zwischen 0 Hz und der halben Abtastrate liegen.");
      if (high < low) return Failed("Die obere Frequenz des Bands liegt unter der unteren.");
      s.band = 1;
      s.lowFrequency = static_cast<std::int32_t>(low);
      s.highFrequency = static_cast<std::int32_t>(high);
      return Done();
    }
    case kSVCmdBandOff:
      s.band = 0;
      return Done();
    default: {
      const long long at = args.times.at(0);
      if (at > length) return Failed("Der Cursor liegt hinter dem Ende des Dokuments.");
      file.CursorSet(at);
      // As a click does: what comes next acts at the cursor, not on an old selection.
      s.start = s.end = at;
      return Done();
    }
  }
}

SVCommandResult SVCommandDispatcher::Edit(const SVCommandInfo& info, const SVCommandArgs& args) {
  SVFileGUI* window = Window();
  SVFile& file = *window->File();
  switch (info.id) {
    case kSVCmdCopy:
    case kSVCmdCut: {
      LCutListAudio piece;
      SVCommandResult copied = Job(info.label, [&](LProcessInterface& p) {
        piece = file.Selection().Trim(p, file.CutList());
        return p.IsCancelled() ? kLProcessCancelled : kLProcessSuccess;
      });
      if (copied.result != kLProcessSuccess) return copied;
      main_.Clipboard().Copy(piece);
      if (info.id == kSVCmdCopy) return copied;
      SVEfDelete edit(file.CutList(), file.Selection());
      return EditRange(edit, info.label);
    }
    case kSVCmdPaste: {
      const LCutListAudio clip = SVPasteSource::GetAudioFromClipboard(main_.FrontEnd(), main_.SystemClipboard());
      if (clip.GetLength() == 0) return Failed("Die Zwischenablage enthält kein Audio.");
      return EditResult(SVEditCommands::InsertClip(window, clip, info.label), info.label);
    }
    case kSVCmdDelete: {
      SVEfDelete edit(file.CutList(), file.Selection());
      return EditRange(edit, info.label);
    }
    case kSVCmdTrim:
      return EditResult(SVEditCommands::Trim(window), info.label);
    case kSVCmdInsertFile:
      return EditResult(SVEditCommands::InsertFile(window, args.texts.at(0).c_str()), info.label);
    case kSVCmdSilence:
      if (args.times.at(0) <= 0) return Failed("Die Länge muss größer als 0 sein.");
      return EditResult(SVEditCommands::InsertSilence(window, args.times[0]), info.label);
    default: {
      const double count = args.numbers.at(0);
      if (count < 1 || count > 100000 || count != std::floor(count))
        return Failed("Aufruf: repeat ANZAHL (eine ganze Zahl ab 1)");
      return EditResult(SVEditCommands::Repeat(window, static_cast<unsigned long>(count)), info.label);
    }
  }
}

SVCommandResult SVCommandDispatcher::Generate(const SVCommandInfo& info, const SVCommandArgs& args) {
  SVFileGUI* window = Window();
  const LCutListAudio& doc = window->File()->CutList();
  const LToneKind kind = info.id == kSVCmdGenerateTone    ? LToneKind::kSine
                         : info.id == kSVCmdGenerateNoise ? LToneKind::kNoise
                                                          : LToneKind::kSilence;
  const double frequency = kind == LToneKind::kSine ? args.numbers.at(0) : 0;
  const double db = NumberOr(args, kind == LToneKind::kSine ? 1 : 0, -6);
  const long long frames = args.times.at(0);
  if (kind == LToneKind::kSine && (frequency <= 0 || frequency >= doc.GetSampleRate() / 2.0))
    return Failed("Die Frequenz muss über 0 Hz und unter der halben Abtastrate liegen.");
  if (db > 0) return Failed("Der Pegel wird in dB bis 0 angegeben, zum Beispiel -6.");
  if (frames <= 0) return Failed("Die Länge muss größer als 0 sein.");
  LCutListAudio made;
  SVCommandResult rendered = Job(kGenerateTitle, [&](LProcessInterface& p) {
    return SVCutListRender(
        p, kGenerateTitle,
        LMakeSource<LSRCToneGenerator>(kind, frequency, db, frames, doc.GetSampleRate(), doc.GetChannels()), made);
  });
  if (rendered.result != kLProcessSuccess) return rendered;
  return EditResult(SVEditCommands::InsertClip(window, made, info.label, SVEditScope::kInsertPoint), info.label);
}

SVCommandResult SVCommandDispatcher::Process(const SVCommandInfo& info, const SVCommandArgs& args) {
  SVFile& file = *Window()->File();
  LCutListAudio& list = file.CutList();
  SVSelection& sel = file.Selection();
  const double value = NumberOr(args, 0, 0);
  std::unique_ptr<SVEfCutListProcess> edit;
  switch (info.id) {
    case kSVCmdReverse:
      edit = std::make_unique<SVEfReverse>(list, sel);
      break;
    case kSVCmdAmplify:
      edit = std::make_unique<SVEfAmplify>(list, sel, value);
      break;
    case kSVCmdNormalize: {
      const std::string unit = args.texts.empty() ? "db" : LSoundProcessFoldName(args.texts[0]);
      if (unit == "lufs") {
        if (args.numbers.empty() || value < -70 || value > 0)
          return Failed("Die Ziellautheit wird in LUFS von -70 bis 0 angegeben, zum Beispiel \"normalize -23 LUFS\".");
        edit = std::make_unique<SVEfNormalize>(list, sel, value, SVNormalizeTarget::kLoudness);
        break;
      }
      if (unit != "db" && unit != "dbfs") return Failed("Aufruf: normalize [DB] oder normalize ZIEL LUFS");
      if (value > 0) return Failed("Der Zielpegel wird in dB bis 0 angegeben.");
      edit = std::make_unique<SVEfNormalize>(list, sel, value);
      break;
    }
    case kSVCmdAutoGain: {
      SVAutoGainSettings settings;
      if (!args.numbers.empty()) settings.targetLufs = value;
      if (settings.targetLufs < -70 || settings.targetLufs > 0)
        return Failed("Die Ziellautheit wird in LUFS von -70 bis 0 angegeben, zum Beispiel \"autogain -16\".");
      edit = std::make_unique<SVEfAutoGainControl>(list, sel, settings);
      break;
    }
    case kSVCmdReduceVocals:
      edit = std::make_unique<SVEfReduceVocals>(list, sel);
      break;
    case kSVCmdCBRadio:
      edit = std::make_unique<SVEfEffectChainCBRadio>(list, sel);
      break;
    case kSVCmdTempo:
    case kSVCmdSpeed: {
      if (value < 10 || value > 1000) return Failed("Tempo und Geschwindigkeit werden in Prozent von 10 bis 1000 angegeben.");
      const bool tempo = info.id == kSVCmdTempo;
      edit = std::make_unique<SVEfChangeSpeedPitch>(
          list, sel, tempo ? SVSpeedPitchMode::kTempo : SVSpeedPitchMode::kBoth,
          tempo ? SVEfChangeSpeedPitch::Tempo(value) : SVEfChangeSpeedPitch::Speed(value));
      break;
    }
    case kSVCmdPitch:
    case kSVCmdVoicePitch: {
      const double cents = NumberOr(args, 1, 0);
      if (value < -24 || value > 24 || value != std::floor(value) || cents < -100 || cents > 100)
        return Failed("Die Tonhöhe wird in ganzen Halbtönen von -24 bis 24 und Cent von -100 bis 100 angegeben.");
      auto pitch = std::make_unique<SVEfChangeSpeedPitch>(list, sel, SVSpeedPitchMode::kPitch,
                                                          SVEfChangeSpeedPitch::Pitch(value, cents));
      pitch->KeepFormants(info.id == kSVCmdVoicePitch);
      edit = std::move(pitch);
      break;
    }
    case kSVCmdPSProfile: {
      std::vector<LStretchPoint> points;
      for (const std::string& text : args.texts) {
        LStretchPoint point;
        if (!SVEfPSProfile::ParsePoint(text, point))
          return Failed("Aufruf: profil ANTEIL%=TEMPO%[:HALBTÖNE] ..., zum Beispiel \"profil 0=100 100=50:-12\" "
                        "(Tempo 10 bis 1000 %, Halbtöne -24 bis 24)");
        points.push_back(point);
      }
      if (points.empty()) return Failed("Aufruf: profil ANTEIL%=TEMPO%[:HALBTÖNE] ...");
      edit = std::make_unique<SVEfPSProfile>(list, sel, std::move(points));
      break;
    }
    case kSVCmdFadeIn:
    case kSVCmdFadeOut:
      edit = std::make_unique<SVEfEnvelope>(list, sel,
                                            info.id == kSVCmdFadeIn ? SVEfEnvelope::FadeIn() : SVEfEnvelope::FadeOut());
      break;
    case kSVCmdDcOffset:
      edit = std::make_unique<SVDCOffsetCorrection>(list, sel);
      break;
    case kSVCmdAutoTrim:
      edit = std::make_unique<SVEfAutoTrim>(list, sel, true);
      break;
    case kSVCmdSwap:
      edit = std::make_unique<SVEfChannelSwap>(list, sel);
      break;
    case kSVCmdInvert:
      edit = std::make_unique<SVEfChannelInvert>(list, sel);
      break;
    case kSVCmdJoin:
      edit = std::make_unique<SVEfJoinChannels>(list, sel);
      break;
    default:
      if (value < -1 || value > 1) return Failed("Der Panoramawert liegt zwischen -1 (links) und 1 (rechts).");
      edit = std::make_unique<SVEfStereoPan>(list, sel, value);
      break;
  }
  SVCommandResult result = EditRange(*edit, info.label);
  // Float keeps what lies above full scale, a file of whole numbers would not.
  if (const auto* normalize = dynamic_cast<const SVEfNormalize*>(edit.get());
      normalize && result.result == kLProcessSuccess && normalize->PeakAfterDb() > 0.0) {
    result.warning = Format("Warnung: Der Spitzenpegel liegt jetzt bei %+.1f dBTP; in einem Format ohne Gleitkomma "
                            "würde er übersteuern. Ein leiseres Ziel oder ein Kompressor vorher hilft.\n",
                            normalize->PeakAfterDb());
  }
  return result;
}

SVCommandResult SVCommandDispatcher::Effect(const SVCommandArgs& args) {
  SVFile& file = *Window()->File();
  std::unique_ptr<LSoundProcess> effect = LSoundProcessCreateByName(args.texts.at(0));
  if (!effect) return Failed("Unbekannter Effekt \"" + args.texts[0] + "\". Verfügbar: " + LSoundProcessNamesText() + ".");
  for (std::size_t i = 1; i < args.texts.size(); ++i) {
    std::string message;
    if (LSoundProcessSetFromText(*effect, args.texts[i], &message) != LSPSettingTextResult::kOK) return Failed(message);
  }
  if (!effect->IsValid()) return Failed("Die Einstellungen des Effekts sind ungültig.");
  if (auto* gate = dynamic_cast<LSPMultiBandNoiseGating*>(effect.get()); gate && !noiseAudio_.IsEmpty()) {
    // After "rauschprofil" the gate learns its thresholds from that noise; thresholds given here win.
    if (noiseProfile_.rate != file.CutList().GetSampleRate())
      return Failed(Format("Das Rauschprofil wurde bei %u Hz aufgenommen, das Dokument hat %u Hz. Bitte ein neues "
                           "Rauschprofil aufnehmen (rauschprofil).",
                           noiseProfile_.rate, file.CutList().GetSampleRate()));
    LSoundSource noise = noiseAudio_.OpenSource();
    if (!gate->LearnNoise(noise)) return Failed("Das Rauschprofil konnte nicht gelesen werden.");
    for (std::size_t i = 1; i < args.texts.size(); ++i) {
      std::string message;
      if (LSoundProcessSetFromText(*effect, args.texts[i], &message) != LSPSettingTextResult::kOK) return Failed(message);
    }
  }
  // The operation of the effect's kind, under its label ("Hochpass-Filter").
  std::unique_ptr<SVEfProcessEffect> edit = SVEfForEffect(file.CutList(), file.Selection(), *effect);
  SVCommandResult result = EditRange(*edit, edit->GetEffectName());
  if (result.result == kLProcessSuccess) applied_.Append(std::move(effect));
  return result;
}

SVCommandResult SVCommandDispatcher::Restoration(const SVCommandInfo& info, const SVCommandArgs& args) {
  SVFile& file = *Window()->File();
  LCutListAudio& list = file.CutList();
  SVSelection& sel = file.Selection();
  const std::uint32_t rate = list.GetSampleRate();
  switch (info.id) {
    case kSVCmdClickPop: {
      LSPClickPopRemoval settings;
      double sensitivity = NumberOr(args, 0, 50), ms = NumberOr(args, 1, 2);
      if (sensitivity < 0 || sensitivity > 100) return Failed("Die Empfindlichkeit liegt zwischen 0 und 100 %.");
      if (ms < 0.1 || ms > 20) return Failed("Die maximale Länge eines Klicks liegt zwischen 0,1 und 20 ms.");
      settings.SetParameterByIndex(kLSPClickSensitivity, &sensitivity);
      settings.SetParameterByIndex(kLSPClickMaxMs, &ms);
      SVEfClickPopRemoval edit(list, sel, settings);
      return EditRange(edit, info.label);
    }
    case kSVCmdRepair: {
      const double ms = static_cast<double>(sel.end - sel.start) * 1000.0 / rate;
      if (ms > kSVManualClickPopMaxMs)
        return Failed(Format("Die Auswahl ist mit %.1f ms zu lang für eine Reparatur von Hand (höchstens %.0f ms). "
                             "Für viele Klicks über eine längere Strecke \"clickpop\" verwenden.",
                             ms, kSVManualClickPopMaxMs));
      SVEfManualClickPop edit(list, sel);
      return EditRange(edit, info.label);
    }
    case kSVCmdNoiseProfile: {
      // Half a minute of noise says all there is to say about it.
      const long long end = std::min(sel.end, sel.start + 30LL * rate);
      LCutListAudio noise;
      list.EfCopy(sel.start, end, noise);
      LNoiseProfile profile;
      LSoundSource source = noise.OpenSource();
      if (!LNoiseProfileLearn(source, profile))
        return Failed(Format("Für ein Rauschprofil mindestens %.0f ms reines Rauschen auswählen.",
                             std::ceil(kLNoiseSpectrumFrames * 1000.0 / rate)));
      noiseProfile_ = std::move(profile);
      noiseAudio_ = std::move(noise);
      return Done(Format("Rauschprofil aus %.2f s aufgenommen.", static_cast<double>(end - sel.start) / rate));
    }
    default: {
      if (noiseProfile_.IsEmpty())
        return Failed("Es gibt noch kein Rauschprofil. Zuerst einen Bereich mit reinem Rauschen auswählen und "
                      "\"rauschprofil\" ausführen.");
      if (noiseProfile_.rate != rate)
        return Failed(Format("Das Rauschprofil wurde bei %u Hz aufgenommen, das Dokument hat %u Hz. Bitte ein neues "
                             "Rauschprofil aufnehmen.",
                             noiseProfile_.rate, rate));
      const double db = NumberOr(args, 0, kLNoiseReduceDb), sensitivity = NumberOr(args, 1, kLNoiseReduceSensitivityDb);
      if (db <= 0 || db > 60) return Failed("Die Reduktion wird in dB über 0 bis 60 angegeben, zum Beispiel 12.");
      if (sensitivity < 0 || sensitivity > 24)
        return Failed("Die Empfindlichkeit wird in dB über dem Rauschen angegeben, von 0 bis 24.");
      SVEfNoiseReduceSSApply edit(list, sel, noiseProfile_, db, sensitivity);
      return EditRange(edit, info.label);
    }
  }
}

SVCommandResult SVCommandDispatcher::Chain(int id, const SVCommandArgs& args) {
  const std::string& path = args.texts.at(0);
  if (id == kSVCmdChainSave) {
    if (applied_.GetCount() == 0) return Failed("Es wurden noch keine Effekte angewendet, die gespeichert werden könnten.");
    LSafeSave save(path.c_str());
    if (!save.IsReady() || !LEffectChainSaveFile(applied_, save.TempPath().c_str()) || !save.Commit())
      return Failed("Die Effektkette konnte nicht nach \"" + path + "\" geschrieben werden.");
    return Done();
  }
  SVFile& file = *Window()->File();
  LSoundProcessMulti chain;
  const LEffectChainLoadResult loaded = LEffectChainLoadFile(chain, path.c_str());
  if (loaded != LEffectChainLoadResult::kOK)
    return Failed(std::string(LEffectChainLoadTitle(loaded)) + ": " + LEffectChainLoadMessage(loaded) + " (" + path + ")");
  std::string warning;
  if (const std::string unknown = LSPUnknownNamesIn(chain); !unknown.empty()) {
    warning = "Warnung: Diese Version von Sonvale kann nicht alle Effekte der Kette ausführen: " + unknown +
              ". Sie lassen den Ton unverändert durch und bleiben beim Speichern der Kette erhalten.\n";
  }
  SVEfEffectChain edit(file.CutList(), file.Selection(), chain);
  SVCommandResult result = EditRange(edit, edit.GetEffectName());
  if (result.result != kLProcessSuccess) return result;
  result.warning = warning;
  // What "chain save" writes next: the chain as loaded, switched-off effects included.
  for (const LSoundProcess* p = chain.GetFirst(); p; p = p->pNext) {
    std::unique_ptr<LSoundProcess> copy(p->GetNewCopy());
    if (!copy) continue;
    copy->bDisabled = p->bDisabled;
    applied_.Append(std::move(copy));
  }
  return result;
}

SVCommandResult SVCommandDispatcher::History(int id) {
  SVFileGUI* window = Window();
  SVFile& file = *window->File();
  switch (id) {
    case kSVCmdUndo:
      return SVUndoCommands::CmUndo(window) ? Done() : Failed("Es gibt nichts rückgängig zu machen.");
    case kSVCmdRedo:
      return SVUndoCommands::CmRedo(window) ? Done() : Failed("Es gibt nichts zu wiederholen.");
    case kSVCmdRevert:
      return SVUndoCommands::CmUndoSave(window) ? Done() : Failed(kSVRevertUnavailableText);
    default:
      break;
  }
  const unsigned long current = file.UndoIndexCurrent();
  // From the oldest used entry up to the one past the current (the redo side).
  std::string text = "Verlauf (neueste zuletzt):";
  unsigned long index = file.UndoIndexOldest();
  for (unsigned long n = 0; n < kSVUndoRingSize; ++n, index = SVFile::UndoIndexNext(index)) {
    const SVFileUndo& entry = file.UndoEntry(index);
    if (entry.description[0] == '\0') continue;
    Line(text, Format("  %s %s  %s", index == current ? ">" : " ", entry.description, entry.timeStamp));
  }
  const SVUndoMenuState menu = main_.UpdateUndoMenuItem();
  Line(text, "Rückgängig: " + (menu.undo.enabled ? menu.undo.label : LStringLong("(nicht möglich)")));
  Line(text, "Wiederholen: " + (menu.redo.enabled ? menu.redo.label : LStringLong("(nicht möglich)")));
  return Done(text);
}

SVCommandResult SVCommandDispatcher::Marks(const SVCommandInfo& info, const SVCommandArgs& args) {
  SVFileGUI* window = Window();
  SVFile& file = *window->File();
  const std::uint32_t rate = file.CutList().GetSampleRate();
  switch (info.id) {
    case kSVCmdBookmarkAdd: {
      const long long at = args.times.empty() ? file.Cursor() : args.times[0];
      if (at > file.CutList().GetLength()) return Failed("Das Lesezeichen liegt hinter dem Ende des Dokuments.");
      (void)SVMarkCommands::BookmarkAdd(window, args.texts.at(0).c_str(), at);
      return Done();
    }
    case kSVCmdBookmarkDelete:
      if (!SVMarkCommands::BookmarkDelete(window, args.texts.at(0).c_str()))
        return Failed("Es gibt kein Lesezeichen \"" + args.texts[0] + "\".");
      return Done();
    case kSVCmdBookmarks: {
      std::string text;
      for (const LSVBookmark& b : file.Bookmarks())
        Line(text, Format("  %-20s %s (%lld)", b.name, SVFramesTimeText(b.position, rate).c_str(), b.position));
      return Done(text.empty() ? "Keine Lesezeichen." : text);
    }
    case kSVCmdRegionAdd: {
      const long long start = args.times.at(0), end = args.times.at(1);
      if (end <= start || end > file.CutList().GetLength())
        return Failed("Die Region muss vor ihrem Ende beginnen und innerhalb des Dokuments liegen.");
      (void)SVMarkCommands::RegionAdd(window, args.texts.at(0).c_str(), start, end);
      return Done();
    }
    case kSVCmdRegions: {
      std::string text;
      for (const SVRegion& r : main_.Windows().Project().Regions()) {
        const unsigned regionRate = r.sampleRate > 0 ? static_cast<unsigned>(r.sampleRate) : 44100;
        Line(text, Format("  %-20s %s bis %s (%s)", r.name, SVFramesTimeText(r.start, regionRate).c_str(),
                          SVFramesTimeText(r.end, regionRate).c_str(), r.sourceFileName));
      }
      return Done(text.empty() ? "Keine Regionen." : text);
    }
    case kSVCmdTags: {
      std::string text;
      for (const auto& tag : file.Tags()) Line(text, "  " + tag.key + " = " + tag.value);
      return Done(text.empty() ? "Keine Tags." : text);
    }
    default: {
      const std::string& pair = args.texts.at(0);
      const std::size_t equals = pair.find('=');
      if (equals == std::string::npos || equals == 0)
        return Failed("Aufruf: tag SCHLÜSSEL=WERT (ein leerer Wert entfernt das Tag).");
      const std::string key = pair.substr(0, equals), value = pair.substr(equals + 1);
      // Tags are not part of an undo snapshot, so setting one is not an undo step.
      if (value.empty())
        file.Tags().Remove(key.c_str());
      else
        file.Tags().Set(key.c_str(), value.c_str());
      file.FlagsSet();
      return Done();
    }
  }
}

SVCommandResult SVCommandDispatcher::Files(int id, const SVCommandArgs& args) {
  if (id == kSVCmdSave || id == kSVCmdSaveAs) {
    SVFileSaveRequest request;
    if (!args.texts.empty()) request.path = args.texts[0];
    if (auto it = args.options.find("--to"); it != args.options.end()) request.format = it->second;
    if (auto it = args.options.find("--quality"); it != args.options.end()) request.quality = it->second;
    request.dither = args.options.count("--dither") > 0;
    // Dither is for fewer bits: without a format named it saves 16-bit PCM.
    if (request.dither && request.format.empty()) request.format = "pcm16";
    SVCommandResult result;
    result.result = main_.FileSave(Window(), request, &result.message, &result.warning);
    if (result.result == kLProcessSuccess) {
      result.message = std::string("Gespeichert: ") + Window()->File()->Path();
      // A recovered recording that is in a file now needs no offer again.
      if (auto it = recovered_.find(Window()); it != recovered_.end()) {
        LAudioRecordingOffered(it->second);
        recovered_.erase(it);
      }
    }
    return result;
  }
  const std::string& path = args.texts.at(0);
  LProcessResult result;
  if (id == kSVCmdProjectSave) {
    if (main_.Windows().FileWindowCount() == 0) return Failed("Es ist kein Dokument geöffnet, das gespeichert werden könnte.");
    result = SVProjectSave(main_.Windows(), path.c_str(), false);
  } else {
    result = SVProjectOpen(main_.Windows(), path.c_str());
  }
  if (result == kLProcessCancelled) return {kLProcessCancelled, "Abgebrochen.", {}};
  if (result != kLProcessSuccess) {
    const LStringLong& error = main_.FrontEnd().LastError();
    return Failed(error.empty() ? "Das Projekt \"" + path + "\" konnte nicht verarbeitet werden." : error);
  }
  return Done(id == kSVCmdProjectSave ? "Projekt gespeichert: " + path : std::string());
}

SVCommandResult SVCommandDispatcher::Status() const {
  SVFileGUI* window = Window();
  const SVFile& file = *window->File();
  const LCutListAudio& list = file.CutList();
  const unsigned rate = list.GetSampleRate();
  const long long length = list.GetLength();
  std::string text;
  Line(text, Format("Dokument:     %s%s", window->Title().c_str(), file.IsModified() ? " (geändert)" : ""));
  Line(text, Format("Datei:        %s", *file.Path() ? file.Path() : "(noch nicht gespeichert)"));
  Line(text, Format("Abtastrate:   %u Hz", rate));
  Line(text, Format("Kanäle:       %u", list.GetChannels()));
  Line(text, Format("Länge:        %s (%lld Frames)", SVFramesTimeText(length, rate).c_str(), length));
  Line(text, Format("Segmente:     %lld", list.SegmentCount()));
  const SVSelection& s = file.Selection();
  if (s.IsEmpty()) {
    Line(text, "Auswahl:      keine");
  } else {
    Line(text, Format("Auswahl:      %s bis %s (%lld bis %lld)", SVFramesTimeText(s.start, rate).c_str(),
                      SVFramesTimeText(s.end, rate).c_str(), s.start, s.end));
  }
  if (s.HasBand()) Line(text, Format("Band:         %d Hz bis %d Hz", s.lowFrequency, s.highFrequency));
  Line(text, Format("Cursor:       %s (%lld)", SVFramesTimeText(file.Cursor(), rate).c_str(), file.Cursor()));
  return Done(text);
}

SVCommandResult SVCommandDispatcher::LosslessGain(const SVCommandInfo& info, const SVCommandArgs& args) {
  SVFileGUI* window = Window();
  SVFile& file = *window->File();
  const double db = args.numbers.at(0);
  if (!*file.Path()) return Failed("Das Dokument hat keine MP3-Datei, deren Lautstärke sich ändern ließe.");
  // The file itself changes: edits not in it yet would be silently left out.
  if (file.IsModified())
    return Failed(Format("\"%s\" ändert die Datei \"%s\" selbst; zuerst speichern oder die Änderungen verwerfen.",
                         info.label, file.Path()));
  if (!(std::fabs(db) <= 48)) return Failed("Die Änderung wird in dB von -48 bis 48 angegeben.");
  SVEfNormalizeLossless edit(file.CutList(), file.Selection(), file.Path(), db);
  if (edit.Steps() == 0) return Failed("Die Änderung ist kleiner als ein halber Schritt von 1,5 dB.");
  SVCommandResult result =
      EditResult(SVEditCommands::Run(window, edit, SVEditScope::kWhole, false, info.label), info.label);
  if (result.result != kLProcessSuccess) return result;
  // The document is what its file now holds.
  file.SetFileClean();
  (void)file.FileTimeModifiedUpdate();
  result.message = Format("\"%s\" ist um %+.1f dB geändert (%d Schritte von 1,5 dB).", file.Path(),
                          edit.Steps() * kLMP3GainStepDb, edit.Steps());
  return result;
}

SVCommandResult SVCommandDispatcher::Loudness() const {
  const SVFile& file = *Window()->File();
  const SVSelection& s = file.Selection();
  LCutListAudio range = file.CutList();
  const bool selected = !s.IsEmpty();
  if (selected) range.EfTrim(s.start, s.end);
  LLoudness loudness;
  const char* title = "Lautheit messen";
  SVCommandResult measured = Job(title, [&](LProcessInterface& p) {
    LSoundSource source = s.OpenTrimmedSource(range);
    const LProcessResult result = LLoudnessMeasure(p, source, loudness);
    if (result == kLProcessFailed) p.SetError("Die Lautheit dieses Audios kann nicht gemessen werden.");
    return result;
  });
  if (measured.result != kLProcessSuccess) return measured;
  std::string text = selected ? "Lautheit der Auswahl:" : "Lautheit des Dokuments:";
  Line(text, "  Integriert:       " + LLoudnessText(loudness.integratedLufs, "LUFS"));
  Line(text, "  Lautheitsbereich: " + LLoudnessText(loudness.rangeLu, "LU"));
  Line(text, "  True Peak:        " + LLoudnessText(loudness.truePeakDb, "dBTP"));
  return Done(text);
}

SVCommandResult SVCommandDispatcher::Quit() {
  const std::string unsaved = UnsavedTitles();
  if (quitConfirm_ && !unsaved.empty() && !quitWarned_) {
    quitWarned_ = true;
    return Failed("Die Änderungen an " + unsaved +
                  " sind nicht gespeichert. Mit \"save\" speichern, oder noch einmal \"quit\", um sie zu verwerfen.");
  }
  quit_ = true;
  // Quitting after the question drops the recovered recordings knowingly.
  if (quitConfirm_) {
    for (const auto& [window, item] : recovered_) LAudioRecordingOffered(item);
    recovered_.clear();
  }
  return Done();
}

std::string SVCommandDispatcher::RecordingsRecover() {
  std::vector<LAudioRecoveredRecording> found;
  LAudioRecordingsRecover(&found);
  std::string note;
  for (const LAudioRecoveredRecording& r : found) {
    SVFileGUI* window = main_.FileNewFromCutList(r.list, r.title.c_str(), MainDialog::kInitialRestore);
    if (!window) {
      note += "Hinweis: \"" + r.title + "\" kann nicht geöffnet werden und wird beim nächsten Start wieder angeboten.\n";
      continue;
    }
    // Unsaved, so that quitting asks before it is dropped.
    window->File()->ModifiedSet(true);
    recovered_[window] = r.item;
    note += "Hinweis: Eine abgebrochene Aufnahme wurde als \"" + window->Title() +
            "\" geöffnet. Mit \"save PFAD\" sichern.\n";
  }
  return note;
}

LAudioBackend* SVCommandDispatcher::Backend(std::string* message) {
  if (!backend_) backend_ = LAudioBackendCreate();
  if (!backend_) *message = LAudioStatusMessage(LAudioStatus::kBackendMissing);
  return backend_.get();
}

void SVCommandDispatcher::PlayStop() {
  if (playing_ && player_) player_->Remove(playing_);
  playing_.reset();
}

SVCommandResult SVCommandDispatcher::Play(const SVCommandArgs& args) {
  SVFile& file = *Window()->File();
  const LCutListAudio& list = file.CutList();
  const long long length = list.GetLength();
  long long from = file.Cursor(), to = length;
  if (args.times.size() >= 2) {
    from = args.times[0];
    to = args.times[1];
  } else if (!file.Selection().IsEmpty()) {
    from = file.Selection().start;
    to = file.Selection().end;
  }
  to = std::min(to, length);
  if (from < 0 || from >= to) return Failed("Im gewählten Bereich ist nichts abzuspielen.");
  std::string message;
  LAudioBackend* backend = Backend(&message);
  if (!backend) return Failed(message);
  PlayStop();
  // The output follows the document, so nothing is converted on the way.
  const LAudioStreamSpec shape{"", list.GetSampleRate(), list.GetChannels(), 1024};
  if (!player_ || !player_->Stream() || player_->Status() != LAudioStatus::kOK ||
      player_->Stream()->Shape().sampleRate != shape.sampleRate || player_->Stream()->Shape().channels != shape.channels) {
    player_ = std::make_unique<LAudioPlayer>(*backend);
    const LAudioStatus opened = player_->Open(shape);
    if (opened != LAudioStatus::kOK) {
      player_.reset();
      return Failed(LAudioStatusMessage(opened));
    }
  }
  // The source holds copies of the segments: edits while it plays leave it whole.
  playing_ = player_->Play(list.OpenSource(), from, to);
  if (!playing_) return Failed("Die Wiedergabe kann nicht beginnen.");
  if (!playWait_) return Done();
  std::shared_ptr<LAudioMixerInput> input = playing_;
  SVCommandResult played = Job("Wiedergabe", [&](LProcessInterface& p) {
    while (!input->IsFinished() && player_->Status() == LAudioStatus::kOK) {
      if (p.IsCancelled()) return kLProcessCancelled;
      p.SetProgress(static_cast<double>(input->Position() - from) / static_cast<double>(to - from));
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return kLProcessSuccess;
  });
  PlayStop();
  if (player_->Status() != LAudioStatus::kOK) return Failed(player_->Message());
  // Playing changes nothing, so a Ctrl-C only ends it.
  return played.result == kLProcessCancelled ? Done() : played;
}

SVCommandResult SVCommandDispatcher::Record(const SVCommandArgs& args) {
  const long long frames = args.times.at(0);
  if (frames <= 0) return Failed("Die Länge muss größer als 0 sein.");
  SVFileGUI* window = Window();
  std::string message;
  LAudioBackend* backend = Backend(&message);
  if (!backend) return Failed(message);
  const LAudioStreamSpec shape{"", Rate(), window ? window->File()->CutList().GetChannels() : 2, 1024};
  LCutListAudio recorded;
  LAudioRecorder recorder(*backend);
  const LAudioStatus started = recorder.Start(shape, &recorded, frames);
  if (started != LAudioStatus::kOK) return Failed(LAudioStatusMessage(started));
  // A Ctrl-C ends the recording early and keeps what came so far.
  (void)Job("Aufnahme", [&](LProcessInterface& p) {
    while (recorder.IsRecording() && !p.IsCancelled()) {
      p.SetProgress(static_cast<double>(recorder.Frames()) / static_cast<double>(frames));
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return kLProcessSuccess;
  });
  recorder.Stop();
  SVCommandResult result = Done();
  if (!recorder.Message().empty()) result.warning = recorder.Message() + "\n";
  if (recorded.GetLength() == 0) return Failed(recorder.Message().empty() ? "Es wurde nichts aufgenommen." : recorder.Message());
  if (!window) {
    if (!main_.FileNewFromCutList(recorded, "Aufnahme", MainDialog::kInitialNewFile))
      return Failed("Es kann kein weiteres Dokument angelegt werden.");
    Window()->File()->ModifiedSet(true);
    return result;
  }
  SVCommandResult edited = EditResult(SVEditCommands::InsertClip(window, recorded, "Aufnahme"), "Aufnahme");
  if (edited.result == kLProcessSuccess) return result;
  // The take is not lost with the edit: it gets a document of its own.
  if (!main_.FileNewFromCutList(recorded, "Aufnahme", MainDialog::kInitialNewFile)) return edited;
  Window()->File()->ModifiedSet(true);
  edited.message += " Die Aufnahme wurde als neues Dokument geöffnet.";
  return edited;
}
