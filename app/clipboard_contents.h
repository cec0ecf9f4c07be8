#pragma once
// SVClipboardContents: what a system clipboard of ours holds while we own it:
// the declared types, each filled with a file (owned: deleted with the content)
// or with text, or promised and rendered by its owner when first asked for.
// The clipboards keep one and add what their platform needs.
#include <map>

#include "base/array.h"
#include "base/string_long.h"

class SVClipboardRenderer;
class SVSystemClipboard;

class SVClipboardContents {
public:
  SVClipboardContents() = default;
  ~SVClipboardContents() { Empty(); }
  SVClipboardContents(const SVClipboardContents&) = delete;
  SVClipboardContents& operator=(const SVClipboardContents&) = delete;

  // Drops what was held (its files too) and declares types, promised by owner.
  void Declare(const LArray<LStringLong>& types, SVClipboardRenderer* owner);
  void Empty();
  [[nodiscard]] bool Has(const char* type) const;
  [[nodiscard]] LArray<LStringLong> Types() const;
  // Fills a declared type with the file at path, which is taken over.
  bool FileSet(const char* type, const char* path);
  // The file of type, rendered through board first when it was promised; empty
  // when the type is not declared or rendering failed.
  [[nodiscard]] LStringLong FileGet(SVSystemClipboard& board, const char* type);
  bool TextSet(const char* type, const char* text);
  [[nodiscard]] LStringLong TextGet(const char* type) const;
  // owner is going: its unrendered promises are withdrawn, except keep (a type
  // that needs no rendering). Answers whether any promise was withdrawn.
  bool OwnerGone(SVClipboardRenderer* owner, const char* keep = nullptr);
  // Times a promise was rendered (tests check that rendering waits for a request).
  [[nodiscard]] int Renders() const { return renders_; }

private:
  struct Content {
    LStringLong file;
    LStringLong text;
    bool filled = false;
  };

  std::map<LStringLong, Content> contents_;
  SVClipboardRenderer* owner_ = nullptr;
  int renders_ = 0;
};
