#pragma once
// LStringLongTemplate: the library's string of any length.
#include <string>

template <class Char>
using LStringLongTemplate = std::basic_string<Char>;
using LStringLong = LStringLongTemplate<char>;

// Names and paths are kept within the fixed buffers of the file formats.
constexpr int kLPathMax = 260;
