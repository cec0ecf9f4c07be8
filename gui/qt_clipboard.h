#pragma once
// SVQtClipboard: the editor's system clipboard over QClipboard. Our types go by
// MIME names: the AIFF audio as "audio/aiff" (promised: rendered only when it is
// asked for), the internal marker as "application/x-sonvale-internal", text as
// text. While we own the clipboard our files are handed over as they are; data
// of another program is written to a file of ours first.
#include <QPointer>
#include <QString>

#include "app/clipboard_contents.h"
#include "app/system_clipboard.h"

class QMimeData;

inline constexpr const char* kSVMimeAiff = "audio/aiff";
inline constexpr const char* kSVMimeInternal = "application/x-sonvale-internal";

class SVQtClipboard final : public SVSystemClipboard {
public:
  SVQtClipboard() = default;
  ~SVQtClipboard() override;
  SVQtClipboard(const SVQtClipboard&) = delete;
  SVQtClipboard& operator=(const SVQtClipboard&) = delete;

  void DeclareTypes(const LArray<LStringLong>& types, SVClipboardRenderer* owner) override;
  bool HasType(const char* type) override;
  bool DataFileSet(const char* type, const char* path) override;
  LStringLong DataFileGet(const char* type) override;
  bool TextSet(const char* text) override;
  LStringLong TextGet() override;
  void OwnerGone(SVClipboardRenderer* owner) override;

  // The MIME name of one of our types; the type itself for others.
  [[nodiscard]] static QString MimeOf(const char* type);
  // What our clipboard content answers for a MIME name (rendering a promise).
  [[nodiscard]] QByteArray DataFor(const QString& mime);

private:
  // The clipboard still holds what we put there.
  [[nodiscard]] bool Owns() const;
  // Which of our declared types a MIME name stands for; empty for none.
  [[nodiscard]] LStringLong TypeOf(const QString& mime) const;

  SVClipboardContents contents_;
  QPointer<QMimeData> data_;
  LStringLong foreign_;  // a file of another program's data, owned
};
