#include "effects/effect_chain_file.h"

#include "base/file_stream.h"
#include "base/platform_file.h"
#include "base/sdf_format.h"
#include "base/sdf_reader.h"
#include "base/sdf_reader_chunk_iterator.h"
#include "base/sdf_writer.h"

const char* LEffectChainLoadMessage(LEffectChainLoadResult result) {
  return result == LEffectChainLoadResult::kOK ? "" : "Konnte Datei nicht öffnen, um Effekte zu laden.";
}

const char* LEffectChainLoadTitle(LEffectChainLoadResult result) {
  return result == LEffectChainLoadResult::kOK ? "" : "Lesefehler";
}

bool LEffectChainSave(const LSoundProcessMulti& chain, LByteStream& stream) {
  LSDFWriter writer;
  if (!writer.Open(stream, kSDFFileTypeEffectChain, kSDFDataVersionEffectChain)) return false;
  chain.SaveToSDF(writer);
  // Close answers true after an earlier failure; IsOK before it tells.
  bool ok = writer.IsOK();
  return writer.Close() && ok;
}

LEffectChainLoadResult LEffectChainLoad(LSoundProcessMulti& chain, LByteStream& stream) {
  LSDFReader reader;
  if (!reader.Open(stream, kSDFFileTypeEffectChain)) return LEffectChainLoadResult::kNotAChain;
  if (reader.DataVersion() != kSDFDataVersionEffectChain) return LEffectChainLoadResult::kUnknownVersion;
  LSDFReaderChunkIterator root(reader);
  chain.LoadFromSDF(reader, root);
  return LEffectChainLoadResult::kOK;
}

bool LEffectChainSaveFile(const LSoundProcessMulti& chain, const char* path) {
  int fd = LFileOpen(path, kLFileWrite | kLFileCreate | kLFileTruncate, LFileLock::Exclusive);
  if (fd < 0) return false;
  LFileStream stream(fd);
  return LEffectChainSave(chain, stream);
}

LEffectChainLoadResult LEffectChainLoadFile(LSoundProcessMulti& chain, const char* path, LProcessInterface* process) {
  LEffectChainLoadResult result = LEffectChainLoadResult::kCannotOpen;
  int fd = path ? LFileOpen(path, kLFileRead, LFileLock::Shared) : -1;
  if (fd >= 0) {
    LFileStream stream(fd);
    result = LEffectChainLoad(chain, stream);
  }
  if (result != LEffectChainLoadResult::kOK && process) process->SetError(LEffectChainLoadMessage(result));
  return result;
}
