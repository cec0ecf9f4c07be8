#include "engine/sound_sink.h"

void LSoundSinkBase::Seek(long long) {}
void LSoundSinkBase::Complete() {}
