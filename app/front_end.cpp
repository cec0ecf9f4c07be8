#include "app/front_end.h"

LProcessResult SVFrontEndQuiet::RunProcess(const char* title, const SVProcessJob& job) {
  LProcessInterfaceQuiet process;
  process.SetStatus(title, 0);
  return job ? job(process) : kLProcessFailed;
}
