#include "effects/fftw_support.h"

#include <cstring>
#include <new>

std::mutex& LFftwPlannerMutex() {
  static std::mutex mutex;
  return mutex;
}

LFftwReal LFftwAllocReal(long long count) {
  float* p = fftwf_alloc_real(static_cast<std::size_t>(count));
  if (!p) throw std::bad_alloc();
  std::memset(p, 0, static_cast<std::size_t>(count) * sizeof(float));
  return LFftwReal(p);
}

LFftwComplex LFftwAllocComplex(long long count) {
  fftwf_complex* p = fftwf_alloc_complex(static_cast<std::size_t>(count));
  if (!p) throw std::bad_alloc();
  std::memset(p, 0, static_cast<std::size_t>(count) * sizeof(fftwf_complex));
  return LFftwComplex(p);
}
