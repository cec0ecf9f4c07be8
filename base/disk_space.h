#pragma once
// Free space of the volume that holds a path, with a seam so tests can pretend
// any amount without filling a disk.
#include <functional>

// Bytes free for an unprivileged writer on the volume holding path; -1 when unknown.
[[nodiscard]] long long LDiskFreeBytes(const char* path);

// Replaces the measure (an empty function restores the real one). Tests only.
void LDiskFreeBytesOverride(std::function<long long(const char*)> measure);
