#include "base/safe_save.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "support/temp_folder.h"

namespace {

void Write(const std::string& path, const std::string& text) { std::ofstream(path, std::ios::trunc) << text; }

std::string Read(const std::string& path) {
  std::ifstream in(path);
  std::stringstream all;
  all << in.rdbuf();
  return all.str();
}

}  // namespace

TEST(SafeSave, ASaveThroughALinkReplacesTheFileItLeadsToKeepsTheLinkAndNamesTheUsersPath) {
  TempFolder tmp;
  namespace fs = std::filesystem;
  fs::create_directories(tmp.File("music"));
  fs::create_directories(tmp.File("links"));
  const std::string real = tmp.File("music/take.wav");
  Write(real, "old");
  const std::string link = tmp.File("links/take.wav");
  fs::create_symlink("../music/take.wav", link);
  const std::string chained = tmp.File("links/again.wav");
  fs::create_symlink("take.wav", chained);

  {
    LSafeSave save(chained.c_str());
    ASSERT_TRUE(save.IsReady());
    EXPECT_TRUE(fs::equivalent(fs::path(save.TempPath()).parent_path(), fs::path(real).parent_path()));
    Write(save.TempPath(), "new");
    // A failing writer names the path the user gave, not the hidden temporary file.
    LProcessInterfaceQuiet quiet;
    LSafeSaveProcess process(quiet, save);
    process.SetError(("Die Datei \"" + save.TempPath() + "\" konnte nicht geschrieben werden.").c_str());
    EXPECT_EQ(quiet.Error(), "Die Datei \"" + chained + "\" konnte nicht geschrieben werden.");
    ASSERT_TRUE(save.Commit());
  }
  EXPECT_TRUE(fs::is_symlink(link));
  EXPECT_TRUE(fs::is_symlink(chained));
  EXPECT_EQ(Read(real), "new");

  // A link whose file does not exist yet: the file is made where it leads.
  const std::string dangling = tmp.File("links/new.wav");
  fs::create_symlink("../music/new.wav", dangling);
  {
    LSafeSave save(dangling.c_str());
    ASSERT_TRUE(save.IsReady());
    Write(save.TempPath(), "fresh");
    ASSERT_TRUE(save.Commit());
  }
  EXPECT_TRUE(fs::is_symlink(dangling));
  EXPECT_EQ(Read(tmp.File("music/new.wav")), "fresh");
  EXPECT_EQ(std::distance(fs::directory_iterator(tmp.File("music")), fs::directory_iterator()), 2) << "no temporary file stayed";
}
