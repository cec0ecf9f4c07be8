#pragma once
// LCountedPtr: shared ownership of an object whose count is atomic, so it may
// be released on any thread.
#include <memory>

template <class T>
using LCountedPtr = std::shared_ptr<T>;
