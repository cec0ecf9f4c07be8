#pragma once
// LSoundCacheItemHandle: owns one counted reference to a cache item. Copying
// takes another reference, destruction releases it (and may delete the item's
// files, see LSoundCache::DecRef). A handle of the reserved numbers (no item,
// silence) holds nothing. Like the cache it may be used on any thread, one
// thread per handle at a time.
#include "engine/sound_cache.h"

class LSoundCacheItemHandle {
public:
  LSoundCacheItemHandle() = default;
  // Takes a new reference on item.
  explicit LSoundCacheItemHandle(unsigned short item) : item_(item) { LSoundCache::Instance().IncRef(item_); }
  // Takes over a reference the caller already holds (from ItemCreateNewAndIncRef).
  [[nodiscard]] static LSoundCacheItemHandle Adopt(unsigned short item) {
    LSoundCacheItemHandle handle;
    handle.item_ = item;
    return handle;
  }

  LSoundCacheItemHandle(const LSoundCacheItemHandle& other) : item_(other.item_) {
    LSoundCache::Instance().IncRef(item_);
  }
  LSoundCacheItemHandle(LSoundCacheItemHandle&& other) noexcept : item_(other.item_) {
    other.item_ = kLSoundCacheItemNone;
  }
  LSoundCacheItemHandle& operator=(const LSoundCacheItemHandle& other) {
    Reset(other.item_);
    return *this;
  }
  LSoundCacheItemHandle& operator=(LSoundCacheItemHandle&& other) noexcept {
    if (&other != this) {
      Drop();
      item_ = other.item_;
      other.item_ = kLSoundCacheItemNone;
    }
    return *this;
  }
  ~LSoundCacheItemHandle() { Drop(); }

  // Refers to item instead (the new reference is taken before the old one goes).
  void Reset(unsigned short item = kLSoundCacheItemNone) {
    LSoundCache::Instance().IncRef(item);
    Drop();
    item_ = item;
  }
  // Gives up ownership without releasing; the caller now holds the reference.
  [[nodiscard]] unsigned short Release() {
    unsigned short item = item_;
    item_ = kLSoundCacheItemNone;
    return item;
  }

  [[nodiscard]] unsigned short Number() const { return item_; }
  [[nodiscard]] bool IsItem() const { return item_ <= kLSoundCacheItemLast; }

private:
  void Drop() {
    if (IsItem()) LSoundCache::Instance().DecRef(item_);
    item_ = kLSoundCacheItemNone;
  }
  unsigned short item_ = kLSoundCacheItemNone;
};
