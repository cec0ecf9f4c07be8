#include "app/clipboard_contents.h"

#include "app/system_clipboard.h"
#include "base/platform_file.h"

void SVClipboardContents::Declare(const LArray<LStringLong>& types, SVClipboardRenderer* owner) {
  Empty();
  for (const LStringLong& type : types) contents_[type];
  owner_ = owner;
}

void SVClipboardContents::Empty() {
  for (auto& [type, content] : contents_) {
    if (!content.file.empty()) LFileDelete(content.file.c_str());
  }
  contents_.clear();
  owner_ = nullptr;
}

bool SVClipboardContents::Has(const char* type) const { return contents_.count(type ? type : "") != 0; }

LArray<LStringLong> SVClipboardContents::Types() const {
  LArray<LStringLong> types;
  for (const auto& [type, content] : contents_) types.push_back(type);
  return types;
}

bool SVClipboardContents::FileSet(const char* type, const char* path) {
  auto it = contents_.find(type ? type : "");
  if (it == contents_.end() || !path || !*path) return false;
  if (!it->second.file.empty() && it->second.file != path) LFileDelete(it->second.file.c_str());
  it->second.file = path;
  it->second.filled = true;
  return true;
}

LStringLong SVClipboardContents::FileGet(SVSystemClipboard& board, const char* type) {
  auto it = contents_.find(type ? type : "");
  if (it == contents_.end()) return LStringLong();
  if (!it->second.filled) {
    if (!owner_) return LStringLong();
    ++renders_;
    if (!owner_->EvRender(board, type)) return LStringLong();
    it = contents_.find(type);
    if (it == contents_.end()) return LStringLong();
  }
  return it->second.file;
}

bool SVClipboardContents::TextSet(const char* type, const char* text) {
  auto it = contents_.find(type ? type : "");
  if (it == contents_.end()) return false;
  it->second.text = text ? text : "";
  it->second.filled = true;
  return true;
}

LStringLong SVClipboardContents::TextGet(const char* type) const {
  auto it = contents_.find(type ? type : "");
  return it == contents_.end() ? LStringLong() : it->second.text;
}

bool SVClipboardContents::OwnerGone(SVClipboardRenderer* owner, const char* keep) {
  if (owner_ != owner) return false;
  bool withdrawn = false;
  for (auto it = contents_.begin(); it != contents_.end();) {
    if (it->second.filled || (keep && it->first == keep)) {
      ++it;
    } else {
      withdrawn = true;
      it = contents_.erase(it);
    }
  }
  owner_ = nullptr;
  return withdrawn;
}
