#pragma once
// Fresh files in the user's temporary folder for data in passing: speech of
// pasted text, audio rendered for another program's paste.
#include "base/string_long.h"

// Creates a new empty file named from pattern, whose trailing "XXXXXX" is made
// unique, followed by suffix (e.g. "0XXXXXX" and ".wav"). The file is readable
// and writable by the user only. Answers its path, empty when none could be made.
[[nodiscard]] LStringLong SVTempFileCreate(const char* pattern, const char* suffix);
