// Damaged project files: whatever the bytes, the loader neither crashes nor
// leaks; it loads what it can read and says that the file is damaged.
#include <filesystem>

#include "app/project_chunks.h"
#include "app/project_messages.h"
#include "base/memory_stream.h"
#include "base/sdf_format.h"
#include "base/sdf_writer.h"
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
    WriteFileBytes(inside + "/n.txt", std::vector<unsigned char>{1, 2, 3, 4, 5});
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

TEST_F(ProjectDamageTest, AnSdfKeyStoredByPathOrEmbeddedIsLeftOutAndTheProjectSavesAgain) {
  // Only an SDF file's entry carries a key that starts with "sdf/"; stored any
  // other way, the next save would read the file as SDF and fail.
  LMemoryStream stream;
  LSDFWriter w;
  ASSERT_TRUE(w.Open(stream, kSDFFileTypeProject, kSDFDataVersionProject));
  w.StartContainer(kSVProjectDocuments);
  w.StartContainer(kSVProjectDocument);
  w.WriteString(kSVDocumentPath, "/music/a.wav");
  w.StartContainer(kSVDocumentAssociatedFiles);
  w.StartContainer(kSVAssociatedFile);
  w.WriteString(kSVAssociatedFileKey, "sdf/verweis");
  w.WriteString(kSVAssociatedFilePath, "/nirgends/verweis.sdf");
  w.EndContainer(kSVAssociatedFile);
  w.StartContainer(kSVAssociatedFile);
  w.WriteString(kSVAssociatedFileKey, "sdf/eingebettet");
  w.StartContainer(kSVAssociatedFileEmbedded);
  w.WriteString(kSVEmbeddedExtension, "txt");
  const unsigned char text[] = {'k', 'e', 'i', 'n', ' ', 'S', 'D', 'F'};
  w.WriteBlob(kSVEmbeddedContent, text, sizeof text);
  w.EndContainer(kSVAssociatedFileEmbedded);
  w.EndContainer(kSVAssociatedFile);
  w.StartContainer(kSVAssociatedFile);
  w.WriteString(kSVAssociatedFileKey, "gut");
  w.WriteString(kSVAssociatedFilePath, "/irgendwo/gut.txt");
  w.EndContainer(kSVAssociatedFile);
  w.EndContainer(kSVDocumentAssociatedFiles);
  w.EndContainer(kSVProjectDocument);
  w.EndContainer(kSVProjectDocuments);
  ASSERT_TRUE(w.Close());

  LArray<LStringLong> messages;
  ASSERT_EQ(LoadFromMemory(Windows(), stream.Bytes(), &messages), kLProcessSuccess);
  EXPECT_TRUE(SaysDamaged(messages));
  ASSERT_EQ(Windows().FileWindowCount(), 1);
  const SVFileProjectState& state = Windows().FileWindowAt(0, 0)->File()->ProjectState();
  ASSERT_EQ(state.associatedFiles.size(), 1u);
  EXPECT_EQ(state.associatedFiles.at("gut").path, "/irgendwo/gut.txt");
  EXPECT_FALSE(std::filesystem::exists(temp_.File("carried")));
  const std::vector<unsigned char> saved = SaveToMemory(Windows(), false);
  EXPECT_NE(SdfDump(saved).find("valid type 26 version 7"), std::string::npos);
}

}  // namespace
