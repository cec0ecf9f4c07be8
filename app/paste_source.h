#pragma once
// SVPasteSource: what Paste inserts. The last copied cut list when the
// clipboard holds our own type (no audio is copied at all); else text, spoken
// into audio by the speech engine; else AIFF audio of another program; else an
// empty cut list. Main thread only.
#include "app/front_end.h"
#include "app/system_clipboard.h"
#include "engine/cut_list_audio.h"

// Progress titles of Paste.
inline constexpr const char* kSVPasteSpeechTitle = "Laden der Ursprungsaudiodatei";
inline constexpr const char* kSVPasteAiffTitle = "Audio wird eingefügt...";
// Paste of text without a speech engine.
inline constexpr const char* kSVPasteErrorTitle = "Fehler";
inline constexpr const char* kSVSpeechMissingText =
    "Der Text kann nicht eingefügt werden: Die Sprachausgabe espeak-ng ist nicht installiert.";
inline constexpr const char* kSVSpeechFailedText = "Der Text konnte nicht in Sprache umgewandelt werden.";

class SVPasteSource {
public:
  // view shows progress and messages.
  [[nodiscard]] static LCutListAudio GetAudioFromClipboard(SVFrontEnd& view, SVSystemClipboard& board);
};
