#pragma once
// Chunk ids of project files (".svp", SDF file type 26, data version 7). Ids
// are scoped by the container that holds them. All of them are on disk: never
// change them.

enum SVProjectChunk : unsigned short {
  // Top level.
  kSVProjectDocuments = 1001,  // container: the documents, in tab order
  kSVProjectRegions = 1002,    // container: the regions, in list order
  kSVProjectLinkedTo = 1003,   // string, link saves only: the project a link save stands for
  kSVProjectRegionListShown = 1010,  // bool: the region list is shown

  // In 1001.
  kSVProjectDocument = 2000,  // container: one document
  // In 2000.
  kSVDocumentPath = 2001,            // string
  kSVDocumentTab = 2012,             // int: 0-based position of the document's tab
  kSVDocumentCursor = 2002,          // int64: frames
  kSVDocumentSelectionStart = 2003,  // int64: frames
  kSVDocumentSelectionEnd = 2004,    // int64: frames
  kSVDocumentViewFirst = 2005,       // int64
  kSVDocumentViewSecond = 2006,      // int64
  kSVDocumentModified = 2007,        // bool
  kSVDocumentChanged = 2008,         // bool
  kSVDocumentCutListLink = 2009,     // container: the cut list as references into the cache
  kSVDocumentCutList = 2010,         // container: the cut list with its audio
  kSVDocumentBookmarks = 2011,       // container: the bookmarks, sorted by position
  kSVDocumentAssociatedFiles = 5001,  // container: the document's associated files

  // In 2011.
  kSVProjectBookmark = 3000,  // container: one bookmark
  // In 3000.
  kSVBookmarkName = 3001,            // string
  kSVBookmarkSourceFileName = 3002,  // string
  kSVBookmarkPosition = 3003,        // int64: frames
  kSVBookmarkSampleRate = 3004,      // int
  kSVBookmarkIdentifier = 3005,      // int
  kSVBookmarkEnabled = 3006,         // int: 0 or 1
  kSVBookmarkCreationTime = 3007,    // record (type 9): the 8-byte time value as held in memory

  // In 1002.
  kSVProjectRegion = 4000,  // container: one region
  // In 4000.
  kSVRegionName = 4001,            // string
  kSVRegionSourceFileName = 4002,  // string
  kSVRegionStartMs = 4003,         // int64
  kSVRegionEndMs = 4004,           // int64
  kSVRegionCutListLink = 4005,     // container: the cut list as references into the cache
  kSVRegionCutList = 4006,         // container: the cut list with its audio
  kSVRegionStart = 4007,           // int64: frames
  kSVRegionEnd = 4008,             // int64: frames
  kSVRegionValue = 4009,           // int: the region's further value
  kSVRegionSampleRate = 4011,      // int
};

enum SVAssociatedFileChunk : unsigned short {
  // In 5001.
  kSVAssociatedFile = 101,  // container: one associated file
  // In 101.
  kSVAssociatedFileKey = 1,       // string: the key ("sdf/" taken off for an SDF file)
  kSVAssociatedFilePath = 2,      // string: the path, for a file stored by reference
  kSVAssociatedFileEmbedded = 3,  // container: the file's content
  // In 3.
  kSVEmbeddedExtension = 1,  // string: the path's extension, without the dot
  kSVEmbeddedContent = 2,    // blob: the whole file
};
// An entry of neither form carries, right after its key, the first chunk of an
// SDF file of type 41, verbatim.

enum SVCutListChunk : unsigned short {
  // In a cut-list container (2009, 2010, 4005, 4006).
  kSVCutListPersisted = 1,  // blob: the cut list's persisted form
  kSVCutListItem = 2,       // container, full saves only: the audio of one cache item
  // In 2.
  kSVCutListItemNumber = 1,      // int: the item number the persisted list names
  kSVCutListItemSampleRate = 2,  // int
  kSVCutListItemChannels = 3,    // int
  kSVCutListItemFrames = 4,      // blob: the item's frames from 0, raw native float
};
