#include "base/process_interface.h"

#include <cstdarg>
#include <cstdio>

void LProcessInterface::SetErrorF(const char* format, ...) {
  char text[2048];
  va_list args;
  va_start(args, format);
  std::vsnprintf(text, sizeof text, format, args);
  va_end(args);
  SetError(text);
}

void LProcessInterface::SetStatusF(int line, const char* format, ...) {
  char text[2048];
  va_list args;
  va_start(args, format);
  std::vsnprintf(text, sizeof text, format, args);
  va_end(args);
  SetStatus(text, line);
}

void LProcessInterfaceSubProcess::SetProgress(double fraction) {
  if (fraction < 0.0) fraction = 0.0;
  if (fraction > 1.0) fraction = 1.0;
  parent_.SetProgress(from_ + (to_ - from_) * fraction);
}

void LProcessInterfaceQuiet::SetStatus(const char* text, int line) {
  status_[line == 0 ? 0 : 1] = text ? text : "";
}

bool LProcessInterfaceQuiet::IsCancelled() {
  ++checks_;
  if (cancelAfter_ >= 0 && checks_ > cancelAfter_) cancel_.store(true, std::memory_order_relaxed);
  return cancel_.load(std::memory_order_relaxed);
}
