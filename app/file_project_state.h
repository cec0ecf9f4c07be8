#pragma once
// SVFileProjectState: what a project file keeps with a document beyond its
// editing state: the files that belong to the document, and the chunks that a
// newer version wrote into the document's containers, which go back into the
// same containers on the next save.
//
// Associated files: a map from a key to a path, kept in key order. A key that
// starts with "sdf/" names an SDF file of type 41, whose first chunk the project
// carries; a file inside the embedding folder is carried whole; any other is
// stored by its path only. An empty embedding folder embeds nothing.
#include <map>

#include "base/list.h"
#include "base/sdf_unknown_chunk.h"
#include "base/string_long.h"

// Keys of associated files that name SDF files of type 41 start with this.
inline constexpr const char* kSVAssociatedSdfPrefix = "sdf/";

struct SVAssociatedFile {
  LStringLong path;
  LList<LSDFUnknownChunk> unknownChunks;  // of the file's own container
};

struct SVFileProjectState {
  std::map<LStringLong, SVAssociatedFile> associatedFiles;
  LStringLong embeddingFolder;

  // Chunks kept from a project file, by the container they were read from.
  LList<LSDFUnknownChunk> unknownChunks;             // the document's container
  LList<LSDFUnknownChunk> bookmarksUnknownChunks;    // the bookmarks' container
  LList<LSDFUnknownChunk> cutListUnknownChunks;      // the cut list's container
  LList<LSDFUnknownChunk> associatedUnknownChunks;   // the associated files' container
};
