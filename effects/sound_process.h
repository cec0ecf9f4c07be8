#pragma once
// LSoundProcess: the settings object of one effect. It does no signal processing
// itself: OpenSource wraps an input source in a new processing source (an LSRC...
// class) that computes the effect while it is read. The same object is what the
// dialogs edit, what chains hold, and what is saved through SDF.
//
// Contract:
//  - OpenSource is the only operation that builds processing state; each call
//    gives an independent source, and later changes of the settings do not reach
//    sources already opened. The new source holds its input alive.
//  - Everything else acts on settings only and is cheap.
//  - Parameter and preset indexes outside their range are ignored.
//  - GetNewCopy copies the settings but not bDisabled (a copy starts enabled) nor
//    pNext (whoever links the copy sets it).
//  - Saved layout: a container 0x1000 holding the base part (bool 0x2000 =
//    bDisabled), then the effect's own value chunks from 0x2001 upward in a fixed
//    order. Loading walks the chunks of the effect's container; later chunks win,
//    unknown ones are passed over, short values are not an error.
// Settings objects belong to the thread that owns them (user interface or batch).
#include "base/sdf_reader.h"
#include "base/sdf_reader_chunk_iterator.h"
#include "base/sdf_writer.h"
#include "base/string_long.h"
#include "engine/sound_source.h"
#include "effects/sound_process_parameter.h"

// A host window an external editor is shown in; provided by the user interface.
class LEmbeddedWindow;

// Chunk ids of an effect's saved layout, scoped by the effect's container. On disk: never change.
inline constexpr unsigned short kLSPChunkBase = 0x1000;      // container of the base part
inline constexpr unsigned short kLSPChunkDisabled = 0x2000;  // bool bDisabled, inside kLSPChunkBase
inline constexpr unsigned short kLSPChunkFirstSetting = 0x2001;

// Editor kinds answered by GetEditorType. Stored with window layouts: never change.
inline constexpr int kLSPEditorOwnDialog = 1;
inline constexpr int kLSPEditorExternal = 32767;

class LSoundProcess {
public:
  LSoundProcess() = default;
  virtual ~LSoundProcess() = default;
  LSoundProcess& operator=(const LSoundProcess&) = delete;

  // Next effect when the object is a member of a chain; null at the end.
  LSoundProcess* pNext = nullptr;
  // A chain skips a disabled effect.
  bool bDisabled = false;

  [[nodiscard]] virtual LSoundSource OpenSource(LSoundSource& input) = 0;
  // Writes the German display name (at most 259 characters) and answers buffer.
  virtual char* GetName(char* buffer) const;
  virtual int GetSoundProcessType() const;
  // A new heap object with the same settings, or null for the base.
  [[nodiscard]] virtual LSoundProcess* GetNewCopy() const;
  virtual bool IsValid() const;

  virtual int GetNumParameters() const;
  virtual void SetParameterByIndex(int index, void* value);
  virtual void GetParameterByIndex(int index, LSoundProcessParameter* out) const;

  // Writes the bool chunk 0x2000 = bDisabled. Results are not checked: the writer
  // latches its first failure.
  virtual void SaveToSDF(LSDFWriter& writer) const;
  // Reads chunk 0x2000 into bDisabled and passes over every other chunk.
  virtual void LoadFromSDF(LSDFReader& reader, LSDFReaderChunkIterator& iterator);
  // The older flat layout without ids (one setting per consecutive chunk).
  virtual void LoadFromSDF(LSDFReaderChunkIterator& iterator);

  virtual int GetEditorType() const;
  virtual bool IsExternalGUI() const;
  virtual void OpenEditor(LEmbeddedWindow& window);
  virtual void CloseEditor();
  virtual void GetEditorSize(int& width, int& height) const;

  virtual int GetNumPresets() const;
  // Copies preset i's name (at most 259 characters and the terminator).
  virtual void GetPresetsName(int index, char* out) const;
  virtual void SetPreset(int index);
  virtual void SetPresetData(void* data);
  // The first preset whose tabled values all equal the settings, else -1.
  virtual int GetIndexInPreset() const;
  virtual void ResetToDefault();

protected:
  // Copies settings only: a copy starts enabled and unlinked.
  LSoundProcess(const LSoundProcess&) {}

  // The container 0x1000 with the base part, as every effect writes it first.
  void SaveBaseToSDF(LSDFWriter& writer) const;
  // Walks the chunks of an effect's container: 0x1000 goes to the base part, every
  // other chunk to readSetting (which reads it or leaves it to be passed over).
  template <class ReadSetting>
  void LoadSettingsFromSDF(LSDFReader& reader, LSDFReaderChunkIterator& iterator, ReadSetting&& readSetting) {
    while (iterator.StartNextChunk()) {
      if (iterator.Id() == kLSPChunkBase) {
        LSDFReaderChunkIterator base(reader, iterator.Info());
        LSoundProcess::LoadFromSDF(reader, base);
      } else {
        readSetting(iterator);
      }
    }
  }
};

// Copies a name into a framework buffer of kLPathMax bytes.
void LSoundProcessCopyName(char* out, const char* name);
