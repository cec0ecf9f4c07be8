#include "engine/sound_sink.h"

void LSoundSinkBase::Seek(long long) {}
void LSoundSinkBase::Complete() {}

LSoundSink::LSoundSink(LSoundSinkBase* object) : object_(object) {
  if (object_) object_->refCount_ = 1;
}

LSoundSink::LSoundSink(const LSoundSink& other) : object_(other.object_) {
  if (object_) ++object_->refCount_;
}

LSoundSink::~LSoundSink() { Release(); }

void LSoundSink::Release() {
  if (object_ && --object_->refCount_ == 0) delete object_;
  object_ = nullptr;
}

LSoundSink& LSoundSink::operator=(const LSoundSink& other) {
  if (!other.object_) return *this;
  auto* incoming = other.object_;
  ++incoming->refCount_;  // first, so that self-assignment keeps the object
  Release();
  object_ = incoming;
  return *this;
}

LSoundSink& LSoundSink::operator=(LSoundSink&& other) noexcept {
  if (!other.object_ || &other == this) return *this;
  Release();
  object_ = other.object_;
  other.object_ = nullptr;
  return *this;
}

void LSoundSink::Close() {
  Release();
  object_ = new LSoundSinkError();
  object_->refCount_ = 1;
}

LSoundSink LSoundSink::Error() { return LSoundSink(new LSoundSinkError()); }
