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
