#pragma once
// LCountedHandle: the counting that the source and sink handles share. The
// object carries a plain 16-bit count (handles and what they share belong to one
// thread at a time); the handle that takes a new object sets it to 1, and the
// object is destroyed through its virtual destructor when the last handle goes.
#include <cstdint>

template <class Object>
class LCountedHandle {
public:
  LCountedHandle() = default;
  // Takes ownership of a newly made object.
  explicit LCountedHandle(Object* object) : object_(object) {
    if (object_) object_->refCount_ = 1;
  }
  LCountedHandle(const LCountedHandle& other) : object_(other.object_) {
    if (object_) ++object_->refCount_;
  }
  LCountedHandle(LCountedHandle&& other) noexcept : object_(other.object_) { other.object_ = nullptr; }
  ~LCountedHandle() { Release(); }

  // Assigning from an empty handle, or one sharing the same object, does nothing
  // at all. The incoming object is counted before the old one is released.
  LCountedHandle& operator=(const LCountedHandle& other) {
    if (!other.object_ || other.object_ == object_) return *this;
    Object* incoming = other.object_;
    ++incoming->refCount_;
    Release();
    object_ = incoming;
    return *this;
  }
  LCountedHandle& operator=(LCountedHandle&& other) noexcept {
    if (!other.object_ || other.object_ == object_) return *this;
    Release();
    object_ = other.object_;
    other.object_ = nullptr;
    return *this;
  }

  Object* Get() const { return object_; }
  bool IsEmpty() const { return object_ == nullptr; }
  std::uint16_t RefCount() const { return object_ ? object_->refCount_ : 0; }

protected:
  // Releases the object held and takes a newly made one in its place.
  void Replace(Object* fresh) {
    Release();
    object_ = fresh;
    if (object_) object_->refCount_ = 1;
  }

  Object* object_ = nullptr;

private:
  void Release() {
    if (object_ && --object_->refCount_ == 0) delete object_;
    object_ = nullptr;
  }
};
