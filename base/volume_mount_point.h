#pragma once
// The folder at which the volume holding a path is mounted, for messages that
// name a volume.
#include "base/string_long.h"

// The mount point of the volume holding path (the nearest existing parent is
// used when path does not exist yet); "/" when nothing better is known.
[[nodiscard]] LStringLong LVolumeMountPoint(const char* path);
