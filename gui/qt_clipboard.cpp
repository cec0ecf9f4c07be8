#include "gui/qt_clipboard.h"

#include <QClipboard>
#include <QCoreApplication>
#include <QFile>
#include <QGuiApplication>
#include <QMimeData>

#include "app/temp_file.h"
#include "base/platform_file.h"

namespace {

// Offers our types and asks the clipboard for their data only when it is read.
class SVMimeData final : public QMimeData {
public:
  SVMimeData(SVQtClipboard& board, QStringList formats) : board_(board), formats_(std::move(formats)) {}
  QStringList formats() const override { return formats_; }
  bool hasFormat(const QString& mime) const override { return formats_.contains(mime); }

protected:
  QVariant retrieveData(const QString& mime, QMetaType type) const override {
    if (!formats_.contains(mime)) return QMimeData::retrieveData(mime, type);
    const QByteArray data = board_.DataFor(mime);
    if (mime == "text/plain") return QString::fromUtf8(data);
    return data;
  }

private:
  SVQtClipboard& board_;
  QStringList formats_;
};

// The internal marker names this process: another instance's cyclic clipboard is not ours.
QByteArray InternalMarker() { return QByteArray::number(QCoreApplication::applicationPid()); }

}  // namespace

SVQtClipboard::~SVQtClipboard() {
  // What stays on the clipboard after us must not call back into a dead object.
  if (Owns()) QGuiApplication::clipboard()->clear();
  contents_.Empty();
  if (!foreign_.empty()) LFileDelete(foreign_.c_str());
}

QString SVQtClipboard::MimeOf(const char* type) {
  const LStringLong t = type ? type : "";
  if (t == kSVClipboardTypeAiff) return kSVMimeAiff;
  if (t == kSVClipboardTypeInternal) return kSVMimeInternal;
  if (t == kSVClipboardTypeText) return "text/plain";
  return QString::fromStdString(t);
}

LStringLong SVQtClipboard::TypeOf(const QString& mime) const {
  for (const LStringLong& type : contents_.Types()) {
    if (MimeOf(type.c_str()) == mime) return type;
  }
  return LStringLong();
}

bool SVQtClipboard::Owns() const { return data_ && QGuiApplication::clipboard()->mimeData() == data_; }

void SVQtClipboard::DeclareTypes(const LArray<LStringLong>& types, SVClipboardRenderer* owner) {
  contents_.Declare(types, owner);
  QStringList formats;
  for (const LStringLong& type : types) formats << MimeOf(type.c_str());
  auto* data = new SVMimeData(*this, formats);
  data_ = data;
  QGuiApplication::clipboard()->setMimeData(data);
}

bool SVQtClipboard::HasType(const char* type) {
  if (!type) return false;
  if (Owns()) return contents_.Has(type);
  const QMimeData* data = QGuiApplication::clipboard()->mimeData();
  if (!data) return false;
  const QString mime = MimeOf(type);
  if (mime == kSVMimeInternal) return data->hasFormat(mime) && data->data(mime) == InternalMarker();
  if (mime == "text/plain") return data->hasText();
  return data->hasFormat(mime);
}

bool SVQtClipboard::DataFileSet(const char* type, const char* path) { return contents_.FileSet(type, path); }

QByteArray SVQtClipboard::DataFor(const QString& mime) {
  const LStringLong type = TypeOf(mime);
  if (type.empty()) return {};
  if (mime == kSVMimeInternal) return InternalMarker();
  if (mime == "text/plain") return QByteArray::fromStdString(contents_.TextGet(type.c_str()));
  // Another program wants the bytes themselves.
  QFile file(QString::fromStdString(DataFileGet(type.c_str())));
  if (!file.open(QIODevice::ReadOnly)) return {};
  return file.readAll();
}

LStringLong SVQtClipboard::DataFileGet(const char* type) {
  if (!type) return {};
  if (Owns()) return contents_.FileGet(*this, type);
  const QMimeData* data = QGuiApplication::clipboard()->mimeData();
  const QString mime = MimeOf(type);
  if (!data || !data->hasFormat(mime)) return {};
  const QByteArray bytes = data->data(mime);
  if (bytes.isEmpty()) return {};
  if (!foreign_.empty()) LFileDelete(foreign_.c_str());
  foreign_ = SVTempFileCreate("0XXXXXX", mime == kSVMimeAiff ? ".aiff" : ".dat");
  QFile file(QString::fromStdString(foreign_));
  if (foreign_.empty() || !file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(bytes) != bytes.size())
    return {};
  return foreign_;
}

bool SVQtClipboard::TextSet(const char* text) { return contents_.TextSet(kSVClipboardTypeText, text); }

LStringLong SVQtClipboard::TextGet() {
  if (Owns()) return contents_.TextGet(kSVClipboardTypeText);
  return QGuiApplication::clipboard()->text().toStdString();
}

void SVQtClipboard::OwnerGone(SVClipboardRenderer* owner) {
  // Without its renderer the clipboard can keep nothing it promised; the marker needs none.
  if (contents_.OwnerGone(owner, kSVClipboardTypeInternal) && Owns()) QGuiApplication::clipboard()->clear();
}
