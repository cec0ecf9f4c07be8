#include "cli/editor_session.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "app/core_utils.h"
#include "app/cut_list_render.h"
#include "app/edit_commands.h"
#include "app/file_gui.h"
#include "app/mark_commands.h"
#include "base/safe_save.h"
#include "cli/audio_io.h"
#include "formats/sound_file.h"


EditorSession::EditorSession(bool interactive, bool quietProgress)
    : frontEnd_(interactive, quietProgress), main_(frontEnd_, board_), interactive_(interactive) {
  Register();
}

EditorSession::~EditorSession() = default;

SVFile* EditorSession::Current() {
  SVFileGUI* window = main_.Windows().CurrentFileWindow();
  return window ? window->File() : nullptr;
}

int EditorSession::Fail(const std::string& message) {
  PrintError(message);
  return kCommandFailed;
}

SVFile* EditorSession::Need() {
  SVFile* file = Current();
  if (!file) PrintError("Es ist kein Dokument geöffnet. Mit \"open DATEI\" oder \"new\" beginnen.");
  return file;
}

bool EditorSession::Time(const std::string& text, long long* frames) {
  SVFile* file = Current();
  unsigned rate = file ? file->CutList().GetSampleRate() : 44100;
  if (ParseTimeToFrames(text, rate, frames)) return true;
  PrintError("Ungültige Zeitangabe \"" + text + "\". Erlaubt sind zum Beispiel 1:02.5, 90 oder 4410f.");
  return false;
}

void EditorSession::Range(long long* start, long long* end) {
  SVFile* file = Current();
  const SVSelection& s = file->Selection();
  if (s.IsEmpty()) {
    *start = 0;
    *end = file->CutList().GetLength();
  } else {
    *start = s.start;
    *end = s.end;
  }
}

int EditorSession::ExecuteLine(const std::string& line) {
  std::vector<CommandWords> commands;
  std::string error;
  if (!SplitCommandLine(line, &commands, &error)) return Fail(error);
  for (const CommandWords& words : commands) {
    frontEnd_.LastErrorClear();
    int status = Execute(words);
    if (status != kCommandOK || quit_) return status;
  }
  return kCommandOK;
}

int EditorSession::Execute(const CommandWords& words) {
  auto it = handlers_.find(words[0]);
  if (it == handlers_.end()) {
    return Fail("Unbekannter Befehl \"" + words[0] + "\". \"hilfe\" zeigt die Befehle.");
  }
  const bool warned = quitWarned_;
  const int status = it->second(words);
  // Only a quit right after the warning discards the changes.
  if (warned) quitWarned_ = false;
  return status;
}

std::string EditorSession::UnsavedTitles() {
  std::string titles;
  SVWindowManager& m = main_.Windows();
  for (int t = 0; t < m.TabCount(); ++t) {
    for (int i = 0; i < m.TabFileWindowCount(t); ++i) {
      SVFileGUI* window = m.FileWindowAt(t, i);
      if (!window->File()->IsModified()) continue;
      titles += (titles.empty() ? "\"" : ", \"") + window->Title() + "\"";
    }
  }
  return titles;
}

void EditorSession::WarnUnsaved() {
  const std::string titles = UnsavedTitles();
  if (!titles.empty()) {
    std::fprintf(stderr, "Warnung: Die Änderungen an %s wurden nicht gespeichert und gehen verloren.\n", titles.c_str());
  }
}

int EditorSession::RunJob(const char* title, const SVProcessJob& job) {
  LProcessResult result = frontEnd_.RunProcess(title, job);
  if (result == kLProcessCancelled) {
    PrintError("Abgebrochen. Das Dokument bleibt, wie es war.");
    return kCommandCancelled;
  }
  if (result != kLProcessSuccess) {
    return Fail(frontEnd_.LastError().empty() ? std::string(title) + " ist fehlgeschlagen." : frontEnd_.LastError());
  }
  return kCommandOK;
}

int EditorSession::Modify(const char* label, const std::function<LProcessResult(SVFile&)>& change) {
  SVFile* file = Need();
  if (!file) return kCommandFailed;
  SVFileGUI* window = main_.Windows().CurrentFileWindow();
  const bool modified = file->IsModified();
  const bool changed = file->IsChanged();
  if (!SVCoreUtils::StartModifyFile(window, label, false)) return Fail("Die Änderung kann nicht beginnen.");
  LProcessResult result = change(*file);
  if (result != kLProcessSuccess) {
    // The change left the document as it was; only the snapshot and the flags go back.
    SVCoreUtils::CancelModifyFile(window);
    file->ModifiedSet(modified);
    file->ChangedSet(changed);
    main_.UpdateUndoMenuItem();
    if (result == kLProcessCancelled) {
      PrintError("Abgebrochen. Das Dokument bleibt, wie es war.");
      return kCommandCancelled;
    }
    return Fail(frontEnd_.LastError().empty() ? std::string(label) + " ist fehlgeschlagen." : frontEnd_.LastError());
  }
  if (!SVCoreUtils::EndModifyFile(window)) return Fail(std::string(label) + " wurde nicht übernommen.");
  main_.UpdateUndoMenuItem();
  return kCommandOK;
}

int EditorSession::RunEdit(SVEfCutListProcess& edit) {
  SVFile* file = Need();
  if (!file) return kCommandFailed;
  const SVSelection& s = file->Selection();
  if (s.end < s.start || (s.band && s.highFrequency < s.lowFrequency)) {
    return Fail("Die Auswahl ist ungültig: das Ende liegt vor dem Anfang oder die obere Frequenz unter der unteren.");
  }
  const bool modified = file->IsModified();
  const bool changed = file->IsChanged();
  // The app's edit protocol: the snapshot comes before the scope is widened, and
  // bookmarks follow the audio.
  const int result = SVEditCommands::Run(main_.Windows().CurrentFileWindow(), edit);
  main_.UpdateUndoMenuItem();
  if (result == kLProcessSuccess) return kCommandOK;
  file->ModifiedSet(modified);
  file->ChangedSet(changed);
  if (result == kLProcessCancelled) {
    PrintError("Abgebrochen. Das Dokument bleibt, wie es war.");
    return kCommandCancelled;
  }
  return Fail(frontEnd_.LastError().empty() ? std::string(edit.GetEffectName()) + " ist fehlgeschlagen."
                                            : frontEnd_.LastError());
}

int EditorSession::InsertList(const char* label, LCutListAudio list, bool replaceSelection) {
  SVFile* file = Need();
  if (!file) return kCommandFailed;
  LCutListAudio& doc = file->CutList();
  if (list.GetSampleRate() != doc.GetSampleRate() || list.GetChannels() != doc.GetChannels()) {
    // Audio of another format is converted first, so it plays at the right speed.
    LCutListAudio converted;
    LSoundSource source = list.OpenSource();
    LSoundSink shape = LSoundSink(new LSoundSinkStubBase(doc.GetSampleRate(), doc.GetChannels()));
    int status = RunJob("Audio wird umgewandelt", [&](LProcessInterface& process) {
      return SVCutListRender(process, "Audio wird umgewandelt", LSoundFile::AdaptSource(source, shape), converted);
    });
    if (status != kCommandOK) return status;
    list = std::move(converted);
  }
  const long long length = list.GetLength();
  return Modify(label, [&](SVFile& f) {
    SVSelection& sel = f.Selection();
    long long at = f.Cursor();
    if (replaceSelection && !sel.IsEmpty()) {
      at = sel.start;
      f.CutList().EfDelete(sel.start, sel.end);
      f.OffsetBookmarks(sel.start, -(sel.end - sel.start));
    }
    at = std::clamp(at, 0LL, f.CutList().GetLength());
    f.CutList().EfInsert(at, list);
    f.OffsetBookmarks(at, length);
    sel.start = at;
    sel.end = at + length;
    // The cursor goes behind what came in, so that inserts in a row follow each other.
    f.CursorSet(at + length);
    return kLProcessSuccess;
  });
}

int EditorSession::OpenDocument(const std::string& path) {
  if (!main_.FileOpen(path.c_str())) {
    if (frontEnd_.LastError().empty()) return Fail("Die Datei \"" + path + "\" konnte nicht geladen werden.");
    return Fail(frontEnd_.LastError());
  }
  main_.UpdateUndoMenuItem();
  return kCommandOK;
}

int EditorSession::SaveCurrent(const std::string& path, const std::string& to, const std::string& quality) {
  SVFile* file = Need();
  if (!file) return kCommandFailed;
  std::string target = path.empty() ? std::string(file->Path()) : path;
  if (target.empty()) return Fail("Das Dokument hat noch keinen Dateinamen. Mit \"save PFAD\" speichern.");
  bool dither = false;
  std::string name = to;
  if (auto at = name.find("+dither"); at != std::string::npos) {
    dither = true;
    name.erase(at);
  }
  // The document's own file tells the format it keeps unless another is asked for.
  LSoundFileInfo original;
  const bool described = *file->Path() && LSoundFile::Describe(file->Path(), &original);
  LSoundFileFormat format;
  std::string message;
  if (!FormatForTarget(target, name, described ? &original : nullptr, quality, &format, &message)) return Fail(message);
  format.dither = dither;
  format.tags = file->Tags();
  // Bookmarks travel as the file's markers.
  format.tags.MarkersClear();
  for (const LSVBookmark& b : file->Bookmarks()) format.tags.MarkerAddSample(static_cast<std::uint64_t>(b.position));
  if (const char* missing = LSoundFile::MissingCodec(format)) {
    return Fail(std::string("Der Codec \"") + missing + "\" ist in dieser Ausgabe von Sonvale nicht verfügbar.");
  }
  LSafeSave save(target.c_str());
  if (!save.IsReady()) {
    return Fail("Die Datei \"" + target + "\" kann nicht geschrieben werden. Überprüfen Sie, ob der Ordner existiert und Sie Schreibzugriff haben.");
  }
  LSoundSource source = file->CutList().OpenSource();
  LSoundFileSaveNotes notes;
  int status = RunJob("Speichern", [&](LProcessInterface& process) {
    LSafeSaveProcess reporting(process, save);
    return LSoundFile::Save(reporting, source, save.TempPath().c_str(), format, "Speichern", &notes);
  });
  if (status != kCommandOK) return status;
  if (!save.Commit()) return Fail("Die Datei \"" + target + "\" konnte nicht ersetzt werden. Sie bleibt unverändert.");
  if (path.empty() || std::string(file->Path()) != target) {
    file->PathSet(target.c_str());
  }
  file->SetFileClean();
  file->FileTimeModifiedUpdate();
  main_.RecentFiles().RecentFileListAdd(target.c_str());
  main_.UpdateUndoMenuItem();
  std::printf("Gespeichert: %s\n", target.c_str());
  std::fputs(LSoundFileSaveWarnings(notes, format, target.c_str()).c_str(), stderr);
  return kCommandOK;
}

int EditorSession::Status() {
  SVFile* file = Need();
  if (!file) return kCommandFailed;
  SVFileGUI* window = main_.Windows().CurrentFileWindow();
  const LCutListAudio& list = file->CutList();
  const unsigned rate = list.GetSampleRate();
  const long long length = list.GetLength();
  std::printf("Dokument:     %s%s\n", window->Title().c_str(), file->IsModified() ? " (geändert)" : "");
  std::printf("Datei:        %s\n", *file->Path() ? file->Path() : "(noch nicht gespeichert)");
  std::printf("Abtastrate:   %u Hz\n", rate);
  std::printf("Kanäle:       %u\n", list.GetChannels());
  std::printf("Länge:        %s (%lld Frames)\n", FramesTimeText(length, rate).c_str(), length);
  std::printf("Segmente:     %lld\n", list.SegmentCount());
  const SVSelection& s = file->Selection();
  if (s.IsEmpty()) {
    std::printf("Auswahl:      keine\n");
  } else {
    std::printf("Auswahl:      %s bis %s (%lld bis %lld)\n", FramesTimeText(s.start, rate).c_str(), FramesTimeText(s.end, rate).c_str(),
                s.start, s.end);
  }
  if (s.HasBand()) std::printf("Band:         %d Hz bis %d Hz\n", s.lowFrequency, s.highFrequency);
  std::printf("Cursor:       %s (%lld)\n", FramesTimeText(file->Cursor(), rate).c_str(), file->Cursor());
  return kCommandOK;
}

int EditorSession::History() {
  SVFile* file = Need();
  if (!file) return kCommandFailed;
  const unsigned long current = file->UndoIndexCurrent();
  // From the oldest used entry up to the one past the current (the redo side).
  std::printf("Verlauf (neueste zuletzt):\n");
  unsigned long index = file->UndoIndexOldest();
  for (unsigned long n = 0; n < kSVUndoRingSize; ++n, index = SVFile::UndoIndexNext(index)) {
    const SVFileUndo& entry = file->UndoEntry(index);
    if (entry.description[0] == '\0') continue;
    std::printf("  %s %s  %s\n", index == current ? ">" : " ", entry.description, entry.timeStamp);
  }
  SVUndoMenuState menu = main_.UpdateUndoMenuItem();
  std::printf("Rückgängig: %s\nWiederholen: %s\n", menu.undo.enabled ? menu.undo.label.c_str() : "(nicht möglich)",
              menu.redo.enabled ? menu.redo.label.c_str() : "(nicht möglich)");
  return kCommandOK;
}

int EditorSession::Tags(const CommandWords& w) {
  SVFile* file = Need();
  if (!file) return kCommandFailed;
  if (w[0] == "tags") {
    if (file->Tags().Count() == 0) std::printf("Keine Tags.\n");
    for (const auto& tag : file->Tags()) std::printf("  %s = %s\n", tag.key.c_str(), tag.value.c_str());
    return kCommandOK;
  }
  if (w.size() != 2 || w[1].find('=') == std::string::npos || w[1].front() == '=') {
    return Fail("Aufruf: tag SCHLÜSSEL=WERT (ein leerer Wert entfernt das Tag).");
  }
  std::string key = w[1].substr(0, w[1].find('='));
  std::string value = w[1].substr(w[1].find('=') + 1);
  if (value.empty()) {
    file->Tags().Remove(key.c_str());
  } else {
    file->Tags().Set(key.c_str(), value.c_str());
  }
  file->FlagsSet();
  return kCommandOK;
}

int EditorSession::Bookmark(const CommandWords& w) {
  SVFile* file = Need();
  if (!file) return kCommandFailed;
  if (w[0] == "bookmarks") {
    if (file->Bookmarks().empty()) std::printf("Keine Lesezeichen.\n");
    for (const LSVBookmark& b : file->Bookmarks()) {
      std::printf("  %-20s %s (%lld)\n", b.name, FramesTimeText(b.position, file->CutList().GetSampleRate()).c_str(),
                  b.position);
    }
    return kCommandOK;
  }
  if (w.size() >= 3 && w[1] == "add" && w.size() <= 4) {
    long long at = file->Cursor();
    if (w.size() == 4 && !Time(w[3], &at)) return kCommandFailed;
    if (at > file->CutList().GetLength()) return Fail("Das Lesezeichen liegt hinter dem Ende des Dokuments.");
    (void)SVMarkCommands::BookmarkAdd(main_.Windows().CurrentFileWindow(), w[2].c_str(), at);
    main_.UpdateUndoMenuItem();
    return kCommandOK;
  }
  if (w.size() == 3 && (w[1] == "del" || w[1] == "delete")) {
    if (!SVMarkCommands::BookmarkDelete(main_.Windows().CurrentFileWindow(), w[2].c_str())) {
      return Fail("Es gibt kein Lesezeichen \"" + w[2] + "\".");
    }
    main_.UpdateUndoMenuItem();
    return kCommandOK;
  }
  return Fail("Aufruf: bookmark add NAME [ZEIT] | bookmark del NAME");
}

int EditorSession::Region(const CommandWords& w) {
  SVFile* file = Need();
  if (!file) return kCommandFailed;
  SVRegionList& regions = main_.Windows().Project().Regions();
  if (w[0] == "regions") {
    if (regions.empty()) std::printf("Keine Regionen.\n");
    for (const SVRegion& r : regions) {
      unsigned rate = r.sampleRate > 0 ? static_cast<unsigned>(r.sampleRate) : 44100;
      std::printf("  %-20s %s bis %s (%s)\n", r.name, FramesTimeText(r.start, rate).c_str(), FramesTimeText(r.end, rate).c_str(),
                  r.sourceFileName);
    }
    return kCommandOK;
  }
  long long start = 0, end = 0;
  if (w.size() != 5 || w[1] != "add") return Fail("Aufruf: region add NAME ANFANG ENDE");
  if (!Time(w[3], &start) || !Time(w[4], &end)) return kCommandFailed;
  if (end <= start || end > file->CutList().GetLength()) {
    return Fail("Die Region muss vor ihrem Ende beginnen und innerhalb des Dokuments liegen.");
  }
  (void)SVMarkCommands::RegionAdd(main_.Windows().CurrentFileWindow(), w[2].c_str(), start, end);
  main_.UpdateUndoMenuItem();
  return kCommandOK;
}

const char* EditorSession::HelpText() {
  return "Befehle (mehrere mit \";\" trennen; Zeiten wie 1:02.5, 90 oder 4410f):\n"
         "  Dokumente:  open PFAD | new [RATE [KANÄLE]] | docs | doc N | close\n"
         "  Position:   select ANFANG ENDE | select all | select none | band TIEF HOCH | band off | cursor ZEIT\n"
         "  Bearbeiten: copy | cut | paste | delete | trim | silence LÄNGE | repeat ANZAHL\n"
         "              generate tone FREQ LÄNGE [DB] | generate noise LÄNGE [DB] | generate silence LÄNGE\n"
         "  Prozesse:   reverse | amplify DB | normalize [DB] | fadein | fadeout | dcoffset | autotrim\n"
         "              swap | invert | join | pan WERT\n"
         "  Effekte:    effect NAME [PARAMETER=WERT ...] [preset=NAME] | chain DATEI.ecf | chain save DATEI.ecf\n"
         "  Verlauf:    undo | redo | revert | history\n"
         "  Marken:     bookmark add NAME [ZEIT] | bookmark del NAME | bookmarks | region add NAME ANFANG ENDE | regions\n"
         "  Metadaten:  tags | tag SCHLÜSSEL=WERT\n"
         "  Dateien:    save [PFAD] [--to FORMAT] [--quality Q] | saveas PFAD | project save P.svp | project open P.svp\n"
         "  Sonstiges:  status | hilfe | quit\n";
}
