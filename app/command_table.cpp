#include "app/command_table.h"

#include <algorithm>
#include <iterator>

#include "app/edit_commands.h"
#include "app/ef_effect_chain_cb_radio.h"
#include "app/ef_reduce_vocals.h"
#include "app/ef_ps_profile.h"
#include "app/ef_restoration.h"
#include "app/ef_auto_gain_control.h"
#include "app/ef_normalize_lossless.h"
#include "app/ef_convert_channels.h"
#include "app/ef_insert_cut_list.h"
#include "app/mark_commands.h"

namespace {

using A = SVArgKind;
using C = SVCommandActs;
constexpr unsigned kDoc = kSVNeedDocument;
constexpr unsigned kSel = kSVNeedDocument | kSVNeedSelection;
constexpr unsigned kStereo = kSVNeedDocument | kSVNeedStereo;

constexpr const char* kDocuments = "Dokumente";
constexpr const char* kPosition = "Position";
constexpr const char* kEditing = "Bearbeiten";
constexpr const char* kProcesses = "Prozesse";
constexpr const char* kEffects = "Effekte";
constexpr const char* kHistory = "Verlauf";
constexpr const char* kMarks = "Marken";
constexpr const char* kMetadata = "Metadaten";
constexpr const char* kFiles = "Dateien";
constexpr const char* kPlayback = "Wiedergabe";
constexpr const char* kOther = "Sonstiges";
constexpr const char* kSaveOptions = "--to FORMAT --quality Q --dither";

const SVCommandInfo kTable[] = {
    {kSVCmdOpen, "open", "Öffnen", kDocuments, C::kNothing, 0, {{A::kText, "PFAD"}}},
    {kSVCmdNew, "new", "Neu", kDocuments, C::kNothing, 0, {{A::kNumber, "RATE", true}, {A::kNumber, "KANÄLE", true}}},
    {kSVCmdDocs, "docs", "Dokumente", kDocuments, C::kNothing, 0, {}},
    {kSVCmdDoc, "doc", "Dokument wählen", kDocuments, C::kNothing, 0, {{A::kNumber, "N"}}},
    {kSVCmdClose, "close", "Schließen", kDocuments, C::kDocument, kDoc, {}},
    {kSVCmdSelect, "select", "Auswählen", kPosition, C::kSelection, kDoc, {{A::kTime, "ANFANG"}, {A::kTime, "ENDE"}}},
    {kSVCmdSelectAll, "select all", "Alles auswählen", kPosition, C::kSelection, kDoc, {}},
    {kSVCmdSelectNone, "select none", "Auswahl aufheben", kPosition, C::kSelection, kDoc, {}},
    {kSVCmdBand, "band", "Frequenzband", kPosition, C::kSelection, kDoc, {{A::kNumber, "TIEF"}, {A::kNumber, "HOCH"}}},
    {kSVCmdBandOff, "band off", "Frequenzband aus", kPosition, C::kSelection, kDoc, {}},
    {kSVCmdCursor, "cursor", "Cursor setzen", kPosition, C::kCursor, kDoc, {{A::kTime, "ZEIT"}}},
    {kSVCmdCopy, "copy", "Kopieren", kEditing, C::kSelection, kDoc, {}},
    {kSVCmdCut, "cut", "Ausschneiden", kEditing, C::kSelection, kSel, {}},
    {kSVCmdPaste, "paste", "Einfügen", kEditing, C::kSelection, kDoc, {}},
    {kSVCmdDelete, "delete", "Audio löschen", kEditing, C::kSelection, kSel, {}},
    {kSVCmdTrim, "trim", kSVTrimLabel, kEditing, C::kSelection, kSel, {}},
    {kSVCmdSilence, "silence", "Stille einfügen", kEditing, C::kCursor, kDoc, {{A::kTime, "LÄNGE"}}},
    {kSVCmdRepeat, "repeat", kSVRepeatLabel, kEditing, C::kSelection, kDoc, {{A::kNumber, "ANZAHL"}}},
    {kSVCmdGenerateTone, "generate tone", "Ton erzeugen", kEditing, C::kCursor, kDoc,
     {{A::kNumber, "FREQ"}, {A::kTime, "LÄNGE"}, {A::kNumber, "DB", true}}},
    {kSVCmdGenerateNoise, "generate noise", "Rauschen erzeugen", kEditing, C::kCursor, kDoc,
     {{A::kTime, "LÄNGE"}, {A::kNumber, "DB", true}}},
    {kSVCmdGenerateSilence, "generate silence", "Stille erzeugen", kEditing, C::kCursor, kDoc, {{A::kTime, "LÄNGE"}}},
    {kSVCmdInsertFile, "insert", kSVInsertFileLabel, kEditing, C::kSelection, kDoc, {{A::kText, "PFAD"}}},
    {kSVCmdReverse, "reverse", "Umkehren", kProcesses, C::kSelection, kDoc, {}},
    {kSVCmdAmplify, "amplify", "Verstärken", kProcesses, C::kSelection, kDoc, {{A::kNumber, "DB"}}},
    {kSVCmdNormalize, "normalize", "Normalisieren", kProcesses, C::kSelection, kDoc,
     {{A::kNumber, "DB", true}, {A::kText, "LUFS", true}}},
    {kSVCmdAutoGain, "autogain", kSVAutoGainControlLabel, kProcesses, C::kSelection, kDoc, {{A::kNumber, "LUFS", true}}},
    {kSVCmdReduceVocals, "reducevocals", kSVReduceVocalsLabel, kProcesses, C::kSelection, kStereo, {}},
    {kSVCmdCBRadio, "cbradio", kSVCBRadioLabel, kProcesses, C::kSelection, kDoc, {}},
    {kSVCmdTempo, "tempo", "Tempo ändern", kProcesses, C::kSelection, kDoc, {{A::kNumber, "PROZENT"}}},
    {kSVCmdPitch, "tonhoehe", "Tonhöhe ändern", kProcesses, C::kSelection, kDoc,
     {{A::kNumber, "HALBTÖNE"}, {A::kNumber, "CENT", true}}},
    {kSVCmdSpeed, "geschwindigkeit", "Tempo und Tonhöhe ändern", kProcesses, C::kSelection, kDoc,
     {{A::kNumber, "PROZENT"}}},
    {kSVCmdVoicePitch, "stimmpitch", "Tonhöhe ändern", kProcesses, C::kSelection, kDoc,
     {{A::kNumber, "HALBTÖNE"}, {A::kNumber, "CENT", true}}},
    {kSVCmdPSProfile, "profil", kSVPSProfileLabel, kProcesses, C::kSelection, kDoc,
     {{A::kTexts, "ANTEIL%=TEMPO%[:HALBTÖNE]"}}},
    {kSVCmdClickPop, "clickpop", kSVClickPopLabel, kProcesses, C::kSelection, kDoc,
     {{A::kNumber, "EMPFINDLICHKEIT", true}, {A::kNumber, "MS", true}}},
    {kSVCmdRepair, "reparieren", kSVManualClickPopLabel, kProcesses, C::kSelection, kSel, {}},
    {kSVCmdNoiseProfile, "rauschprofil", "Rauschprofil aufnehmen", kProcesses, C::kSelection, kSel, {}},
    {kSVCmdNoiseReduce, "rauschreduzierung", kSVNoiseReduceLabel, kProcesses, C::kSelection, kDoc,
     {{A::kNumber, "DB", true}, {A::kNumber, "EMPFINDLICHKEIT", true}}},
    {kSVCmdMp3Gain, "mp3gain", kSVNormalizeLosslessLabel, kProcesses, C::kDocument, kDoc, {{A::kNumber, "DB"}}},
    {kSVCmdFadeIn, "fadein", "Einblenden", kProcesses, C::kSelection, kDoc, {}},
    {kSVCmdFadeOut, "fadeout", "Ausblenden", kProcesses, C::kSelection, kDoc, {}},
    {kSVCmdDcOffset, "dcoffset", "Korrektur des Gleichspannungsversatzes", kProcesses, C::kSelection, kDoc, {}},
    {kSVCmdAutoTrim, "autotrim", "AutoTrimmen", kProcesses, C::kSelection, kDoc, {}},
    {kSVCmdSwap, "swap", "Kanalwechsel", kProcesses, C::kSelection, kStereo, {}},
    {kSVCmdInvert, "invert", "Kanal invertieren", kProcesses, C::kSelection, kDoc, {}},
    {kSVCmdJoin, "join", "Kanäle zusammenführen", kProcesses, C::kSelection, kStereo, {}},
    {kSVCmdPan, "pan", "Stereoschwenk", kProcesses, C::kSelection, kStereo, {{A::kNumber, "WERT"}}},
    {kSVCmdChannels, "channels", kSVConvertChannelsLabel, kProcesses, C::kDocument, kDoc, {{A::kNumber, "KANÄLE"}}},
    {kSVCmdEffect, "effect", "Effekt", kEffects, C::kSelection, kDoc,
     {{A::kText, "NAME"}, {A::kTexts, "PARAMETER=WERT", true}}},
    {kSVCmdEffectList, "effect list|effects", "Effekte auflisten", kEffects, C::kNothing, 0, {}},
    {kSVCmdChain, "chain", "Effektkette", kEffects, C::kSelection, kDoc, {{A::kText, "DATEI.ecf"}}},
    {kSVCmdChainSave, "chain save", "Effektkette speichern", kEffects, C::kNothing, 0, {{A::kText, "DATEI.ecf"}}},
    {kSVCmdUndo, "undo", "Rückgängig", kHistory, C::kDocument, kDoc, {}},
    {kSVCmdRedo, "redo", "Wiederholen", kHistory, C::kDocument, kDoc, {}},
    {kSVCmdRevert, "revert", "Wiederherstellen", kHistory, C::kDocument, kDoc, {}},
    {kSVCmdHistory, "history", "Verlauf", kHistory, C::kDocument, kDoc, {}},
    {kSVCmdBookmarkAdd, "bookmark add", kSVBookmarkAddLabel, kMarks, C::kCursor, kDoc,
     {{A::kText, "NAME"}, {A::kTime, "ZEIT", true}}},
    {kSVCmdBookmarkDelete, "bookmark del|bookmark delete", kSVBookmarkDeleteLabel, kMarks, C::kDocument, kDoc,
     {{A::kText, "NAME"}}},
    {kSVCmdBookmarks, "bookmarks", "Lesezeichen", kMarks, C::kDocument, kDoc, {}},
    {kSVCmdRegionAdd, "region add", kSVRegionAddLabel, kMarks, C::kDocument, kDoc,
     {{A::kText, "NAME"}, {A::kTime, "ANFANG"}, {A::kTime, "ENDE"}}},
    {kSVCmdRegions, "regions", "Regionen", kMarks, C::kNothing, kDoc, {}},
    {kSVCmdTags, "tags", "Tags", kMetadata, C::kDocument, kDoc, {}},
    {kSVCmdTag, "tag", "Tag setzen", kMetadata, C::kDocument, kDoc, {{A::kText, "SCHLÜSSEL=WERT"}}},
    {kSVCmdSave, "save", "Speichern", kFiles, C::kDocument, kDoc, {{A::kText, "PFAD", true}}, kSaveOptions},
    {kSVCmdSaveAs, "saveas", "Speichern unter", kFiles, C::kDocument, kDoc, {{A::kText, "PFAD"}}, kSaveOptions},
    {kSVCmdProjectSave, "project save", "Projekt speichern", kFiles, C::kNothing, 0, {{A::kText, "P.svp"}}},
    {kSVCmdProjectOpen, "project open", "Projekt öffnen", kFiles, C::kNothing, 0, {{A::kText, "P.svp"}}},
    {kSVCmdPlay, "play", "Wiedergabe", kPlayback, C::kSelection, kDoc,
     {{A::kTime, "ANFANG", true}, {A::kTime, "ENDE", true}}},
    {kSVCmdStop, "stop", "Wiedergabe anhalten", kPlayback, C::kNothing, 0, {}},
    {kSVCmdRecord, "record", "Aufnahme", kPlayback, C::kCursor, 0, {{A::kTime, "LÄNGE"}}},
    {kSVCmdStatus, "status", "Status", kOther, C::kDocument, kDoc, {}},
    {kSVCmdLoudness, "loudness|lautheit", "Lautheit", kOther, C::kSelection, kDoc, {}},
    {kSVCmdHelp, "hilfe|help", "Hilfe", kOther, C::kNothing, 0, {}},
    {kSVCmdQuit, "quit|exit|beenden", "Beenden", kOther, C::kNothing, 0, {}},
};

// The first of the alternatives of a row's words.
std::string FirstWord(const char* words) {
  const std::string all = words;
  return all.substr(0, all.find('|'));
}

}  // namespace

std::span<const SVCommandInfo> SVCommandTable() { return kTable; }

const SVCommandInfo* SVCommandFind(int id) {
  const auto it = std::find_if(std::begin(kTable), std::end(kTable), [id](const SVCommandInfo& c) { return c.id == id; });
  return it == std::end(kTable) ? nullptr : &*it;
}

std::string SVCommandUsage(const SVCommandInfo& info) {
  std::string usage = FirstWord(info.word);
  for (const SVArgSpec& arg : info.args) {
    if (arg.kind == SVArgKind::kNone) break;
    const std::string name = arg.kind == SVArgKind::kTexts ? std::string(arg.name) + " ..." : arg.name;
    usage += arg.optional ? " [" + name + "]" : " " + name;
  }
  // Options show with their values, each optional.
  std::string options = info.options;
  for (std::size_t at = 0; at < options.size();) {
    std::size_t end = options.find(' ', at);
    if (end == std::string::npos) end = options.size();
    std::string option = options.substr(at, end - at);
    at = end + 1;
    if (at < options.size() && options.compare(at, 2, "--") != 0) {
      end = options.find(' ', at);
      if (end == std::string::npos) end = options.size();
      option += " " + options.substr(at, end - at);
      at = end + 1;
    }
    usage += " [" + option + "]";
  }
  return usage;
}

std::string SVCommandHelpText() {
  std::string text = "Befehle (mehrere mit \";\" trennen; Zeiten wie 1:02.5, 90 oder 4410f):\n";
  std::string group;
  std::size_t lineStart = 0;
  for (const SVCommandInfo& c : kTable) {
    const std::string usage = SVCommandUsage(c);
    if (group != c.group) {
      group = c.group;
      text += "  " + group + ":";
      text.append(std::max<std::size_t>(1, 12 - group.size()), ' ');
      lineStart = text.size();
      text += usage + "\n";
      continue;
    }
    // Lines stay within a terminal's width; a long one continues under its first command.
    const std::size_t lineLength = text.size() - 1 - text.rfind('\n', text.size() - 2);
    if (lineLength + 3 + usage.size() > 110) {
      text += std::string(lineStart - text.rfind('\n', lineStart) - 1, ' ') + usage + "\n";
    } else {
      text.insert(text.size() - 1, " | " + usage);
    }
  }
  return text;
}
