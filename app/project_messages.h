#pragma once
// What saving and loading a project show the user: progress titles, status
// lines and messages. User-visible German texts.

// Progress titles of the commands.
inline constexpr const char* kSVProjectSaveTitle = "Projekt speichern";
inline constexpr const char* kSVProjectLoadTitle = "Projekt laden";

// Status lines of a save.
inline constexpr const char* kSVProjectStatusFiles = "Dateien speichern...";
inline constexpr const char* kSVProjectStatusFile = "Datei wird gespeichert: '%s'";
inline constexpr const char* kSVProjectStatusBookmarks = "Lesezeichen werden gespeichert...";
inline constexpr const char* kSVProjectStatusRegions = "Bereiche speichern...";
inline constexpr const char* kSVProjectStatusRegion = "Bereich speichern: %s";

// Status lines of a load.
inline constexpr const char* kSVProjectStatusLoad = "Projekt wird geladen...";
inline constexpr const char* kSVProjectStatusLoadFile = "Datei wird geladen: '%s'";
inline constexpr const char* kSVProjectStatusLoadRegions = "Bereiche werden geladen...";

// Errors of a save; %s is the path.
inline constexpr const char* kSVProjectSaveOpenError =
    "Die Projektdatei '%s' kann nicht zum Schreiben geöffnet werden.";
inline constexpr const char* kSVProjectSaveWriteError = "Die Projektdatei '%s' kann nicht geschrieben werden.";
inline constexpr const char* kSVProjectAssociatedReadError = "Die zugehörige Datei '%s' kann nicht gelesen werden.";
inline constexpr const char* kSVProjectAudioReadError =
    "Die Audiodaten im Zwischenspeicher können nicht gelesen werden: '%s'.";

// Errors and messages of a load; %s is the path, the document's name or the region's name.
inline constexpr const char* kSVProjectLoadOpenError = "Die Projektdatei '%s' kann nicht geöffnet werden.";
inline constexpr const char* kSVProjectLoadNotProject = "Die Datei '%s' ist keine Projektdatei.";
inline constexpr const char* kSVProjectLoadDamaged =
    "Die Projektdatei '%s' ist beschädigt. Es wurde geladen, was sich lesen ließ.";
inline constexpr const char* kSVProjectLoadAudioMissing =
    "Die Audiodaten von '%s' sind nicht mehr vorhanden. Die fehlenden Stellen werden als Stille wiedergegeben.";
inline constexpr const char* kSVProjectLoadRegionAudioMissing =
    "Die Audiodaten des Bereichs '%s' sind nicht mehr vorhanden. Die fehlenden Stellen werden als Stille "
    "wiedergegeben.";
inline constexpr const char* kSVProjectLoadAssociatedError =
    "Die zugehörige Datei '%s' konnte nicht wiederhergestellt werden.";
// The title of a document that has no file.
inline constexpr const char* kSVProjectUntitled = "Unbenannt";
