#include "engine/sound_source.h"

#include <cstring>

#include "base/platform_file.h"

void LSoundSourceBase::Seek(long long) {}
int LSoundSourceBase::ControlMessage(int, long*) { return 0; }
long long LSoundSourceBase::AdjustRelativeOffset(long long offset, long long) { return offset; }
bool LSoundSourceBase::IsStreaming() const { return false; }
void LSoundSourceBase::WaitForStreamingData(int milliseconds) { LSleepMs(milliseconds); }

void LSoundSourceError::Read(float* buffer, long long frames) {
  if (frames <= 0 || !buffer) return;
  std::memset(buffer, 0, static_cast<size_t>(frames) * GetChannels() * sizeof(float));
}

LSoundSource::LSoundSource(LSoundSourceBase* object) : object_(object) {
  if (object_) object_->refCount_ = 1;
}

LSoundSource::LSoundSource(const LSoundSource& other) : object_(other.object_) {
  if (object_) ++object_->refCount_;
}

LSoundSource::~LSoundSource() { Release(); }

void LSoundSource::Release() {
  if (object_ && --object_->refCount_ == 0) delete object_;
  object_ = nullptr;
}

LSoundSource& LSoundSource::operator=(const LSoundSource& other) {
  if (!other.object_) return *this;
  auto* incoming = other.object_;
  ++incoming->refCount_;  // first, so that self-assignment keeps the object
  Release();
  object_ = incoming;
  return *this;
}

LSoundSource& LSoundSource::operator=(LSoundSource&& other) noexcept {
  if (!other.object_ || &other == this) return *this;
  Release();
  object_ = other.object_;
  other.object_ = nullptr;
  return *this;
}

void LSoundSource::Close() {
  if (!object_) return;
  Release();
  object_ = new LSoundSourceError();
  object_->refCount_ = 1;
}

LSoundSource LSoundSource::Error(unsigned char code) { return LSoundSource(new LSoundSourceError(code)); }
