#pragma once
// Listing the files of one folder whose names end with an extension.
#include <functional>

// Calls visit with the bare name (no folder) of every entry of folder whose name
// ends with extension (".aud"; the match is exact, so ".audinfo" is not ".aud").
// The order is the file system's. False when the folder cannot be read.
bool LFolderListFiles(const char* folder, const char* extension, const std::function<void(const char* name)>& visit);
