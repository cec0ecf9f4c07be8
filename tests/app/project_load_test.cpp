// Loading projects: documents and regions come back as they were saved, also
// after the cache was emptied; audio that is gone loads as silence with a
// message; a second save writes what the first wrote, chunks this build does
// not know included.
#include <algorithm>
#include <cstring>
#include <filesystem>

#include "app/project_chunks.h"
#include "app/project_messages.h"
#include "base/file_stream.h"
#include "base/memory_stream.h"
#include "base/platform_file.h"
#include "base/sdf_reader.h"
#include "base/sdf_reader_chunk_iterator.h"
#include "base/sdf_writer.h"
#include "engine/cut_list_segment.h"
#include "project_fixture.h"

namespace {

struct Expected {
  std::string path;
  int tab;
  std::vector<float> samples;
  int channels;
  std::uint32_t rate;
  long long cursor;
  long long selectionStart;
  long long selectionEnd;
  SVViewState view;
  bool modified;
  bool changed;
  std::vector<std::pair<std::string, long long>> bookmarks;
  std::vector<std::tuple<long long, float, long long>> segments;  // length, gain, offset
};

std::vector<std::tuple<long long, float, long long>> SegmentsOf(const LCutListAudio& list) {
  std::vector<std::tuple<long long, float, long long>> out;
  for (const LCutListSegment& segment : list.Segments())
    out.emplace_back(segment.length, segment.gain, segment.IsSilence() ? 0 : segment.offset);
  return out;
}

class ProjectLoadTest : public ProjectTest {
protected:
  // Three documents in two tabs over edited staircases (a cut, an insert from
  // another item, a segment at half gain, silence), bookmarks, two regions.
  void Build() {
    LCutListAudio ramp = DocListOf(std::vector<float>(600, 0.25f), 2);
    SVFile& a = AddDocument(StaircaseList(3000, 2), "/music/a.wav");
    a.CutList().EfDelete(100, 300);
    a.CutList().EfInsert(1000, ramp);
    LCutListSegment half = ramp.Segments().front();
    half.gain = 0.5f;
    half.offset = 100;
    half.length = 200;
    LCutListAudio halfList;
    halfList.SetFormat(44100, 2);
    halfList.SegmentAppend(half);
    a.CutList().EfInsert(50, halfList);
    a.CutList().EfInsertSilence(20, 33);
    a.CursorSet(1234);
    a.Selection().start = 5;
    a.Selection().end = 900;
    a.View() = {77, 88};
    a.AddBookmark("Eins", 10);
    a.AddBookmark("Zwei", 2000);

    SVFile& b = AddDocument(StaircaseList(700, 1, 22050), "/music/b.wav", 0);
    b.CutList().EfTrim(100, 600);
    b.SetFileClean();
    b.ChangedSet(false);

    SVFile& c = AddDocument(StaircaseList(500, 2), "");
    c.AddBookmark("Drei", 3);

    SVRegion chorus;
    chorus.NameSet("Refrain");
    chorus.SourceFileNameSet("a.wav");
    chorus.RangeSet(40, 1500, 44100);
    chorus.value = -3;
    a.CutList().EfCopy(40, 1500, chorus.cutList);
    SVRegion outro;
    outro.NameSet("Schluss");
    outro.RangeSet(100, 400, 22050);
    b.CutList().EfCopy(100, 400, outro.cutList);
    Windows().Project().Regions().push_back(std::move(chorus));
    Windows().Project().Regions().push_back(std::move(outro));
    Windows().Project().RegionListShownSet(true);
  }

  std::vector<Expected> ExpectedDocuments() {
    std::vector<Expected> out;
    for (int tab = 0; tab < Windows().TabCount(); ++tab) {
      for (int i = 0; i < Windows().TabFileWindowCount(tab); ++i) {
        SVFile& file = *Windows().FileWindowAt(tab, i)->File();
        Expected e{file.Path(), tab, DocReadAll(file.CutList()), file.CutList().GetChannels(),
                   file.CutList().GetSampleRate(), file.Cursor(), file.Selection().start, file.Selection().end,
                   file.View(), file.IsModified(), file.IsChanged(), {}, SegmentsOf(file.CutList())};
        for (const LSVBookmark& bookmark : file.Bookmarks()) e.bookmarks.emplace_back(bookmark.name, bookmark.position);
        out.push_back(std::move(e));
      }
    }
    return out;
  }

  void CheckDocuments(SVWindowManager& windows, const std::vector<Expected>& expected) {
    std::size_t next = 0;
    for (int tab = 0; tab < windows.TabCount(); ++tab) {
      for (int i = 0; i < windows.TabFileWindowCount(tab); ++i, ++next) {
        ASSERT_LT(next, expected.size());
        const Expected& e = expected[next];
        SVFile& file = *windows.FileWindowAt(tab, i)->File();
        SCOPED_TRACE(e.path);
        EXPECT_EQ(file.Path(), e.path);
        EXPECT_EQ(tab, e.tab);
        EXPECT_EQ(file.CutList().GetChannels(), e.channels);
        EXPECT_EQ(file.CutList().GetSampleRate(), e.rate);
        EXPECT_EQ(DocReadAll(file.CutList()), e.samples);
        EXPECT_EQ(SegmentsOf(file.CutList()), e.segments);
        EXPECT_EQ(file.Cursor(), e.cursor);
        EXPECT_EQ(file.Selection().start, e.selectionStart);
        EXPECT_EQ(file.Selection().end, e.selectionEnd);
        EXPECT_EQ(file.View(), e.view);
        EXPECT_EQ(file.IsModified(), e.modified);
        EXPECT_EQ(file.IsChanged(), e.changed);
        std::vector<std::pair<std::string, long long>> bookmarks;
        for (const LSVBookmark& bookmark : file.Bookmarks()) bookmarks.emplace_back(bookmark.name, bookmark.position);
        EXPECT_EQ(bookmarks, e.bookmarks);
        // The base entry, as for an opened file.
        EXPECT_STREQ(file.UndoEntry(file.UndoIndexCurrent()).description,
                     MainDialog::InitialActionLabel(MainDialog::kInitialLoad));
      }
    }
    EXPECT_EQ(next, expected.size());
  }

  void CloseAll(SVWindowManager& windows) {
    while (windows.TabCount() > 0) windows.FileWindowClose(windows.FileWindowAt(0, 0));
    windows.Project().Regions().clear();
  }
};

TEST_F(ProjectLoadTest, AFullSaveOpensAfterTheCacheWasEmptiedAndPlaysExactlyAsBefore) {
  Build();
  const std::string path = temp_.File("song.svp");
  ASSERT_EQ(SVProjectSave(Windows(), path.c_str(), false), kLProcessSuccess) << frontEnd_.lastError;
  EXPECT_EQ(frontEnd_.processTitles.back(), kSVProjectSaveTitle);
  // As saved: the full save cleared the documents' change flags.
  const std::vector<Expected> documents = ExpectedDocuments();
  std::vector<std::vector<float>> regionSamples;
  for (const SVRegion& region : Windows().Project().Regions()) regionSamples.push_back(DocReadAll(region.cutList));
  const LSVBookmark firstBookmark = Windows().FileWindowAt(0, 0)->File()->Bookmarks().front();
  CloseAll(Windows());
  ASSERT_EQ(LSoundCache::Instance().CountedItemCount(), 0);
  CacheEmpty();
  ASSERT_EQ(CacheAudioFiles(), 0);

  SVWindowManager loaded(frontEnd_);
  ASSERT_EQ(SVProjectOpen(loaded, path.c_str()), kLProcessSuccess) << frontEnd_.lastError;
  EXPECT_EQ(frontEnd_.processTitles.back(), kSVProjectLoadTitle);
  EXPECT_TRUE(frontEnd_.alerts.empty());
  EXPECT_TRUE(frontEnd_.windowMessages.empty());
  ASSERT_EQ(loaded.TabCount(), 2);
  EXPECT_EQ(loaded.TabFileWindowCount(0), 2);
  CheckDocuments(loaded, documents);

  const LSVBookmark& bookmark = loaded.FileWindowAt(0, 0)->File()->Bookmarks().front();
  EXPECT_STREQ(bookmark.sourceFileName, firstBookmark.sourceFileName);
  EXPECT_EQ(bookmark.creationTime, firstBookmark.creationTime);
  EXPECT_EQ(bookmark.identifier, firstBookmark.identifier);
  EXPECT_EQ(bookmark.sampleRate, firstBookmark.sampleRate);
  EXPECT_EQ(bookmark.positionMs, firstBookmark.positionMs);
  EXPECT_EQ(bookmark.enabled, 1);

  SVProject& project = loaded.Project();
  ASSERT_EQ(project.Regions().size(), 2u);
  const SVRegion& chorus = project.Regions().front();
  EXPECT_STREQ(chorus.name, "Refrain");
  EXPECT_STREQ(chorus.sourceFileName, "a.wav");
  EXPECT_EQ(chorus.start, 40);
  EXPECT_EQ(chorus.end, 1500);
  EXPECT_EQ(chorus.startMs, 0);
  EXPECT_EQ(chorus.endMs, 34);
  EXPECT_EQ(chorus.sampleRate, 44100);
  EXPECT_EQ(chorus.value, -3);
  std::size_t r = 0;
  for (const SVRegion& region : project.Regions()) EXPECT_EQ(DocReadAll(region.cutList), regionSamples[r++]);
  EXPECT_TRUE(project.IsRegionListShown());
  EXPECT_EQ(project.Path(), path);
  EXPECT_FALSE(project.IsChanged());
  // Documents share the project's region list for their undo snapshots.
  EXPECT_EQ(loaded.FileWindowAt(0, 0)->File()->RegionList(), project.RegionListPtr());
  EXPECT_EQ(project.Documents().size(), 3u);
  CloseAll(loaded);
}

TEST_F(ProjectLoadTest, ALinkSaveNamesLiveItemsAndAudioThatIsGoneLoadsAsSilenceWithAMessage) {
  Build();
  Windows().Project().PathSet("/memory/project.svp");
  const std::vector<Expected> documents = ExpectedDocuments();
  const std::vector<unsigned char> link = SaveToMemory(Windows(), true);

  {
    // While the items live the link loads as it was, with the same item numbers.
    SVWindowManager loaded(frontEnd_);
    LArray<LStringLong> messages;
    ASSERT_EQ(LoadFromMemory(loaded, link, &messages), kLProcessSuccess);
    EXPECT_TRUE(messages.empty());
    CheckDocuments(loaded, documents);
    EXPECT_EQ(SaveToMemory(loaded, true), link);
    CloseAll(loaded);
  }

  // b's audio goes: its window and the region copied from it are the only holders.
  SVFileGUI* b = Windows().FileWindowAt(0, 1);
  const LStringLong bPath = b->File()->Path();
  Windows().FileWindowClose(b);
  Windows().Project().Regions().pop_back();
  frontEnd_.windowMessages.clear();

  SVWindowManager loaded(frontEnd_);
  LArray<LStringLong> messages;
  ASSERT_EQ(LoadFromMemory(loaded, link, &messages), kLProcessSuccess);
  ASSERT_EQ(messages.size(), 2u);
  char text[1024];
  std::snprintf(text, sizeof text, kSVProjectLoadAudioMissing, "b.wav");
  EXPECT_EQ(messages[0], text);
  EXPECT_NE(messages[0].find("Stille"), std::string::npos);
  std::snprintf(text, sizeof text, kSVProjectLoadRegionAudioMissing, "Schluss");
  EXPECT_EQ(messages[1], text);
  EXPECT_EQ(frontEnd_.windowMessages, std::vector<std::string>{messages[0]});

  ASSERT_EQ(loaded.FileWindowCount(), 3);
  const SVFile& silent = *loaded.FileWindowAt(0, 1)->File();
  EXPECT_EQ(silent.Path(), bPath);
  EXPECT_EQ(silent.CutList().GetLength(), static_cast<long long>(documents[1].samples.size()));
  const std::vector<float> zeros(documents[1].samples.size(), 0.0f);
  EXPECT_EQ(DocReadAll(silent.CutList()), zeros);
  // The others load as they were.
  EXPECT_EQ(DocReadAll(loaded.FileWindowAt(0, 0)->File()->CutList()), documents[0].samples);
  EXPECT_EQ(DocReadAll(loaded.FileWindowAt(1, 0)->File()->CutList()), documents[2].samples);
  EXPECT_EQ(DocReadAll(loaded.Project().Regions().front().cutList),
            DocReadAll(Windows().Project().Regions().front().cutList));
  CloseAll(loaded);
}

TEST_F(ProjectLoadTest, SavingWhatWasLoadedWritesTheSameContent) {
  Build();
  SVFile& a = *Windows().FileWindowAt(0, 0)->File();
  const std::string inside = temp_.File("eigene");
  std::filesystem::create_directories(inside);
  std::vector<unsigned char> content(3 * 8192 + 77);
  for (std::size_t i = 0; i < content.size(); ++i) content[i] = static_cast<unsigned char>((i * 31) >> 3);
  WriteFileBytes(inside + "/bild.png", content);
  {
    LFileStream out(LFileOpen((inside + "/werte.sdf").c_str(), kLFileWrite | kLFileCreate | kLFileTruncate));
    LSDFWriter writer;
    ASSERT_TRUE(writer.Open(out, kSDFFileTypeProjectLoaderFile, kSDFDataVersionProjectLoaderFile));
    writer.WriteString(40, "Einstellung");
    writer.Close();
  }
  a.ProjectState().embeddingFolder = inside;
  a.ProjectState().associatedFiles["bild"].path = inside + "/bild.png";
  a.ProjectState().associatedFiles["sdf/werte"].path = inside + "/werte.sdf";
  a.ProjectState().associatedFiles["woanders"].path = "/irgendwo/anders.txt";

  const std::vector<unsigned char> first = SaveToMemory(Windows(), false);
  SVWindowManager loaded(frontEnd_);
  ASSERT_EQ(LoadFromMemory(loaded, first), kLProcessSuccess);
  const std::vector<unsigned char> second = SaveToMemory(loaded, false);
  EXPECT_EQ(SdfDump(first), SdfDump(second));
  EXPECT_NE(SdfDump(first).find("valid type 26 version 7"), std::string::npos);

  // The embedded file came back byte for byte, into a folder that embeds it again.
  const SVFileProjectState& state = loaded.FileWindowAt(0, 0)->File()->ProjectState();
  ASSERT_EQ(state.associatedFiles.size(), 3u);
  EXPECT_EQ(FileBytes(state.associatedFiles.at("bild").path), content);
  EXPECT_EQ(state.associatedFiles.at("bild").path.rfind(".png"), state.associatedFiles.at("bild").path.size() - 4);
  EXPECT_EQ(state.associatedFiles.at("bild").path.find(state.embeddingFolder), 0u);
  EXPECT_EQ(state.associatedFiles.at("woanders").path, "/irgendwo/anders.txt");
  const SdfFile sdf = SdfParse(FileBytes(state.associatedFiles.at("sdf/werte").path));
  ASSERT_TRUE(sdf.valid);
  EXPECT_EQ(sdf.fileType, kSDFFileTypeProjectLoaderFile);
  EXPECT_EQ(SdfString(SdfFind(sdf.top, {40})), "Einstellung");
  CloseAll(loaded);
}

// A project as a newer build might write it, with chunks this build does not
// know at every level: first, between known ones and last.
std::vector<unsigned char> NewerProject() {
  LMemoryStream stream;
  LSDFWriter w;
  EXPECT_TRUE(w.Open(stream, kSDFFileTypeProject, kSDFDataVersionProject));
  w.WriteInt(900, 1);
  w.StartContainer(kSVProjectDocuments);
  w.WriteString(1500, "vorne");
  w.StartContainer(kSVProjectDocument);
  w.WriteString(kSVDocumentPath, "/music/neu.wav");
  w.WriteInt64(2500, 5);
  w.WriteInt(kSVDocumentTab, 0);
  w.WriteInt64(kSVDocumentCursor, 12);
  w.WriteInt64(kSVDocumentSelectionStart, 2);
  w.WriteInt64(kSVDocumentSelectionEnd, 8);
  w.WriteInt64(kSVDocumentViewFirst, 1);
  w.WriteInt64(kSVDocumentViewSecond, 2);
  w.WriteBool(kSVDocumentModified, true);
  w.WriteBool(kSVDocumentChanged, false);
  w.StartContainer(kSVDocumentBookmarks);
  w.WriteInt(2600, 7);
  w.StartContainer(kSVProjectBookmark);
  w.WriteString(kSVBookmarkName, "Marke");
  w.WriteString(kSVBookmarkSourceFileName, "neu.wav");
  w.WriteInt64(kSVBookmarkPosition, 40);
  w.WriteInt(kSVBookmarkSampleRate, 44100);
  w.WriteInt(kSVBookmarkIdentifier, 3);
  w.WriteInt(kSVBookmarkEnabled, 0);
  w.StartContainer(3500);
  w.WriteFloat(1, 2.5f);
  w.EndContainer(3500);
  w.StartChunk(kSVBookmarkCreationTime, kSDFChunkTypeRecord);
  const long long time = 1700000000;
  w.WriteData(&time, sizeof time);
  w.EndChunk(kSVBookmarkCreationTime);
  w.EndContainer(kSVProjectBookmark);
  w.WriteInt(2601, 8);
  w.EndContainer(kSVDocumentBookmarks);
  w.StartContainer(kSVDocumentCutList);
  const std::vector<unsigned char> list =
      PersistedList(44100, 1, {{7, 60, 1.0f, 10}, {65535, 5, 1.0f, 0}, {7, 30, 0.5f, 0}});
  w.WriteBlob(kSVCutListPersisted, list.data(), list.size());
  w.StartContainer(kSVCutListItem);
  w.WriteInt(kSVCutListItemNumber, 7);
  w.WriteInt(kSVCutListItemSampleRate, 44100);
  w.WriteInt(kSVCutListItemChannels, 1);
  const std::vector<float> audio = DocStaircase(70, 1);
  w.WriteBlob(kSVCutListItemFrames, reinterpret_cast<const unsigned char*>(audio.data()), audio.size() * sizeof(float));
  w.EndContainer(kSVCutListItem);
  w.WriteString(2700, "hinten in der Liste");
  w.EndContainer(kSVDocumentCutList);
  w.StartContainer(kSVDocumentAssociatedFiles);
  w.StartContainer(kSVAssociatedFile);
  w.WriteString(kSVAssociatedFileKey, "verweis");
  w.WriteInt(5100, 4);
  w.WriteString(kSVAssociatedFilePath, "/x/y.txt");
  w.EndContainer(kSVAssociatedFile);
  w.WriteInt(5200, 3);
  w.EndContainer(kSVDocumentAssociatedFiles);
  w.WriteInt64(2501, 6);
  w.EndContainer(kSVProjectDocument);
  w.WriteString(1501, "hinten");
  w.EndContainer(kSVProjectDocuments);
  w.WriteInt(901, 2);
  w.StartContainer(kSVProjectRegions);
  w.StartContainer(kSVProjectRegion);
  w.WriteString(kSVRegionName, "Teil");
  w.WriteString(kSVRegionSourceFileName, "neu.wav");
  w.WriteInt64(kSVRegionStartMs, 0);
  w.WriteInt64(4500, 9);
  w.WriteInt64(kSVRegionEndMs, 1);
  w.WriteInt64(kSVRegionStart, 10);
  w.WriteInt64(kSVRegionEnd, 60);
  w.WriteInt(kSVRegionSampleRate, 44100);
  w.WriteInt(kSVRegionValue, 5);
  w.StartContainer(kSVRegionCutList);
  w.WriteInt(4600, 1);
  const std::vector<unsigned char> regionList = PersistedList(44100, 1, {{7, 50, 1.0f, 20}});
  w.WriteBlob(kSVCutListPersisted, regionList.data(), regionList.size());
  w.EndContainer(kSVRegionCutList);
  w.EndContainer(kSVProjectRegion);
  w.WriteInt(1502, 3);
  w.EndContainer(kSVProjectRegions);
  w.WriteBool(kSVProjectRegionListShown, false);
  w.WriteString(902, "ganz hinten");
  EXPECT_TRUE(w.IsOK());
  w.Close();
  return stream.Bytes();
}

TEST_F(ProjectLoadTest, ChunksThisBuildDoesNotKnowComeBackWhereTheyStood) {
  const std::vector<unsigned char> newer = NewerProject();
  SVWindowManager loaded(frontEnd_);
  LArray<LStringLong> messages;
  ASSERT_EQ(LoadFromMemory(loaded, newer, &messages), kLProcessSuccess);
  EXPECT_TRUE(messages.empty());
  ASSERT_EQ(loaded.FileWindowCount(), 1);
  const SVFile& file = *loaded.FileWindowAt(0, 0)->File();
  EXPECT_STREQ(file.Path(), "/music/neu.wav");
  EXPECT_TRUE(file.IsModified());
  ASSERT_EQ(file.Bookmarks().size(), 1u);
  EXPECT_EQ(file.Bookmarks().front().enabled, 0);
  EXPECT_EQ(file.Bookmarks().front().creationTime, 1700000000);
  std::vector<float> expected;
  for (long long f = 10; f < 70; ++f) expected.push_back(DocStaircaseValue(f, 0));
  expected.insert(expected.end(), 5, 0.0f);
  for (long long f = 0; f < 30; ++f) expected.push_back(DocStaircaseValue(f, 0) * 0.5f);
  EXPECT_EQ(DocReadAll(file.CutList()), expected);
  EXPECT_EQ(DocReadAll(loaded.Project().Regions().front().cutList),
            std::vector<float>(expected.begin() + 10, expected.begin() + 60));

  const std::vector<unsigned char> saved = SaveToMemory(loaded, false);
  EXPECT_EQ(SdfDump(saved), SdfDump(newer));
  CloseAll(loaded);
}

TEST_F(ProjectLoadTest, AudioStoredBesideALinkIsNeitherPlayedNorKeptForTheNextSave) {
  LMemoryStream stream;
  LSDFWriter w;
  ASSERT_TRUE(w.Open(stream, kSDFFileTypeProject, kSDFDataVersionProject));
  w.StartContainer(kSVProjectDocuments);
  w.StartContainer(kSVProjectDocument);
  w.WriteString(kSVDocumentPath, "/music/verweis.wav");
  w.StartContainer(kSVDocumentCutListLink);
  const std::vector<unsigned char> list = PersistedList(44100, 1, {{7, 40, 1.0f, 0}});
  w.WriteBlob(kSVCutListPersisted, list.data(), list.size());
  w.StartContainer(kSVCutListItem);
  w.WriteInt(kSVCutListItemNumber, 7);
  w.WriteInt(kSVCutListItemSampleRate, 44100);
  w.WriteInt(kSVCutListItemChannels, 1);
  const std::vector<float> audio = DocStaircase(40, 1);
  w.WriteBlob(kSVCutListItemFrames, reinterpret_cast<const unsigned char*>(audio.data()), audio.size() * sizeof(float));
  w.EndContainer(kSVCutListItem);
  w.EndContainer(kSVDocumentCutListLink);
  w.EndContainer(kSVProjectDocument);
  w.EndContainer(kSVProjectDocuments);
  ASSERT_TRUE(w.Close());

  // Item 7 is not alive: the link plays silence, whatever audio lies beside it.
  SVWindowManager loaded(frontEnd_);
  ASSERT_EQ(LoadFromMemory(loaded, stream.Bytes()), kLProcessSuccess);
  ASSERT_EQ(loaded.FileWindowCount(), 1);
  EXPECT_EQ(DocReadAll(loaded.FileWindowAt(0, 0)->File()->CutList()), std::vector<float>(40, 0.0f));
  const std::vector<unsigned char> saved = SaveToMemory(loaded, false);
  const SdfFile file = SdfParse(saved);
  ASSERT_TRUE(file.valid);
  const SdfNode* cutList = SdfFind(file.top, {kSVProjectDocuments, kSVProjectDocument, kSVDocumentCutList});
  ASSERT_NE(cutList, nullptr);
  EXPECT_EQ(SdfIds(cutList->children), std::vector<unsigned short>{kSVCutListPersisted});
  CloseAll(loaded);
}

TEST_F(ProjectLoadTest, CancellingTheLoadAtAnyStepAnswersOneAndChangesNothing) {
  Build();
  const std::vector<unsigned char> bytes = SaveToMemory(Windows(), false);
  SVWindowManager loaded(frontEnd_);
  loaded.Project().Regions().emplace_back();
  long checks = -1;
  for (long n = 0; n < 1000; ++n) {
    LSVLoadProject request(loaded, "/memory/p.svp");
    request.FilesFolderSet(temp_.File("carried").c_str());
    LMemoryStream stream(bytes.data(), bytes.size());
    LProcessInterfaceQuiet process;
    process.CancelAfterChecks(n);
    const LProcessResult result = SVProjectRead(process, request, stream);
    if (result == kLProcessSuccess) {
      checks = n;
      break;
    }
    ASSERT_EQ(result, kLProcessCancelled) << "after " << n << " checks";
    EXPECT_EQ(loaded.FileWindowCount(), 0);
    EXPECT_EQ(loaded.Project().Regions().size(), 1u);
  }
  EXPECT_GT(checks, 8);
  EXPECT_EQ(loaded.FileWindowCount(), 3);
  CloseAll(loaded);
}

TEST_F(ProjectLoadTest, WhatIsNoProjectFailsWithAReason) {
  SVWindowManager loaded(frontEnd_);
  LProcessInterfaceQuiet process;
  LSVLoadProject missing(loaded, temp_.File("fehlt.svp").c_str());
  EXPECT_EQ(Process(process, missing), kLProcessFailed);
  EXPECT_NE(process.Error().find("fehlt.svp"), std::string::npos);

  // An effect chain is an SDF file too, of another type.
  LMemoryStream chain;
  LSDFWriter writer;
  ASSERT_TRUE(writer.Open(chain, kSDFFileTypeEffectChain, kSDFDataVersionEffectChain));
  writer.Close();
  WriteFileBytes(temp_.File("kette.ecf"), chain.Bytes());
  LSVLoadProject other(loaded, temp_.File("kette.ecf").c_str());
  EXPECT_EQ(Process(process, other), kLProcessFailed);
  EXPECT_NE(process.Error().find("keine Projektdatei"), std::string::npos);
  EXPECT_EQ(loaded.FileWindowCount(), 0);
}

}  // namespace
