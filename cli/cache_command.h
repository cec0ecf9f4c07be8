#pragma once
// sonvale cache [--clean]: where the sound cache is, how many items it holds,
// their size and the oldest last use; with --clean runs the clean-up first and
// names what it removed.
#include <string>
#include <vector>

[[nodiscard]] int RunCacheCommand(const std::vector<std::string>& args);
