// Saving projects: the layout of the file, the flags a full and a link save
// clear, the three forms of associated files, cancel and failure.
#include <filesystem>

#include "app/project_chunks.h"
#include "base/memory_stream.h"
#include "base/platform_file.h"
#include "base/sdf_writer.h"
#include "base/file_stream.h"
#include "project_fixture.h"
#include "support/faulty_stream.h"

namespace {

// A project of two tabs: "a.wav" and "b.wav" in the first, "c.wav" in the
// second, with bookmarks and one region.
class ProjectSaveTest : public ProjectTest {
protected:
  void Build() {
    SVFile& a = AddDocument(StaircaseList(1000, 2), "/music/a.wav");
    a.CursorSet(17);
    a.Selection().start = 100;
    a.Selection().end = 250;
    a.View() = {3, -4};
    a.AddBookmark("Anfang", 10);
    a.AddBookmark("Mitte", 500);
    AddDocument(StaircaseList(300, 1, 22050), "/music/b.wav", 0);
    AddDocument(StaircaseList(50, 2), "/music/c.wav");
    SVRegion region;
    region.NameSet("Refrain");
    region.SourceFileNameSet("a.wav");
    region.RangeSet(100, 400, 44100);
    region.value = 9;
    a.CutList().EfCopy(100, 400, region.cutList);
    Windows().Project().Regions().push_back(std::move(region));
  }
};

// The values come back through the load tests; the numbers of the chunks are what
// files already written hold, so they are pinned here.
TEST_F(ProjectSaveTest, DocumentsComeInTabOrderUnderTheChunkNumbersFilesHold) {
  Build();
  const SdfFile file = SdfParse(SaveToMemory(Windows(), false));
  ASSERT_TRUE(file.valid);
  EXPECT_EQ(file.fileType, 26u);
  EXPECT_EQ(file.dataVersion, 7);
  EXPECT_EQ(SdfIds(file.top), (std::vector<unsigned short>{1001, 1002, 1010}));
  const SdfNode* documents = SdfFind(file.top, {1001});
  ASSERT_EQ(SdfIds(documents->children), (std::vector<unsigned short>{2000, 2000, 2000}));
  const char* paths[] = {"/music/a.wav", "/music/b.wav", "/music/c.wav"};
  for (int i = 0; i < 3; ++i) {
    const SdfNode& document = documents->children[static_cast<std::size_t>(i)];
    EXPECT_EQ(SdfIds(document.children), (std::vector<unsigned short>{2001, 2012, 2002, 2003, 2004, 2005, 2006, 2007,
                                                                       2008, 2011, 2010, 5001}));
    EXPECT_EQ(SdfString(SdfFind(document.children, {2001})), paths[i]);
  }
  const std::vector<SdfNode>& a = documents->children[0].children;
  EXPECT_EQ(SdfIds(SdfFind(a, {2011, 3000})->children),
            (std::vector<unsigned short>{3001, 3002, 3003, 3004, 3005, 3006, 3007}));
  // The full form: the persisted list first, then one item's audio per item.
  const SdfNode* list = SdfFind(a, {2010});
  ASSERT_EQ(SdfIds(list->children), (std::vector<unsigned short>{1, 2}));
  EXPECT_EQ(SdfIds(list->children[1].children), (std::vector<unsigned short>{1, 2, 3, 4}));
  const std::vector<SdfNode>& region = SdfFind(file.top, {1002, 4000})->children;
  EXPECT_EQ(SdfIds(region), (std::vector<unsigned short>{4001, 4002, 4003, 4004, 4007, 4008, 4011, 4009, 4006}));
  // The region names the item a.wav already carried: its audio is not stored twice.
  EXPECT_EQ(SdfIds(SdfFind(region, {4006})->children), (std::vector<unsigned short>{1}));
}

TEST_F(ProjectSaveTest, AFullSaveClearsTheChangeFlagsAndALinkSaveKeepsThem) {
  Build();
  SVProject& project = Windows().Project();
  auto setAll = [&] {
    for (const LCountedPtr<SVFile>& file : project.Documents()) file->FlagsSet();
    project.ChangedSet(true);
    project.RegionsChangedSet(true);
    project.AutosaveDueSet(true);
  };

  setAll();
  SdfFile link = SdfParse(SaveToMemory(Windows(), true));
  ASSERT_TRUE(link.valid);
  for (int i = 0; i < 3; ++i) {
    const SdfNode& document = SdfFind(link.top, {1001})->children[static_cast<std::size_t>(i)];
    EXPECT_TRUE(SdfBool(SdfFind(document.children, {2008})));
    EXPECT_TRUE(SdfBool(SdfFind(document.children, {2007})));
    // References only.
    EXPECT_EQ(SdfFind(document.children, {2010}), nullptr);
    EXPECT_EQ(SdfIds(SdfFind(document.children, {2009})->children), (std::vector<unsigned short>{1}));
  }
  EXPECT_NE(SdfFind(link.top, {1003}), nullptr);
  EXPECT_EQ(SdfIds(SdfFind(link.top, {1002, 4000})->children).back(), 4005);
  for (const LCountedPtr<SVFile>& file : project.Documents()) EXPECT_TRUE(file->IsChanged());
  EXPECT_TRUE(project.IsChanged());
  EXPECT_TRUE(project.IsRegionsChanged());
  EXPECT_FALSE(project.IsAutosaveDue());

  setAll();
  SdfFile full = SdfParse(SaveToMemory(Windows(), false));
  ASSERT_TRUE(full.valid);
  for (const SdfNode& document : SdfFind(full.top, {1001})->children) {
    EXPECT_FALSE(SdfBool(SdfFind(document.children, {2008})));
    EXPECT_TRUE(SdfBool(SdfFind(document.children, {2007})));
  }
  EXPECT_EQ(SdfFind(full.top, {1003}), nullptr);
  for (const LCountedPtr<SVFile>& file : project.Documents()) {
    EXPECT_FALSE(file->IsChanged());
    EXPECT_TRUE(file->IsModified());
  }
  EXPECT_FALSE(project.IsChanged());
  EXPECT_FALSE(project.IsRegionsChanged());
  EXPECT_FALSE(project.IsAutosaveDue());
}

TEST_F(ProjectSaveTest, ClosingWindowsAreLeftOut) {
  Build();
  Windows().FileWindowAt(0, 1)->ClosingSet(true);
  const SdfFile file = SdfParse(SaveToMemory(Windows(), true));
  const SdfNode* documents = SdfFind(file.top, {1001});
  ASSERT_EQ(documents->children.size(), 2u);
  EXPECT_EQ(SdfString(SdfFind(documents->children[1].children, {2001})), "/music/c.wav");
  EXPECT_EQ(SdfInt(SdfFind(documents->children[1].children, {2012})), 1);
}

TEST_F(ProjectSaveTest, AssociatedFilesAreStoredInTheirThreeForms) {
  SVFile& a = AddDocument(StaircaseList(10, 1), "/music/a.wav");
  const std::string inside = temp_.File("eigene");
  std::filesystem::create_directories(inside);
  std::vector<unsigned char> content(20000);
  for (std::size_t i = 0; i < content.size(); ++i) content[i] = static_cast<unsigned char>(i * 7 + 3);
  WriteFileBytes(inside + "/notiz.txt", content);
  WriteFileBytes(temp_.File("draussen.txt"), std::vector<unsigned char>{1, 2, 3});
  // An SDF file of type 41 whose first chunk is a container with an int.
  {
    LFileStream out(LFileOpen(temp_.File("daten.sdf").c_str(), kLFileWrite | kLFileCreate | kLFileTruncate));
    LSDFWriter writer;
    ASSERT_TRUE(writer.Open(out, kSDFFileTypeProjectLoaderFile, kSDFDataVersionProjectLoaderFile));
    writer.StartContainer(77);
    writer.WriteInt(5, 1234);
    writer.EndContainer(77);
    writer.WriteInt(78, 1);  // not carried: only the first chunk is
    ASSERT_TRUE(writer.IsOK());
    writer.Close();
  }
  SVFileProjectState& state = a.ProjectState();
  state.embeddingFolder = inside;
  state.associatedFiles["text"].path = inside + "/notiz.txt";
  state.associatedFiles["fremd"].path = temp_.File("draussen.txt");
  state.associatedFiles["sdf/daten"].path = temp_.File("daten.sdf");

  SdfFile file = SdfParse(SaveToMemory(Windows(), false));
  ASSERT_TRUE(file.valid);
  const SdfNode* files = SdfFind(file.top, {1001, 2000, 5001});
  ASSERT_NE(files, nullptr);
  ASSERT_EQ(SdfIds(files->children), (std::vector<unsigned short>{101, 101, 101}));
  // Key order: "fremd", "sdf/daten", "text".
  const std::vector<SdfNode>& byPath = files->children[0].children;
  EXPECT_EQ(SdfIds(byPath), (std::vector<unsigned short>{1, 2}));
  EXPECT_EQ(SdfString(SdfFind(byPath, {1})), "fremd");
  EXPECT_EQ(SdfString(SdfFind(byPath, {2})), temp_.File("draussen.txt"));
  const std::vector<SdfNode>& sdf = files->children[1].children;
  ASSERT_EQ(SdfIds(sdf), (std::vector<unsigned short>{1, 77}));
  EXPECT_EQ(SdfString(SdfFind(sdf, {1})), "daten");
  EXPECT_EQ(SdfInt(SdfFind(sdf, {77, 5})), 1234);
  const std::vector<SdfNode>& embedded = files->children[2].children;
  ASSERT_EQ(SdfIds(embedded), (std::vector<unsigned short>{1, 3}));
  EXPECT_EQ(SdfString(SdfFind(embedded, {1})), "text");
  EXPECT_EQ(SdfString(SdfFind(embedded, {3, 1})), "txt");
  EXPECT_EQ(SdfFind(embedded, {3, 2})->type, kSDFChunkTypeBlob);
  EXPECT_EQ(SdfFind(embedded, {3, 2})->data, content);

  // With no embedding folder nothing is embedded.
  state.embeddingFolder.clear();
  file = SdfParse(SaveToMemory(Windows(), false));
  const std::vector<SdfNode>& now = SdfFind(file.top, {1001, 2000, 5001})->children[2].children;
  EXPECT_EQ(SdfIds(now), (std::vector<unsigned short>{1, 2}));
  EXPECT_EQ(SdfString(SdfFind(now, {2})), inside + "/notiz.txt");

  // A file that cannot be read fails the save.
  state.embeddingFolder = inside;
  std::filesystem::remove(inside + "/notiz.txt");
  LSVSaveProject request(Windows(), temp_.File("p.svp").c_str());
  LProcessInterfaceQuiet process;
  EXPECT_EQ(Process(process, request, false), kLProcessFailed);
  EXPECT_NE(process.Error().find("notiz.txt"), std::string::npos) << process.Error();
}

TEST_F(ProjectSaveTest, CancellingAtAnyStepAnswersOneAndTheSafeSaveKeepsTheOldFile) {
  Build();
  SVFile& a = *Windows().FileWindowAt(0, 0)->File();
  const std::string inside = temp_.File("eigene");
  std::filesystem::create_directories(inside);
  WriteFileBytes(inside + "/gross.bin", std::vector<unsigned char>(3 * 8192 + 5, 0x5a));
  a.ProjectState().embeddingFolder = inside;
  a.ProjectState().associatedFiles["gross"].path = inside + "/gross.bin";

  const std::string target = temp_.File("song.svp");
  WriteFileBytes(target, std::vector<unsigned char>{'a', 'l', 't'});
  long checks = -1;
  for (long n = 0;; ++n) {
    LProcessInterfaceQuiet process;
    process.CancelAfterChecks(n);
    LSVSaveProject request(Windows(), target.c_str());
    const LProcessResult result = SVProjectSaveSafe(process, request, false);
    if (result == kLProcessSuccess) {
      checks = n;
      break;
    }
    ASSERT_EQ(result, kLProcessCancelled) << "after " << n << " checks";
    EXPECT_EQ(FileBytes(target), (std::vector<unsigned char>{'a', 'l', 't'}));
    ASSERT_LT(n, 1000);
  }
  // Documents, bookmarks, cut lists, audio blocks, associated file blocks and regions each ask.
  EXPECT_GT(checks, 12);
  EXPECT_TRUE(SdfParse(FileBytes(target)).valid);
  EXPECT_EQ(Windows().Project().Path(), target);
  // No temporary file is left beside the target.
  int files = 0;
  for (const auto& entry : std::filesystem::directory_iterator(temp_.Path())) files += entry.is_regular_file() ? 1 : 0;
  EXPECT_EQ(files, 1);
}

TEST_F(ProjectSaveTest, ATargetThatCannotBeOpenedOrLockedFailsAndIsNotTouched) {
  Build();
  LProcessInterfaceQuiet process;
  LSVSaveProject missing(Windows(), temp_.File("fehlt/song.svp").c_str());
  EXPECT_EQ(Process(process, missing, false), kLProcessFailed);
  EXPECT_NE(process.Error().find("fehlt/song.svp"), std::string::npos);
  EXPECT_FALSE(LFileExists(temp_.File("fehlt").c_str()));

  const std::string target = temp_.File("song.svp");
  WriteFileBytes(target, std::vector<unsigned char>{'a', 'l', 't'});
  LFileStream holder(LFileOpen(target.c_str(), kLFileRead, LFileLock::Exclusive));
  ASSERT_TRUE(holder.IsOpen());
  LSVSaveProject locked(Windows(), target.c_str());
  EXPECT_EQ(Process(process, locked, false), kLProcessFailed);
  EXPECT_EQ(FileBytes(target), (std::vector<unsigned char>{'a', 'l', 't'}));
  // Nothing was cleared either: the failure came before the first document.
  EXPECT_TRUE(Windows().FileWindowAt(0, 0)->File()->IsChanged());
}

TEST_F(ProjectSaveTest, EveryWriteFailureAnswersTwoWithAReason) {
  Build();
  LMemoryStream clean;
  FaultCounts cleanCounts;
  {
    FaultyStream stream(clean, cleanCounts);
    LSVSaveProject request(Windows(), "/memory/p.svp");
    LProcessInterfaceQuiet process;
    ASSERT_EQ(SVProjectWrite(process, request, stream, false), kLProcessSuccess);
  }
  const std::vector<FaultPlan> plans = EveryFaultPlan(cleanCounts);
  ASSERT_GT(plans.size(), 100u);
  for (const FaultPlan& plan : plans) {
    LMemoryStream inner;
    FaultCounts counts;
    FaultyStream stream(inner, counts, plan);
    LSVSaveProject request(Windows(), "/memory/p.svp");
    LProcessInterfaceQuiet process;
    const LProcessResult result = SVProjectWrite(process, request, stream, false);
    if (!counts.faulted) continue;
    EXPECT_EQ(result, kLProcessFailed) << Describe(plan);
    EXPECT_FALSE(process.Error().empty()) << Describe(plan);
  }
}

}  // namespace
