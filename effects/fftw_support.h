#pragma once
// What the FFT-based effects share around FFTW (single precision): buffers that
// FFTW aligns, freed by their handles, and the one lock around its planner,
// which keeps global state; plans are made and destroyed under it, one at a time.
#if !defined(SONVALE_HAVE_FFTW)
#error "The FFT-based effects need FFTW single precision (fftw3f)."
#endif

#include <fftw3.h>

#include <memory>
#include <mutex>

std::mutex& LFftwPlannerMutex();

struct LFftwFree {
  void operator()(void* p) const { fftwf_free(p); }
};
using LFftwReal = std::unique_ptr<float[], LFftwFree>;
using LFftwComplex = std::unique_ptr<fftwf_complex[], LFftwFree>;

// Zeroed buffers of `count` values; std::bad_alloc when there is no room.
LFftwReal LFftwAllocReal(long long count);
LFftwComplex LFftwAllocComplex(long long count);
