#pragma once
// Per-user folders, following the XDG base directory rules.
#include "base/string_long.h"

// $XDG_DATA_HOME/sonvale, else ~/.local/share/sonvale.
[[nodiscard]] LStringLong LUserDataFolder();
// $XDG_CONFIG_HOME/sonvale, else ~/.config/sonvale.
[[nodiscard]] LStringLong LUserConfigFolder();
// $TMPDIR, else /tmp.
[[nodiscard]] LStringLong LTempFolder();

// Creates a folder and its parents (mode 0777 less the umask); true when it exists afterwards.
bool LFolderCreate(const LStringLong& path);
