#pragma once
// sonvale info [--json] [--raw-in R,C,CODE] FILE...
#include <string>
#include <vector>

[[nodiscard]] int RunInfoCommand(const std::vector<std::string>& args);
