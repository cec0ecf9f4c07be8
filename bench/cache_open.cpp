#include "bench/cache_open.h"

#include <cstdio>
#include <cstring>

#include "base/process_interface.h"
#include "engine/sound_cache.h"
#include "engine/sound_cache_item.h"

int BenchOpenMain(int argc, char** argv, const char* program, BenchOpenFunction open) {
  bool reuse = false;
  const char* path = nullptr;
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "--reuse") == 0) {
      reuse = true;
    } else if (argv[i][0] == '-' || path) {
      path = nullptr;
      break;
    } else {
      path = argv[i];
    }
  }
  if (!path) {
    std::fprintf(stderr, "Aufruf: %s [--reuse] DATEI\n", program);
    return kBenchOpenFailed;
  }

  LSoundCache::Instance().FolderSetDefault();
  if (reuse) {
    LSoundCacheItemHandle found = LSoundCacheItemFindForOriginalFile(path);
    if (found.IsItem()) {
      std::printf("item %u frames %lld reused\n", found.Number(), LSoundCacheItemLengthGet(found.Number()));
      return kBenchOpenOK;
    }
  }

  LSoundSource source = open(path);
  if (source.IsError()) {
    std::fprintf(stderr, "%s: \"%s\" kann nicht geöffnet werden (Code %d).\n", program, path, source.GetErrorCode());
    return kBenchOpenFailed;
  }
  LProcessInterfaceQuiet process;
  LSoundCacheItemHandle item;
  long long frames = 0;
  if (LSoundCacheItemAdd(process, std::move(source), item, frames) != kLProcessSuccess) {
    std::fprintf(stderr, "%s: %s\n", program, process.Error().c_str());
    return kBenchOpenFailed;
  }
  // Without the original's details the item would go with its last reference at exit.
  if (!LSoundCacheItemOriginalFileDetailsSet(item.Number(), path)) {
    std::fprintf(stderr, "%s: die Beschreibung von Eintrag %u lässt sich nicht schreiben.\n", program, item.Number());
    return kBenchOpenFailed;
  }
  std::printf("item %u frames %lld decoded\n", item.Number(), frames);
  return kBenchOpenOK;
}
