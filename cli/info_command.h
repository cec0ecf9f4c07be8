#pragma once
// sonvale info [--json] [--loudness] [--raw-in R,C,CODE] FILE...
// --loudness adds the integrated loudness, its range and the true peak.
#include <string>
#include <vector>

[[nodiscard]] int RunInfoCommand(const std::vector<std::string>& args);
