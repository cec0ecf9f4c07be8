// sonvale cache: shows the cache folder and, with --clean, what the clean-up removed.
#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "base/process_interface.h"
#include "engine/sound_cache.h"
#include "engine/sound_cache_item.h"
#include "engine/sound_source.h"
#include "run_command.h"
#include "support/temp_folder.h"

namespace {

// Silence of a few frames: the cache stores it like any sound.
class ZeroSource final : public LSoundSourceBase {
public:
  ZeroSource() : LSoundSourceBase(8000, 1) {}
  void Read(float* buffer, long long frames) override {
    for (long long i = 0; i < frames; ++i) buffer[i] = 0.0f;
    position_ += frames;
  }
  long long GetPositionSample() const override { return position_; }
  long long GetEndSample() const override { return 300; }
  void Seek(long long frame) override { position_ = frame; }

private:
  long long position_ = 0;
};

// An unused item kept as the copy of an untouched original, made at the given time.
unsigned short KeptItem(const std::string& original, long long made) {
  LSoundCacheClockOverride([made] { return made; });
  LProcessInterfaceQuiet process;
  LSoundCacheItemHandle item;
  long long length = 0;
  EXPECT_EQ(LSoundCacheItemAdd(process, LMakeSource<ZeroSource>(), item, length), kLProcessSuccess);
  EXPECT_TRUE(LSoundCacheItemOriginalFileDetailsSet(item.Number(), original.c_str()));
  LSoundCacheClockOverride(nullptr);
  return item.Number();
}

}  // namespace

TEST(CacheCommand, ShowsTheFolderAndItsItemsAndCleaningNamesWhatWent) {
  TempFolder tmp;
  const std::string folder = tmp.File("cache");
  const std::string original = tmp.File("take.wav");
  std::ofstream(original) << "the original";
  LSoundCache::Instance().FolderSet(folder.c_str());
  const unsigned short old = KeptItem(original, LSoundCacheNow() - 400LL * 86400);
  (void)KeptItem(original, LSoundCacheNow());
  LSoundCache::Instance().FolderSet("");
  const std::vector<std::string> env = {"SONVALE_CACHE_DIR=" + folder, "XDG_CONFIG_HOME=" + tmp.File("config")};

  CommandResult shown = RunSonvale({"cache"}, env);
  EXPECT_EQ(shown.status, 0) << shown.err;
  EXPECT_NE(shown.out.find("Ordner:    " + folder + "\n"), std::string::npos) << shown.out;
  EXPECT_NE(shown.out.find("Einträge:  2\n"), std::string::npos) << shown.out;
  EXPECT_NE(shown.out.find("Ältester:  Nr. " + std::to_string(old) + ","), std::string::npos) << shown.out;

  CommandResult cleaned = RunSonvale({"cache", "--clean"}, env);
  EXPECT_EQ(cleaned.status, 0) << cleaned.err;
  EXPECT_NE(cleaned.out.find("Entfernt:  "), std::string::npos) << cleaned.out;
  EXPECT_NE(cleaned.out.find("): Nr. " + std::to_string(old)), std::string::npos) << "unused for 400 days: " << cleaned.out;

  CommandResult wrong = RunSonvale({"cache", "--alles"}, env);
  EXPECT_NE(wrong.status, 0);
  EXPECT_NE(wrong.err.find("Unbekannte Angabe \"--alles\""), std::string::npos) << wrong.err;
}
