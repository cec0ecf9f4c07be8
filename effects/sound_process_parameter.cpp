#include "effects/sound_process_parameter.h"

#include <cstdio>

namespace {

void CopyLabel(char (&out)[kLPathMax], const char* text) {
  std::snprintf(out, sizeof out, "%s", text ? text : "");
}

}  // namespace

void LSoundProcessParameter::Free() {
  if (bOwned) {
    delete[] static_cast<unsigned char*>(pMin);
    delete[] static_cast<unsigned char*>(pMax);
    delete[] static_cast<unsigned char*>(pValue);
    bOwned = false;
    nSize = 0;
  }
  pMin = pMax = pValue = nullptr;
}

void LSoundProcessParameter::InitSized(LSoundProcessParameterType valueType, int size, const char* name,
                                       const char* unit) {
  Free();
  type = valueType;
  nSize = size > 0 ? size : 0;
  // operator new[] gives memory aligned for any value type a parameter holds.
  pMin = new unsigned char[static_cast<std::size_t>(nSize)]();
  pMax = new unsigned char[static_cast<std::size_t>(nSize)]();
  pValue = new unsigned char[static_cast<std::size_t>(nSize)]();
  bOwned = true;
  CopyLabel(szName, name);
  CopyLabel(szUnit, unit);
}
