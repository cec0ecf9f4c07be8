#pragma once
// The keys under which the editor keeps its preferences (LUserSettings). The
// names are stored in the user's preference files; never change them.
//
// Editor settings sit in the "Settings" domain in the section below; a value "0"
// switches a feature off.

inline constexpr const char* kSVSettingsSection = "";

// Non-empty and not "0": play the document after an edit has been committed.
inline constexpr const char* kSVSettingAutoPlayback = "AutoPlaybackAfterEffects";
// "0" switches off the detection of outside changes to an open file.
inline constexpr const char* kSVSettingFileModAlert = "FileModAlert";
// Format of numbered window titles; "%autonumber%" stands for the number.
inline constexpr const char* kSVSettingFileNameFormat = "FileNameFormat";
inline constexpr const char* kSVSettingFileNameFormatDefault = "Unbenannt_%autonumber%";

// "UsageStats" domain: the last refused action and why.
inline constexpr const char* kSVUsageStatsSection = "";
inline constexpr const char* kSVUsageLastFailed = "LastFailed";
inline constexpr const char* kSVUsageLastFailedReason = "LastFailedReason";

// "RecentFileList" domain: keys "File0" (newest) to "File9".
inline constexpr const char* kSVRecentFileSection = "";
