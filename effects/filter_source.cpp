#include "effects/filter_source.h"

#include "effects/preroll.h"

LSRCFilter::LSRCFilter(const LSoundSource& input, std::vector<LBiquad> sections)
    : LSoundProcessBase(input), cascade_(std::move(sections), GetChannels()) {}

void LSRCFilter::Read(float* buffer, long long frames) {
  ReadInput(buffer, frames);
  cascade_.Process(buffer, frames);
}

void LSRCFilter::Seek(long long frame) {
  cascade_.Reset();
  LSeekWithPreroll(*this, frame, LPrerollFrames(*this));
}
