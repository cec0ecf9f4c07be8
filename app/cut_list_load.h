#pragma once
// Loading a sound file into a cut list: the file, opened by format dispatch
// (LSoundFile), is decoded once into a new cache item and the cut list becomes
// one segment over it. An untouched file that was loaded before is found again
// in the cache and not decoded twice.
#include "base/process_interface.h"
#include "engine/cut_list_audio.h"
#include "engine/sound_source.h"
#include "formats/sound_file_info.h"

// keepCopy: the item remembers the file, so that it stays in the cache as its
// decoded copy and is reused on the next load (not for temporary files). On
// failure out is an empty list and the reason is set on process. info, when
// given, receives the file's format and tags (read from its headers when the
// cached copy is used), so that nobody opens the file again for them.
[[nodiscard]] LProcessResult SVCutListLoadFile(LProcessInterface& process, const char* path, LCutListAudio& out,
                                               bool keepCopy = true, LSoundFileInfo* info = nullptr);

// Decodes an opened source into a new cache item and makes out one segment over
// it; an error source fails with the opener's message for path.
[[nodiscard]] LProcessResult SVCutListLoadSource(LProcessInterface& process, LSoundSource source, const char* path,
                                                 LCutListAudio& out);
