#pragma once
// The files that belong to a document, inside a project file (container 5001,
// one container 101 per file, in key order). Each file takes one of three forms:
// an SDF file of type 41 (key "sdf/..."), whose first chunk is carried verbatim;
// a file inside the document's embedding folder, carried whole with its
// extension; any other file, stored by its path only.
//
// Files are read under a shared lock (waiting at most kLLockWaitMs) and copied in
// blocks; none is held in memory whole. A load writes carried files back into a
// folder of the document's own, which becomes its embedding folder, so the next
// save carries them again.
#include <functional>

#include "app/file_project_state.h"
#include "base/array.h"
#include "base/process_interface.h"
#include "base/sdf_reader.h"
#include "base/sdf_writer.h"
#include "base/string_long.h"

// Bytes copied per block between an associated file and the project file.
inline constexpr long long kSVAssociatedCopyBlock = 8192;

// Writes container 5001 at order. Cancelled: kLProcessCancelled; a file that
// cannot be read, or a short read or write: kLProcessFailed with the reason set.
[[nodiscard]] LProcessResult SVAssociatedFilesSave(LProcessInterface& process, LSDFWriter& writer, int order,
                                                   const SVFileProjectState& state);

// Makes (once) and answers the folder that carried files are written back into;
// empty when it cannot be made.
using SVAssociatedFolder = std::function<LStringLong()>;

// Reads container 5001 into state. A carried file that cannot be written back is
// left out with a message; damaged: the container was incomplete.
[[nodiscard]] LProcessResult SVAssociatedFilesLoad(LProcessInterface& process, LSDFReader& reader,
                                                   const LSDFChunkInfo& container, SVFileProjectState& state,
                                                   const SVAssociatedFolder& folder, LArray<LStringLong>& messages,
                                                   bool& damaged);
