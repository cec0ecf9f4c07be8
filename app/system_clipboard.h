#pragma once
// SVSystemClipboard: the system's clipboard as the editor sees it: a set of
// declared types, each filled with a file's content or with text, or promised
// and rendered only when someone asks for it. A front end maps it onto the
// platform's pasteboard; SVSystemClipboardMemory keeps it inside the process.
//
// Data of a type is handed over as a file, never read into memory: audio on the
// clipboard may be long. Main thread only.
#include "app/clipboard_contents.h"
#include "base/array.h"
#include "base/string_long.h"

// Clipboard types. Other programs and other instances read them; never change.
inline constexpr const char* kSVClipboardTypeAiff = "public.aiff-audio";
inline constexpr const char* kSVClipboardTypeInternal = "Sonvale Internal";
inline constexpr const char* kSVClipboardTypeText = "public.utf8-plain-text";

class SVSystemClipboard;

// Whoever declared promised types; asked to render one when it is wanted.
class SVClipboardRenderer {
public:
  virtual ~SVClipboardRenderer() = default;
  // Fills type now through board.DataFileSet; false when it could not.
  virtual bool EvRender(SVSystemClipboard& board, const char* type) = 0;
};

class SVSystemClipboard {
public:
  virtual ~SVSystemClipboard() = default;

  // Empties the clipboard and declares the types it now holds. A type not
  // filled by DataFileSet or TextSet is promised: owner renders it on demand.
  virtual void DeclareTypes(const LArray<LStringLong>& types, SVClipboardRenderer* owner) = 0;
  [[nodiscard]] virtual bool HasType(const char* type) = 0;
  // Fills a declared type with the content of the file at path, which the
  // clipboard takes over and deletes when the content goes.
  virtual bool DataFileSet(const char* type, const char* path) = 0;
  // A file holding the type's data (rendered first when it was promised),
  // owned by the clipboard; empty when the type is not there or failed to render.
  [[nodiscard]] virtual LStringLong DataFileGet(const char* type) = 0;
  // Fills the declared text type.
  virtual bool TextSet(const char* text) = 0;
  // The text, empty when there is none.
  [[nodiscard]] virtual LStringLong TextGet() = 0;
  // The owner is going: its promises that were not rendered are withdrawn.
  virtual void OwnerGone(SVClipboardRenderer* owner) = 0;

  [[nodiscard]] bool HasText() { return HasType(kSVClipboardTypeText); }
  // Replaces the content by text alone, as another program's copy does.
  void TextPut(const char* text);
};

class SVSystemClipboardMemory final : public SVSystemClipboard {
public:
  void DeclareTypes(const LArray<LStringLong>& types, SVClipboardRenderer* owner) override {
    contents_.Declare(types, owner);
  }
  bool HasType(const char* type) override { return contents_.Has(type); }
  bool DataFileSet(const char* type, const char* path) override { return contents_.FileSet(type, path); }
  LStringLong DataFileGet(const char* type) override { return contents_.FileGet(*this, type); }
  bool TextSet(const char* text) override { return contents_.TextSet(kSVClipboardTypeText, text); }
  LStringLong TextGet() override { return contents_.TextGet(kSVClipboardTypeText); }
  void OwnerGone(SVClipboardRenderer* owner) override { contents_.OwnerGone(owner); }

  // Times a promise was rendered (tests check that rendering waits for a request).
  [[nodiscard]] int RenderCount() const { return contents_.Renders(); }

private:
  SVClipboardContents contents_;
};
