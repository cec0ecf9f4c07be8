#pragma once
// LList: the library's ordered list, a thin name over std::list.
#include <list>

template <class T>
using LList = std::list<T>;
