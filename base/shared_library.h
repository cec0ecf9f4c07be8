#pragma once
// LSharedLibrary: a library opened at run time, for the optional components
// (codecs, sound servers) that a start without them must not pay for and that
// a machine may lack. A library that is missing, or lacks a function, is a
// result with a German message that names it, never a failed start.
//
// The variable SONVALE_MISSING_LIBRARIES (names separated by ':') makes every
// library whose file name starts with one of them count as missing, so that
// the answers of a machine without it can be seen on any machine.
#include <string>

class LSharedLibrary {
public:
  LSharedLibrary() = default;
  ~LSharedLibrary();
  LSharedLibrary(const LSharedLibrary&) = delete;
  LSharedLibrary& operator=(const LSharedLibrary&) = delete;

  // Opens name, else fallback when given (the unversioned name); all its
  // functions are bound at once. False, with Error set, when neither opens.
  [[nodiscard]] bool Load(const char* name, const char* fallback = nullptr);
  [[nodiscard]] bool IsLoaded() const { return handle_ != nullptr; }

  // The function's address, or null (with Error set) when the library lacks it.
  [[nodiscard]] void* Symbol(const char* function);
  // Binds f to the function; false when it is missing.
  template <class F>
  [[nodiscard]] bool Bind(F*& f, const char* function) {
    f = reinterpret_cast<F*>(Symbol(function));
    return f != nullptr;
  }

  // The name that was asked for, and the German message of the last failure.
  [[nodiscard]] const std::string& Name() const { return name_; }
  [[nodiscard]] const std::string& Error() const { return error_; }

private:
  void* handle_ = nullptr;
  std::string name_;
  std::string error_;
};
