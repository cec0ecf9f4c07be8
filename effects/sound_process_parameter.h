#pragma once
// LSoundProcessParameter: what an effect tells about one of its settings (type,
// German label, unit, bounds and current value), for dialogs and scripting.
// The descriptor owns three heap buffers of nSize bytes (bounds and value) while
// bOwned is set; re-initialising or destroying it frees them.
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "base/string_long.h"

// Value types of a parameter. Stored with presets and scripts: never change.
enum LSoundProcessParameterType : std::int32_t {
  kLSPParamInt = 0,      // signed 32-bit
  kLSPParamUInt8 = 2,    // unsigned 8-bit
  kLSPParamDouble = 3,   // double
  kLSPParamLevelDb = 4,  // signed 8-bit, a level in whole decibels
  kLSPParamBool = 5,     // bool
  kLSPParamInt64 = 7,    // signed 64-bit
  kLSPParamUInt16 = 9,   // unsigned 16-bit
};

struct LSoundProcessParameter {
  LSoundProcessParameterType type = kLSPParamInt;
  char szName[kLPathMax] = {};
  char szUnit[kLPathMax] = {};
  int nSize = 0;
  void* pMin = nullptr;
  void* pMax = nullptr;
  void* pValue = nullptr;
  bool bOwned = false;

  LSoundProcessParameter() = default;
  ~LSoundProcessParameter() { Free(); }
  LSoundProcessParameter(const LSoundProcessParameter&) = delete;
  LSoundProcessParameter& operator=(const LSoundProcessParameter&) = delete;

  // For int, double, unsigned short and bool (types 0, 3, 9 and 5). Frees what
  // was owned, allocates the three buffers and stores the bounds; the caller
  // then writes the current value into pValue.
  template <class T>
  void Init(LSoundProcessParameterType valueType, T min, T max, const char* name, const char* unit) {
    static_assert(std::is_same_v<T, int> || std::is_same_v<T, double> || std::is_same_v<T, unsigned short> ||
                      std::is_same_v<T, bool>,
                  "Init is made for int, double, unsigned short and bool");
    InitSized(valueType, sizeof(T), name, unit);
    std::memcpy(pMin, &min, sizeof(T));
    std::memcpy(pMax, &max, sizeof(T));
  }

  // The other types are filled field by field: this allocates zeroed buffers of
  // `size` bytes and sets the labels; the caller copies bounds and value in.
  void InitSized(LSoundProcessParameterType valueType, int size, const char* name, const char* unit);

  // Frees the owned buffers, clears bOwned and sets nSize to 0.
  void Free();

  // Reads a buffer with the width of T (the caller knows the type).
  template <class T>
  static T Get(const void* buffer) {
    T value{};
    if (buffer) std::memcpy(&value, buffer, sizeof(T));
    return value;
  }
  template <class T>
  void SetValue(T value) {
    if (pValue && static_cast<int>(sizeof(T)) <= nSize) std::memcpy(pValue, &value, sizeof(T));
  }
};
