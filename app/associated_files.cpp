#include "app/associated_files.h"

#include <algorithm>
#include <cstdio>
#include <set>

#include "app/project_chunk_order.h"
#include "app/project_chunk_walk.h"
#include "app/project_chunks.h"
#include "app/project_messages.h"
#include "base/file_stream.h"
#include "base/platform_file.h"
#include "base/sdf_format.h"
#include "base/sdf_reader_chunk.h"

namespace {

enum class Form { kSdf, kEmbedded, kPath };

bool StartsWith(const LStringLong& text, const char* prefix) { return text.rfind(prefix, 0) == 0; }

Form FormOf(const LStringLong& key, const LStringLong& path, const LStringLong& folder) {
  if (StartsWith(key, kSVAssociatedSdfPrefix)) return Form::kSdf;
  if (!folder.empty() && path.find(folder) != LStringLong::npos) return Form::kEmbedded;
  return Form::kPath;
}

// The extension of the path's file name, without the dot; empty when it has none.
LStringLong ExtensionOf(const LStringLong& path) {
  const std::size_t slash = path.rfind('/');
  const std::size_t dot = path.rfind('.');
  if (dot == LStringLong::npos || (slash != LStringLong::npos && dot < slash) || dot + 1 == path.size()) return {};
  return path.substr(dot + 1);
}

// Copies `bytes` bytes from read into the open chunk in blocks, with progress
// and cancel. read(buffer, n) answers the bytes it delivered.
template <class ReadBlock>
LProcessResult CopyBlocks(LProcessInterface& process, LSDFWriter& writer, long long bytes, ReadBlock read,
                          long long& done, long long total, const LStringLong& path) {
  unsigned char block[kSVAssociatedCopyBlock];
  for (long long copied = 0; copied < bytes;) {
    if (process.IsCancelled()) return kLProcessCancelled;
    const long long want = std::min(bytes - copied, kSVAssociatedCopyBlock);
    if (read(block, want) != want) {
      process.SetErrorF(kSVProjectAssociatedReadError, path.c_str());
      return kLProcessFailed;
    }
    if (!writer.WriteData(block, static_cast<unsigned long long>(want))) return kLProcessFailed;
    copied += want;
    done += want;
    if (total > 0) process.SetProgress(static_cast<double>(done) / static_cast<double>(total));
  }
  return kLProcessSuccess;
}

LProcessResult SaveEmbedded(LProcessInterface& process, LSDFWriter& writer, int order, const LStringLong& path,
                            long long& done, long long total) {
  LFileStream file(LFileOpen(path.c_str(), kLFileRead, LFileLock::Shared, kLLockWaitMs));
  const long long size = file.IsOpen() ? file.Size() : -1;
  if (size < 0) {
    process.SetErrorF(kSVProjectAssociatedReadError, path.c_str());
    return kLProcessFailed;
  }
  writer.StartContainer(kSVAssociatedFileEmbedded, order);
  writer.WriteString(kSVEmbeddedExtension, ExtensionOf(path).c_str());
  writer.StartChunk(kSVEmbeddedContent, kSDFChunkTypeBlob);
  LProcessResult result = CopyBlocks(
      process, writer, size, [&](unsigned char* block, long long n) { return file.Read(block, n); }, done, total,
      path);
  if (result != kLProcessSuccess) return result;
  writer.EndChunk(kSVEmbeddedContent);
  writer.EndContainer(kSVAssociatedFileEmbedded);
  return kLProcessSuccess;
}

LProcessResult SaveSdf(LProcessInterface& process, LSDFWriter& writer, int order, const LStringLong& path,
                       long long& done, long long total) {
  LFileStream file(LFileOpen(path.c_str(), kLFileRead, LFileLock::Shared, kLLockWaitMs));
  LSDFReader reader;
  if (!file.IsOpen() || !reader.Open(file, kSDFFileTypeProjectLoaderFile)) {
    process.SetErrorF(kSVProjectAssociatedReadError, path.c_str());
    return kLProcessFailed;
  }
  LSDFReaderChunkIterator it(reader);
  // A file without chunks carries nothing.
  if (!it.StartNextChunk()) return kLProcessSuccess;
  LSDFReaderChunk chunk = it.Chunk();
  writer.StartChunk(it.Id(), it.Type(), order);
  LProcessResult result = CopyBlocks(
      process, writer, static_cast<long long>(it.Length()),
      [&](unsigned char* block, long long n) {
        return static_cast<long long>(chunk.ReadData(block, static_cast<unsigned long long>(n)));
      },
      done, total, path);
  if (result != kLProcessSuccess) return result;
  writer.EndChunk(it.Id());
  return kLProcessSuccess;
}

}  // namespace

LProcessResult SVAssociatedFilesSave(LProcessInterface& process, LSDFWriter& writer, int order,
                                     const SVFileProjectState& state) {
  long long total = 0;
  for (const auto& [key, file] : state.associatedFiles) {
    LFileDetails details;
    if (FormOf(key, file.path, state.embeddingFolder) != Form::kPath && LFileDetailsGet(file.path.c_str(), &details))
      total += static_cast<long long>(details.size);
  }

  long long done = 0;
  SVChunkOrder filesOrder(state.associatedUnknownChunks);
  writer.StartContainer(kSVDocumentAssociatedFiles, state.associatedUnknownChunks, order);
  for (const auto& [key, file] : state.associatedFiles) {
    if (process.IsCancelled()) return kLProcessCancelled;
    SVChunkOrder entryOrder(file.unknownChunks);
    writer.StartContainer(kSVAssociatedFile, file.unknownChunks, filesOrder.Next());
    LProcessResult result = kLProcessSuccess;
    switch (FormOf(key, file.path, state.embeddingFolder)) {
      case Form::kSdf:
        writer.WriteString(kSVAssociatedFileKey, key.c_str() + std::char_traits<char>::length(kSVAssociatedSdfPrefix),
                           entryOrder.Next());
        result = SaveSdf(process, writer, entryOrder.Next(), file.path, done, total);
        break;
      case Form::kEmbedded:
        writer.WriteString(kSVAssociatedFileKey, key.c_str(), entryOrder.Next());
        result = SaveEmbedded(process, writer, entryOrder.Next(), file.path, done, total);
        break;
      case Form::kPath:
        writer.WriteString(kSVAssociatedFileKey, key.c_str(), entryOrder.Next());
        writer.WriteString(kSVAssociatedFilePath, file.path.c_str(), entryOrder.Next());
        break;
    }
    if (result != kLProcessSuccess) return result;
    writer.EndContainer(kSVAssociatedFile);
  }
  writer.EndContainer(kSVDocumentAssociatedFiles);
  return writer.IsOK() ? kLProcessSuccess : kLProcessFailed;
}

namespace {

// A file name made of the key: no folders, nothing hidden, none used twice.
LStringLong FileNameFor(const LStringLong& key, const LStringLong& extension, std::set<LStringLong>& used) {
  LStringLong base = key;
  for (char& c : base) {
    if (c == '/' || c == '\\' || static_cast<unsigned char>(c) < 0x20) c = '_';
  }
  if (base.empty() || base[0] == '.') base.insert(base.begin(), '_');
  if (base.size() > 200) base.resize(200);
  LStringLong clean;
  for (char c : extension) {
    if (c != '/' && c != '\\' && static_cast<unsigned char>(c) >= 0x20) clean += c;
  }
  if (clean.size() > 16) clean.resize(16);
  const LStringLong suffix = clean.empty() ? LStringLong() : "." + clean;
  LStringLong name = base + suffix;
  for (int n = 2; used.count(name) != 0; ++n) name = base + "_" + std::to_string(n) + suffix;
  used.insert(name);
  return name;
}

// Streams the chunk's data into out in blocks; false on a short read or write.
bool ChunkCopy(LSDFReaderChunk chunk, LByteStream& out) {
  unsigned char block[kSVAssociatedCopyBlock];
  while (chunk.Remaining() > 0) {
    const unsigned long long got = chunk.ReadData(block, sizeof block);
    if (got == 0 || !out.WriteAll(block, static_cast<long long>(got))) return false;
  }
  return true;
}

bool ChunkCopyToSdf(LSDFReaderChunk chunk, LSDFWriter& writer) {
  unsigned char block[kSVAssociatedCopyBlock];
  while (chunk.Remaining() > 0) {
    const unsigned long long got = chunk.ReadData(block, sizeof block);
    if (got == 0 || !writer.WriteData(block, got)) return false;
  }
  return true;
}

LFileStream CreateFile(const LStringLong& path) {
  return LFileStream(LFileOpen(path.c_str(), kLFileWrite | kLFileCreate | kLFileTruncate, LFileLock::Exclusive,
                               kLLockWaitMs));
}

// Writes an SDF file of type 41 whose first chunk is the one carried.
bool WriteSdfFile(const LStringLong& path, LSDFReader& reader, const LSDFChunkInfo& info) {
  LFileStream file = CreateFile(path);
  if (!file.IsOpen()) return false;
  LSDFWriter writer;
  if (!writer.Open(file, kSDFFileTypeProjectLoaderFile, kSDFDataVersionProjectLoaderFile)) return false;
  writer.StartChunk(info.id, info.type);
  const bool copied = ChunkCopyToSdf(LSDFReaderChunk(reader, info), writer);
  writer.EndChunk(info.id);
  const bool ok = copied && writer.IsOK();
  writer.Close();
  return ok;
}

struct Embedded {
  LStringLong extension;
  LSDFChunkInfo content;
  bool hasContent = false;
};

Embedded EmbeddedRead(LSDFReader& reader, const LSDFChunkInfo& container, bool& damaged) {
  Embedded embedded;
  SVChunkWalk walk(reader, container);
  while (walk.Next()) {
    if (walk.Id() == kSVEmbeddedExtension) {
      if (!walk.Chunk().ReadString(embedded.extension)) damaged = true;
    } else if (walk.Id() == kSVEmbeddedContent) {
      embedded.content = walk.Info();
      embedded.hasContent = true;
    }
  }
  if (!walk.IsComplete()) damaged = true;
  return embedded;
}

}  // namespace

LProcessResult SVAssociatedFilesLoad(LProcessInterface& process, LSDFReader& reader, const LSDFChunkInfo& container,
                                     SVFileProjectState& state, const SVAssociatedFolder& folder,
                                     LArray<LStringLong>& messages, bool& damaged) {
  std::set<LStringLong> used;
  LStringLong written;  // the folder, once made
  auto writeBack = [&](const LStringLong& key, const LStringLong& extension,
                       const std::function<bool(const LStringLong&)>& write, LStringLong& path) {
    if (written.empty()) written = folder ? folder() : LStringLong();
    path = written.empty() ? LStringLong() : written + "/" + FileNameFor(key, extension, used);
    if (!path.empty() && write(path)) return true;
    if (!path.empty()) LFileDelete(path.c_str());
    char message[2 * kLPathMax];
    std::snprintf(message, sizeof message, kSVProjectLoadAssociatedError, key.c_str());
    messages.emplace_back(message);
    return false;
  };

  SVChunkWalk files(reader, container);
  while (files.Next()) {
    if (process.IsCancelled()) return kLProcessCancelled;
    if (files.Id() != kSVAssociatedFile || files.Type() != kSDFChunkTypeContainer) {
      if (!files.Chunk().ReadUnknownChunk(state.associatedUnknownChunks)) damaged = true;
      continue;
    }
    // A first look at the headers: an entry with a path or embedded content carries no SDF chunk.
    int keyIndex = -1;
    bool byPathOrEmbedded = false;
    {
      SVChunkWalk look(reader, files.Info());
      while (look.Next()) {
        if (keyIndex < 0 && look.Id() == kSVAssociatedFileKey) keyIndex = look.Info().index;
        if (keyIndex >= 0 && ((look.Id() == kSVAssociatedFilePath && look.Type() == kSDFChunkTypeString) ||
                              (look.Id() == kSVAssociatedFileEmbedded && look.Type() == kSDFChunkTypeContainer)))
          byPathOrEmbedded = true;
      }
    }
    LStringLong key;
    bool hasKey = false;
    SVAssociatedFile file;
    bool restored = false;  // the entry has a path, and a carried file was written back
    bool carried = false;   // the entry carried a file, whether or not it came back
    bool sdf = false;
    SVChunkWalk entry(reader, files.Info());
    while (entry.Next()) {
      const LSDFChunkInfo& info = entry.Info();
      if (!hasKey && info.id == kSVAssociatedFileKey) {
        hasKey = entry.Chunk().ReadString(key);
        if (!hasKey) damaged = true;
      } else if (hasKey && !carried && byPathOrEmbedded && StartsWith(key, kSVAssociatedSdfPrefix)) {
        // A key that names an SDF file is never stored by path or embedded: the
        // next save would take the file for an SDF file and fail. Left out.
        carried = true;
        damaged = true;
      } else if (hasKey && !carried && info.id == kSVAssociatedFilePath && info.type == kSDFChunkTypeString) {
        restored = entry.Chunk().ReadString(file.path);
        carried = true;
        if (!restored) damaged = true;
      } else if (hasKey && !carried && info.id == kSVAssociatedFileEmbedded && info.type == kSDFChunkTypeContainer) {
        carried = true;
        const LSDFChunkInfo embeddedInfo = info;
        Embedded embedded = EmbeddedRead(reader, embeddedInfo, damaged);
        if (!embedded.hasContent) {
          damaged = true;
          continue;
        }
        restored = writeBack(key, embedded.extension,
                             [&](const LStringLong& path) {
                               LFileStream out = CreateFile(path);
                               return out.IsOpen() && ChunkCopy(LSDFReaderChunk(reader, embedded.content), out);
                             },
                             file.path);
      } else if (hasKey && !carried && !byPathOrEmbedded && info.index == keyIndex + 1) {
        // The first chunk of an SDF file of type 41 follows the key directly.
        carried = true;
        sdf = true;
        const LSDFChunkInfo content = info;
        restored = writeBack(key, "sdf", [&](const LStringLong& path) { return WriteSdfFile(path, reader, content); },
                             file.path);
      } else if (!entry.Chunk().ReadUnknownChunk(file.unknownChunks)) {
        damaged = true;
      }
    }
    if (!entry.IsComplete()) damaged = true;
    if (!hasKey) continue;
    // A key alone is an SDF file that had no chunks.
    if (!carried) {
      sdf = true;
      restored = writeBack(
          key, "sdf",
          [&](const LStringLong& path) {
            LFileStream out = CreateFile(path);
            LSDFWriter writer;
            return out.IsOpen() &&
                   writer.Open(out, kSDFFileTypeProjectLoaderFile, kSDFDataVersionProjectLoaderFile) &&
                   writer.Close();
          },
          file.path);
    }
    if (!restored) continue;
    state.associatedFiles[sdf ? kSVAssociatedSdfPrefix + key : key] = std::move(file);
  }
  if (!files.IsComplete()) damaged = true;
  if (!written.empty()) state.embeddingFolder = written;
  return kLProcessSuccess;
}
