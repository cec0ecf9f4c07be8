#include "effects/sound_process.h"

#include <cstdio>

namespace {

// What an effect without a name of its own is called.
constexpr const char* kUnnamedEffect = "Unbenannter Effekt";

}  // namespace

void LSoundProcessCopyName(char* out, const char* name) {
  if (out) std::snprintf(out, kLPathMax, "%s", name ? name : "");
}

char* LSoundProcess::GetName(char* buffer) const {
  LSoundProcessCopyName(buffer, kUnnamedEffect);
  return buffer;
}

int LSoundProcess::GetSoundProcessType() const { return 0; }
LSoundProcess* LSoundProcess::GetNewCopy() const { return nullptr; }
bool LSoundProcess::IsValid() const { return true; }

int LSoundProcess::GetNumParameters() const { return 0; }
void LSoundProcess::SetParameterByIndex(int, void*) {}
void LSoundProcess::GetParameterByIndex(int, LSoundProcessParameter*) const {}

void LSoundProcess::SaveToSDF(LSDFWriter& writer) const { writer.WriteBool(kLSPChunkDisabled, bDisabled); }

void LSoundProcess::LoadFromSDF(LSDFReader&, LSDFReaderChunkIterator& iterator) {
  while (iterator.StartNextChunk()) {
    if (iterator.Id() != kLSPChunkDisabled) continue;
    bool disabled = bDisabled;
    if (iterator.Chunk().ReadBool(disabled)) bDisabled = disabled;
  }
}

void LSoundProcess::LoadFromSDF(LSDFReaderChunkIterator&) {}

int LSoundProcess::GetEditorType() const { return kLSPEditorOwnDialog; }
bool LSoundProcess::IsExternalGUI() const { return false; }
void LSoundProcess::OpenEditor(LEmbeddedWindow&) {}
void LSoundProcess::CloseEditor() {}
void LSoundProcess::GetEditorSize(int&, int&) const {}

int LSoundProcess::GetNumPresets() const { return 0; }
void LSoundProcess::GetPresetsName(int, char*) const {}
void LSoundProcess::SetPreset(int) {}
void LSoundProcess::SetPresetData(void*) {}
int LSoundProcess::GetIndexInPreset() const { return -1; }
void LSoundProcess::ResetToDefault() {}

void LSoundProcess::SaveBaseToSDF(LSDFWriter& writer) const {
  writer.StartContainer(kLSPChunkBase);
  LSoundProcess::SaveToSDF(writer);
  writer.EndContainer(kLSPChunkBase);
}
