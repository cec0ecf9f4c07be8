#pragma once
// What the project tests share: an independent reading of SDF files into a tree
// (so the tests judge the writer by the layout, not by the loader), a dump of
// that tree in which cache item numbers are masked, and a fixture that builds
// documents and regions over staircase audio.
#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <vector>

#include "app/project_load.h"
#include "app/project_save.h"
#include "app/window_manager.h"
#include "document_fixture.h"
#include "support/file_bytes.h"

struct SdfNode {
  unsigned short id = 0;
  unsigned short type = 0;
  std::vector<unsigned char> data;  // the whole data, a container's too
  std::vector<SdfNode> children;    // of a container
};

struct SdfFile {
  bool valid = false;  // magic, format version, root container, lengths and trailer all fit
  unsigned int fileType = 0;
  unsigned short dataVersion = 0;
  std::vector<SdfNode> top;
};

[[nodiscard]] SdfFile SdfParse(const std::vector<unsigned char>& bytes);
// The nth child (from 0) with the id at each step of the path; null when there is none.
[[nodiscard]] const SdfNode* SdfFind(const std::vector<SdfNode>& nodes, std::initializer_list<unsigned short> path,
                                     int nth = 0);
[[nodiscard]] std::vector<unsigned short> SdfIds(const std::vector<SdfNode>& nodes);
[[nodiscard]] long long SdfInt64(const SdfNode* node);
[[nodiscard]] int SdfInt(const SdfNode* node);
[[nodiscard]] bool SdfBool(const SdfNode* node);
[[nodiscard]] std::string SdfString(const SdfNode* node);
// One line per chunk with its id, type and data; item numbers inside cut-list
// containers are masked, so two saves of the same project compare equal.
[[nodiscard]] std::string SdfDump(const std::vector<unsigned char>& bytes);


// The persisted form of a cut list, built by hand: {item, length, gain, offset} per segment.
struct PersistedSegment {
  unsigned short item;
  long long length;
  float gain;
  long long offset;
};
[[nodiscard]] std::vector<unsigned char> PersistedList(unsigned int rate, unsigned char channels,
                                                       const std::vector<PersistedSegment>& segments);

class ProjectTest : public DocumentTest {
protected:
  // A new document in a window of the dialog's manager, in a new tab or in tab.
  SVFile& AddDocument(const LCutListAudio& list, const std::string& path, int tab = kSVNewTab);
  SVWindowManager& Windows() { return Dialog().Windows(); }

  // Saves the manager's project into memory.
  [[nodiscard]] std::vector<unsigned char> SaveToMemory(SVWindowManager& windows, bool link,
                                                        LProcessResult expected = kLProcessSuccess);
  // Loads bytes into the manager; files the project carried go below temp_.
  [[nodiscard]] LProcessResult LoadFromMemory(SVWindowManager& windows, const std::vector<unsigned char>& bytes,
                                              LArray<LStringLong>* messages = nullptr);

  // Drops every file in the cache folder, as a clean-up or another machine would.
  void CacheEmpty();
};
