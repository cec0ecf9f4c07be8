#pragma once
// LArray: the library's growable array, a thin name over std::vector.
#include <vector>

template <class T>
using LArray = std::vector<T>;
