// Damaged project files: whatever the bytes, the loader neither crashes nor
// leaks; it loads what it can read and says that the file is damaged.
#include <filesystem>
#include <random>

#include "app/project_messages.h"
#include "base/memory_stream.h"
#include "project_fixture.h"

namespace {

class ProjectDamageTest : public ProjectTest {
protected:
  // A small project: one document with a bookmark, a cut, an embedded file and
  // a region; full (audio carried) or link.
  std::vector<unsigned char> SmallProject(bool link) {
    SVFile& a = AddDocument(StaircaseList(24, 2), "/music/a.wav");
    a.CutList().EfDelete(5, 9);
    a.AddBookmark("Marke", 3);
    const std::string inside = temp_.File("eigene");
    std::filesystem::create_directories(inside);
    FileWrite(inside + "/n.txt", {1, 2, 3, 4, 5});
    a.ProjectState().embeddingFolder = inside;
    a.ProjectState().associatedFiles["n"].path = inside + "/n.txt";
    SVRegion region;
    region.NameSet("R");
    region.RangeSet(2, 12, 44100);
    a.CutList().EfCopy(2, 12, region.cutList);
    Windows().Project().Regions().push_back(std::move(region));
    return SaveToMemory(Windows(), link);
  }

  // Loads bytes without windows into a project of its own that goes afterwards.
  LProcessResult Load(const std::vector<unsigned char>& bytes, std::size_t size, LArray<LStringLong>& messages) {
    SVProject project;
    LSVLoadProject request(project, "/memory/p.svp");
    request.FilesFolderSet(temp_.File("carried").c_str());
    LMemoryStream stream(bytes.data(), size);
    LProcessInterfaceQuiet process;
    const LProcessResult result = SVProjectRead(process, request, stream);
    messages = request.Messages();
    EXPECT_TRUE(result == kLProcessSuccess || result == kLProcessFailed);
    if (result == kLProcessFailed) {
      EXPECT_FALSE(process.Error().empty());
    }
    // Whatever loaded can be read (its start: a damaged length may claim years).
    for (const LCountedPtr<SVFile>& file : project.Documents()) {
      LSoundSource source = file->CutList().OpenSource();
      std::vector<float> start(static_cast<std::size_t>(1000 * source.GetChannels()));
      source.Read(start.data(), 1000);
    }
    return result;
  }

  static bool SaysDamaged(const LArray<LStringLong>& messages) {
    for (const LStringLong& message : messages)
      if (message.find("beschädigt") != LStringLong::npos) return true;
    return false;
  }
};

TEST_F(ProjectDamageTest, EveryTruncationLoadsWhatItCanAndSaysSo) {
  for (bool link : {false, true}) {
    const std::vector<unsigned char> bytes = SmallProject(link);
    LArray<LStringLong> messages;
    ASSERT_EQ(Load(bytes, bytes.size(), messages), kLProcessSuccess);
    ASSERT_TRUE(messages.empty()) << messages.front();
    for (std::size_t size = 0; size < bytes.size(); ++size) {
      const LProcessResult result = Load(bytes, size, messages);
      EXPECT_TRUE(result == kLProcessFailed || SaysDamaged(messages)) << "cut at " << size << " of " << bytes.size();
    }
    while (Windows().TabCount() > 0) Windows().FileWindowClose(Windows().FileWindowAt(0, 0));
    Windows().Project().Regions().clear();
  }
}

TEST_F(ProjectDamageTest, FlippedBytesNeverCrashTheLoader) {
  const std::vector<unsigned char> bytes = SmallProject(false);
  std::mt19937 random(20240611);
  std::uniform_int_distribution<std::size_t> at(0, bytes.size() - 1);
  std::uniform_int_distribution<int> value(0, 255);
  std::uniform_int_distribution<int> count(1, 4);
  int loaded = 0;
  for (int round = 0; round < 1000; ++round) {
    std::vector<unsigned char> damaged = bytes;
    for (int n = count(random); n > 0; --n) damaged[at(random)] = static_cast<unsigned char>(value(random));
    LArray<LStringLong> messages;
    if (Load(damaged, damaged.size(), messages) == kLProcessSuccess) ++loaded;
  }
  // Most flips hit data, not the header: those files still load.
  EXPECT_GT(loaded, 600);
}

}  // namespace
