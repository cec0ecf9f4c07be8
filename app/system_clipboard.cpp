#include "app/system_clipboard.h"

#include "base/platform_file.h"

void SVSystemClipboard::TextPut(const char* text) {
  DeclareTypes({kSVClipboardTypeText}, nullptr);
  TextSet(text);
}

SVSystemClipboardMemory::~SVSystemClipboardMemory() { Empty(); }

void SVSystemClipboardMemory::Empty() {
  for (auto& [type, content] : contents_) {
    if (!content.file.empty()) LFileDelete(content.file.c_str());
  }
  contents_.clear();
  owner_ = nullptr;
}

void SVSystemClipboardMemory::DeclareTypes(const LArray<LStringLong>& types, SVClipboardRenderer* owner) {
  Empty();
  for (const LStringLong& type : types) contents_[type];
  owner_ = owner;
}

bool SVSystemClipboardMemory::HasType(const char* type) { return contents_.count(type ? type : "") != 0; }

bool SVSystemClipboardMemory::DataFileSet(const char* type, const char* path) {
  auto it = contents_.find(type ? type : "");
  if (it == contents_.end() || !path || !*path) return false;
  if (!it->second.file.empty() && it->second.file != path) LFileDelete(it->second.file.c_str());
  it->second.file = path;
  it->second.filled = true;
  return true;
}

LStringLong SVSystemClipboardMemory::DataFileGet(const char* type) {
  auto it = contents_.find(type ? type : "");
  if (it == contents_.end()) return LStringLong();
  if (!it->second.filled) {
    if (!owner_) return LStringLong();
    ++renders_;
    if (!owner_->EvRender(*this, type)) return LStringLong();
    it = contents_.find(type);
    if (it == contents_.end()) return LStringLong();
  }
  return it->second.file;
}

bool SVSystemClipboardMemory::TextSet(const char* text) {
  auto it = contents_.find(kSVClipboardTypeText);
  if (it == contents_.end()) return false;
  it->second.text = text ? text : "";
  it->second.filled = true;
  return true;
}

LStringLong SVSystemClipboardMemory::TextGet() {
  auto it = contents_.find(kSVClipboardTypeText);
  return it == contents_.end() ? LStringLong() : it->second.text;
}

void SVSystemClipboardMemory::OwnerGone(SVClipboardRenderer* owner) {
  if (owner_ != owner) return;
  for (auto it = contents_.begin(); it != contents_.end();) {
    it = it->second.filled ? std::next(it) : contents_.erase(it);
  }
  owner_ = nullptr;
}
