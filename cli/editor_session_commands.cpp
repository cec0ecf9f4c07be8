// The command table of the editor session and the commands that change audio.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>

#include "app/core_utils.h"
#include "app/cut_list_render.h"
#include "app/dc_offset_correction.h"
#include "app/edit_commands.h"
#include "app/ef_amplify.h"
#include "app/ef_auto_trim.h"
#include "app/ef_channel_invert.h"
#include "app/ef_channel_swap.h"
#include "app/ef_delete.h"
#include "app/ef_effect_chain.h"
#include "app/ef_envelope.h"
#include "app/ef_join_channels.h"
#include "app/ef_normalize.h"
#include "app/ef_reverse.h"
#include "app/ef_stereo_pan.h"
#include "app/file_gui.h"
#include "app/project_load.h"
#include "app/project_save.h"
#include "base/safe_save.h"
#include "cli/editor_session.h"
#include "effects/effect_chain_file.h"
#include "effects/sound_process_by_name.h"
#include "effects/sound_process_setting_text.h"
#include "effects/sound_process_unknown.h"
#include "effects/tone_generator.h"

void EditorSession::Register() {
  auto& h = handlers_;
  // Documents.
  h["open"] = [this](const CommandWords& w) {
    if (w.size() != 2) return Fail("Aufruf: open PFAD");
    return OpenDocument(w[1]);
  };
  h["new"] = [this](const CommandWords& w) {
    double rate = 44100, channels = 2;
    if (w.size() > 3 || (w.size() > 1 && !ParseNumber(w[1], &rate)) || (w.size() > 2 && !ParseNumber(w[2], &channels)) ||
        rate < 1000 || rate > 768000 || channels < 1 || channels > 16) {
      return Fail("Aufruf: new [RATE [KANÄLE]] mit einer Rate von 1000 bis 768000 Hz und 1 bis 16 Kanälen.");
    }
    LCutListAudio list;
    list.SetFormat(static_cast<std::uint32_t>(rate), static_cast<std::uint8_t>(channels));
    if (!main_.FileNewFromCutList(list, "Unbenannt", MainDialog::kInitialNewFile)) {
      return Fail("Es kann kein weiteres Dokument angelegt werden.");
    }
    main_.UpdateUndoMenuItem();
    return kCommandOK;
  };
  h["docs"] = [this](const CommandWords&) {
    SVWindowManager& m = main_.Windows();
    int n = 0;
    for (int t = 0; t < m.TabCount(); ++t) {
      for (int i = 0; i < m.TabFileWindowCount(t); ++i) {
        SVFileGUI* window = m.FileWindowAt(t, i);
        std::printf("%s %d  %s%s\n", window == m.CurrentFileWindow() ? ">" : " ", ++n, window->Title().c_str(),
                    window->File()->IsModified() ? " *" : "");
      }
    }
    if (n == 0) std::printf("Keine Dokumente geöffnet.\n");
    return kCommandOK;
  };
  h["doc"] = [this](const CommandWords& w) {
    double n = 0;
    SVWindowManager& m = main_.Windows();
    if (w.size() != 2 || !ParseNumber(w[1], &n)) return Fail("Aufruf: doc NUMMER (siehe \"docs\")");
    int k = 0;
    for (int t = 0; t < m.TabCount(); ++t) {
      for (int i = 0; i < m.TabFileWindowCount(t); ++i) {
        if (++k == static_cast<int>(n)) {
          m.CurrentFileWindowSet(m.FileWindowAt(t, i));
          main_.UpdateUndoMenuItem();
          return kCommandOK;
        }
      }
    }
    return Fail("Es gibt kein Dokument Nummer " + w[1] + ".");
  };
  h["close"] = [this](const CommandWords&) {
    SVWindowManager& m = main_.Windows();
    SVFileGUI* window = m.CurrentFileWindow();
    if (!window) return Fail("Es ist kein Dokument geöffnet.");
    if (window->File()->IsModified()) std::fprintf(stderr, "Hinweis: \"%s\" wird ohne Speichern geschlossen.\n", window->Title().c_str());
    m.FileWindowClose(window);
    if (!m.CurrentFileWindow() && m.TabCount() > 0) m.CurrentFileWindowSet(m.FileWindowAt(m.TabCount() - 1, 0));
    return kCommandOK;
  };

  // Position.
  h["select"] = [this](const CommandWords& w) {
    SVFile* file = Need();
    if (!file) return kCommandFailed;
    SVSelection& s = file->Selection();
    const long long length = file->CutList().GetLength();
    if (w.size() == 2 && w[1] == "all") {
      s.start = 0;
      s.end = length;
    } else if (w.size() == 2 && w[1] == "none") {
      s.start = s.end = file->Cursor();
    } else if (w.size() == 3) {
      long long a = 0, b = 0;
      if (!Time(w[1], &a) || !Time(w[2], &b)) return kCommandFailed;
      if (b < a) return Fail("Das Ende der Auswahl liegt vor ihrem Anfang.");
      if (b > length) {
        return Fail("Die Auswahl endet hinter dem Ende des Dokuments (" + std::to_string(length) + " Frames).");
      }
      s.start = a;
      s.end = b;
      file->CursorSet(a);
    } else {
      return Fail("Aufruf: select ANFANG ENDE | select all | select none");
    }
    return kCommandOK;
  };
  h["band"] = [this](const CommandWords& w) {
    SVFile* file = Need();
    if (!file) return kCommandFailed;
    SVSelection& s = file->Selection();
    if (w.size() == 2 && w[1] == "off") {
      s.band = 0;
      return kCommandOK;
    }
    double low = 0, high = 0;
    if (w.size() != 3 || !ParseNumber(w[1], &low) || !ParseNumber(w[2], &high)) return Fail("Aufruf: band TIEF HOCH | band off (in Hz)");
    const double nyquist = file->CutList().GetSampleRate() / 2.0;
    if (low < 0 || high > nyquist) return Fail("Das Band muss zwischen 0 Hz und der halben Abtastrate liegen.");
    if (high < low) return Fail("Die obere Frequenz des Bands liegt unter der unteren.");
    s.band = 1;
    s.lowFrequency = static_cast<std::int32_t>(low);
    s.highFrequency = static_cast<std::int32_t>(high);
    return kCommandOK;
  };
  h["cursor"] = [this](const CommandWords& w) {
    SVFile* file = Need();
    if (!file) return kCommandFailed;
    long long at = 0;
    if (w.size() != 2) return Fail("Aufruf: cursor ZEIT");
    if (!Time(w[1], &at)) return kCommandFailed;
    if (at > file->CutList().GetLength()) return Fail("Der Cursor liegt hinter dem Ende des Dokuments.");
    file->CursorSet(at);
    // As a click does: what comes next acts at the cursor, not on an old selection.
    file->Selection().start = file->Selection().end = at;
    return kCommandOK;
  };

  // Edits.
  h["copy"] = [this](const CommandWords&) {
    SVFile* file = Need();
    if (!file) return kCommandFailed;
    LCutListAudio piece;
    int status = RunJob("Kopieren", [&](LProcessInterface& p) {
      piece = file->Selection().Trim(p, file->CutList());
      return p.IsCancelled() ? kLProcessCancelled : kLProcessSuccess;
    });
    if (status == kCommandOK) main_.Clipboard().Copy(piece);
    return status;
  };
  h["cut"] = [this](const CommandWords& w) {
    int status = handlers_["copy"](w);
    return status == kCommandOK ? handlers_["delete"](w) : status;
  };
  h["paste"] = [this](const CommandWords&) {
    if (!Need()) return kCommandFailed;
    LCutListAudio clip = SVCoreUtils::GetAudioFromClipboard(frontEnd_, board_);
    if (clip.GetLength() == 0) return Fail("Die Zwischenablage enthält kein Audio.");
    return InsertList("Einfügen", std::move(clip), true);
  };
  h["delete"] = [this](const CommandWords&) {
    SVFile* file = Need();
    if (!file) return kCommandFailed;
    if (file->Selection().IsEmpty()) return Fail("Zum Löschen zuerst einen Bereich auswählen (select).");
    SVEfDelete edit(file->CutList(), file->Selection());
    return RunEdit(edit);
  };
  h["trim"] = [this](const CommandWords&) {
    SVFile* file = Need();
    if (!file) return kCommandFailed;
    if (file->Selection().IsEmpty()) return Fail("Zum Trimmen zuerst den Bereich auswählen, der bleiben soll.");
    return Modify("Trimmen", [](SVFile& f) {
      SVSelection& s = f.Selection();
      const long long length = f.CutList().GetLength();
      f.CutList().EfTrim(s.start, s.end);
      f.OffsetBookmarks(s.end, -(length - s.end));
      f.OffsetBookmarks(0, -s.start);
      f.CursorSet(0);
      s.end -= s.start;
      s.start = 0;
      return kLProcessSuccess;
    });
  };
  h["silence"] = [this](const CommandWords& w) {
    long long frames = 0;
    if (w.size() != 2) return Fail("Aufruf: silence LÄNGE");
    if (!Need() || !Time(w[1], &frames)) return kCommandFailed;
    return Modify("Stille einfügen", [frames](SVFile& f) {
      const long long at = f.Cursor();
      f.CutList().EfInsertSilence(at, frames);
      f.OffsetBookmarks(at, frames);
      return kLProcessSuccess;
    });
  };
  h["repeat"] = [this](const CommandWords& w) {
    double count = 0;
    SVFile* file = Need();
    if (!file) return kCommandFailed;
    if (w.size() != 2 || !ParseNumber(w[1], &count) || count < 1 || count > 100000 || count != std::floor(count)) {
      return Fail("Aufruf: repeat ANZAHL (eine ganze Zahl ab 1)");
    }
    long long start = 0, end = 0;
    Range(&start, &end);
    return Modify("Schleife", [&](SVFile& f) {
      f.CutList().EfRepeatLoop(start, end, static_cast<unsigned long>(count));
      f.OffsetBookmarks(end, (end - start) * static_cast<long long>(count));
      return kLProcessSuccess;
    });
  };
  h["generate"] = [this](const CommandWords& w) { return Generate(w); };

  // Processes and effects.
  for (const char* name : {"reverse", "amplify", "normalize", "fadein", "fadeout", "dcoffset", "autotrim", "swap",
                           "invert", "join", "pan"}) {
    h[name] = [this](const CommandWords& w) { return Process(w); };
  }
  h["effect"] = [this](const CommandWords& w) { return Effect(w); };
  h["chain"] = [this](const CommandWords& w) { return Chain(w); };

  // History.
  h["undo"] = [this](const CommandWords&) {
    if (!Need()) return kCommandFailed;
    if (!SVCoreUtils::CmUndo(main_.Windows().CurrentFileWindow())) return Fail("Es gibt nichts rückgängig zu machen.");
    main_.UpdateUndoMenuItem();
    return kCommandOK;
  };
  h["redo"] = [this](const CommandWords&) {
    if (!Need()) return kCommandFailed;
    if (!SVCoreUtils::CmRedo(main_.Windows().CurrentFileWindow())) return Fail("Es gibt nichts zu wiederholen.");
    main_.UpdateUndoMenuItem();
    return kCommandOK;
  };
  h["revert"] = [this](const CommandWords&) {
    if (!Need()) return kCommandFailed;
    if (!SVCoreUtils::CmUndoSave(main_.Windows().CurrentFileWindow())) {
      return Fail(kSVRevertUnavailableText);
    }
    main_.UpdateUndoMenuItem();
    return kCommandOK;
  };
  h["history"] = [this](const CommandWords&) { return History(); };

  // Marks and metadata.
  h["bookmark"] = h["bookmarks"] = [this](const CommandWords& w) { return Bookmark(w); };
  h["region"] = h["regions"] = [this](const CommandWords& w) { return Region(w); };
  h["tags"] = h["tag"] = [this](const CommandWords& w) { return Tags(w); };

  // Files.
  h["save"] = [this](const CommandWords& w) {
    std::string path, to, quality;
    for (size_t i = 1; i < w.size(); ++i) {
      if (w[i] == "--to" && i + 1 < w.size()) {
        to = w[++i];
      } else if (w[i] == "--quality" && i + 1 < w.size()) {
        quality = w[++i];
      } else if (w[i] == "--dither") {
        to += "+dither";
      } else if (path.empty() && w[i][0] != '-') {
        path = w[i];
      } else {
        return Fail("Aufruf: save [PFAD] [--to FORMAT] [--quality Q] [--dither]");
      }
    }
    if (to.rfind("+dither", 0) == 0) to = "pcm16" + to;
    return SaveCurrent(path, to, quality);
  };
  h["saveas"] = [this](const CommandWords& w) {
    if (w.size() < 2) return Fail("Aufruf: saveas PFAD [--to FORMAT]");
    return handlers_["save"](w);
  };
  h["project"] = [this](const CommandWords& w) { return Project(w); };
  h["status"] = [this](const CommandWords&) { return Status(); };
  h["hilfe"] = h["help"] = [](const CommandWords&) {
    std::fputs(HelpText(), stdout);
    return kCommandOK;
  };
  h["quit"] = h["exit"] = h["beenden"] = [this](const CommandWords&) {
    const std::string unsaved = UnsavedTitles();
    if (interactive_ && !unsaved.empty() && !quitWarned_) {
      quitWarned_ = true;
      return Fail("Die Änderungen an " + unsaved +
                  " sind nicht gespeichert. Mit \"save\" speichern, oder noch einmal \"quit\", um sie zu verwerfen.");
    }
    quit_ = true;
    return kCommandOK;
  };
}

int EditorSession::RunEditOnRange(SVEfCutListProcess& edit) {
  SVFile* file = Current();
  const bool whole = file && file->Selection().IsEmpty();
  int status = RunEdit(edit);
  // An edit of the whole document leaves nothing selected, as it found it.
  if (whole && status == kCommandOK) {
    SVSelection& s = file->Selection();
    s.start = s.end = std::min(file->Cursor(), file->CutList().GetLength());
  }
  return status;
}

int EditorSession::Generate(const CommandWords& w) {
  SVFile* file = Need();
  if (!file) return kCommandFailed;
  LToneKind kind;
  size_t lengthAt = 2;
  double frequency = 0, db = -6;
  if (w.size() >= 4 && w[1] == "tone") {
    kind = LToneKind::kSine;
    if (!ParseNumber(w[2], &frequency) || frequency <= 0 || frequency >= file->CutList().GetSampleRate() / 2.0) {
      return Fail("Die Frequenz muss über 0 Hz und unter der halben Abtastrate liegen.");
    }
    lengthAt = 3;
  } else if (w.size() >= 3 && w[1] == "noise") {
    kind = LToneKind::kNoise;
  } else if (w.size() == 3 && w[1] == "silence") {
    kind = LToneKind::kSilence;
  } else {
    return Fail("Aufruf: generate tone FREQ LÄNGE [DB] | generate noise LÄNGE [DB] | generate silence LÄNGE");
  }
  long long frames = 0;
  if (!Time(w[lengthAt], &frames)) return kCommandFailed;
  if (w.size() == lengthAt + 2 && (!ParseNumber(w[lengthAt + 1], &db) || db > 0)) {
    return Fail("Der Pegel wird in dB bis 0 angegeben, zum Beispiel -6.");
  }
  if (w.size() > lengthAt + 2) return Fail("Zu viele Angaben für generate.");
  if (frames <= 0) return Fail("Die Länge muss größer als 0 sein.");
  const LCutListAudio& doc = file->CutList();
  LCutListAudio made;
  int status = RunJob("Audio erzeugen", [&](LProcessInterface& p) {
    return SVCutListRender(p, "Audio erzeugen",
                           LMakeSource<LSRCToneGenerator>(kind, frequency, db, frames, doc.GetSampleRate(), doc.GetChannels()),
                           made);
  });
  if (status != kCommandOK) return status;
  return InsertList(kind == LToneKind::kSine ? "Ton erzeugen" : kind == LToneKind::kNoise ? "Rauschen erzeugen" : "Stille erzeugen",
                    std::move(made), false);
}

int EditorSession::Process(const CommandWords& w) {
  SVFile* file = Need();
  if (!file) return kCommandFailed;
  const std::string& name = w[0];
  LCutListAudio& list = file->CutList();
  SVSelection& sel = file->Selection();
  double value = 0;
  auto needValue = [&](const char* usage, bool optional) {
    if (w.size() == 1 && optional) return true;
    if (w.size() == 2 && ParseNumber(w[1], &value)) return true;
    PrintError(usage);
    return false;
  };
  auto needStereo = [&]() {
    if (list.GetChannels() == 2) return true;
    PrintError("\"" + name + "\" braucht ein Stereo-Dokument.");
    return false;
  };
  std::unique_ptr<SVEfCutListProcess> edit;
  if (name == "reverse") {
    edit = std::make_unique<SVEfReverse>(list, sel);
  } else if (name == "amplify") {
    if (!needValue("Aufruf: amplify DB", false)) return kCommandFailed;
    edit = std::make_unique<SVEfAmplify>(list, sel, value);
  } else if (name == "normalize") {
    if (!needValue("Aufruf: normalize [DB]", true)) return kCommandFailed;
    if (value > 0) return Fail("Der Zielpegel wird in dB bis 0 angegeben.");
    edit = std::make_unique<SVEfNormalize>(list, sel, value);
  } else if (name == "fadein" || name == "fadeout") {
    edit = std::make_unique<SVEfEnvelope>(list, sel, name == "fadein" ? SVEfEnvelope::FadeIn() : SVEfEnvelope::FadeOut());
  } else if (name == "dcoffset") {
    edit = std::make_unique<SVDCOffsetCorrection>(list, sel);
  } else if (name == "autotrim") {
    edit = std::make_unique<SVEfAutoTrim>(list, sel, true);
  } else if (name == "swap") {
    if (!needStereo()) return kCommandFailed;
    edit = std::make_unique<SVEfChannelSwap>(list, sel);
  } else if (name == "invert") {
    edit = std::make_unique<SVEfChannelInvert>(list, sel);
  } else if (name == "join") {
    if (!needStereo()) return kCommandFailed;
    edit = std::make_unique<SVEfJoinChannels>(list, sel);
  } else if (name == "pan") {
    if (!needStereo() || !needValue("Aufruf: pan WERT (von -1 links bis 1 rechts)", false)) return kCommandFailed;
    if (value < -1 || value > 1) return Fail("Der Panoramawert liegt zwischen -1 (links) und 1 (rechts).");
    edit = std::make_unique<SVEfStereoPan>(list, sel, value);
  }
  return RunEditOnRange(*edit);
}

int EditorSession::Effect(const CommandWords& w) {
  SVFile* file = Need();
  if (!file) return kCommandFailed;
  if (w.size() < 2) return Fail("Aufruf: effect NAME [PARAMETER=WERT ...] [preset=NAME]");
  std::unique_ptr<LSoundProcess> effect = LSoundProcessCreateByName(w[1]);
  if (!effect) return Fail("Unbekannter Effekt \"" + w[1] + "\". Verfügbar: " + LSoundProcessNamesText() + ".");
  for (size_t i = 2; i < w.size(); ++i) {
    std::string message;
    if (LSoundProcessSetFromText(*effect, w[i], &message) != LSPSettingTextResult::kOK) return Fail(message);
  }
  if (!effect->IsValid()) return Fail("Die Einstellungen des Effekts sind ungültig.");
  LSoundProcessMulti chain;
  chain.Append(std::unique_ptr<LSoundProcess>(effect->GetNewCopy()));
  char name[kLPathMax] = {};
  effect->GetName(name);
  SVEfEffectChain edit(file->CutList(), file->Selection(), chain, name);
  int status = RunEditOnRange(edit);
  if (status == kCommandOK) applied_.Append(std::move(effect));
  return status;
}

int EditorSession::Chain(const CommandWords& w) {
  if (w.size() == 3 && w[1] == "save") {
    if (applied_.GetCount() == 0) return Fail("Es wurden noch keine Effekte angewendet, die gespeichert werden könnten.");
    LSafeSave save(w[2].c_str());
    if (!save.IsReady() || !LEffectChainSaveFile(applied_, save.TempPath().c_str()) || !save.Commit()) {
      return Fail("Die Effektkette konnte nicht nach \"" + w[2] + "\" geschrieben werden.");
    }
    return kCommandOK;
  }
  if (w.size() != 2) return Fail("Aufruf: chain DATEI.ecf | chain save DATEI.ecf");
  SVFile* file = Need();
  if (!file) return kCommandFailed;
  LSoundProcessMulti chain;
  LEffectChainLoadResult result = LEffectChainLoadFile(chain, w[1].c_str());
  if (result != LEffectChainLoadResult::kOK) {
    return Fail(std::string(LEffectChainLoadTitle(result)) + ": " + LEffectChainLoadMessage(result) + " (" + w[1] + ")");
  }
  if (const std::string unknown = LSPUnknownNamesIn(chain); !unknown.empty()) {
    std::fprintf(stderr,
                 "Warnung: Diese Version von Sonvale kann nicht alle Effekte der Kette ausführen: %s. Sie lassen den Ton "
                 "unverändert durch und bleiben beim Speichern der Kette erhalten.\n",
                 unknown.c_str());
  }
  SVEfEffectChain edit(file->CutList(), file->Selection(), chain);
  const int status = RunEditOnRange(edit);
  if (status != kCommandOK) return status;
  // What "chain save" writes next: the chain as loaded, switched-off effects included.
  for (const LSoundProcess* p = chain.GetFirst(); p; p = p->pNext) {
    std::unique_ptr<LSoundProcess> copy(p->GetNewCopy());
    if (!copy) continue;
    copy->bDisabled = p->bDisabled;
    applied_.Append(std::move(copy));
  }
  return status;
}

int EditorSession::Project(const CommandWords& w) {
  if (w.size() != 3 || (w[1] != "save" && w[1] != "open")) return Fail("Aufruf: project save DATEI.svp | project open DATEI.svp");
  const std::string& path = w[2];
  LProcessResult result;
  if (w[1] == "save") {
    if (main_.Windows().FileWindowCount() == 0) return Fail("Es ist kein Dokument geöffnet, das gespeichert werden könnte.");
    result = SVProjectSave(main_.Windows(), path.c_str(), false);
  } else {
    result = SVProjectOpen(main_.Windows(), path.c_str());
  }
  if (result == kLProcessCancelled) {
    PrintError("Abgebrochen.");
    return kCommandCancelled;
  }
  if (result != kLProcessSuccess) {
    return Fail(frontEnd_.LastError().empty() ? "Das Projekt \"" + path + "\" konnte nicht verarbeitet werden."
                                              : frontEnd_.LastError());
  }
  main_.UpdateUndoMenuItem();
  if (w[1] == "save") std::printf("Projekt gespeichert: %s\n", path.c_str());
  return kCommandOK;
}
