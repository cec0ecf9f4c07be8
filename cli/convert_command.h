#pragma once
// sonvale convert IN OUT [--to LAYOUT] [--dither] [--raw-in R,C,CODE] [--raw R,C,CODE]
#include <string>
#include <vector>

[[nodiscard]] int RunConvertCommand(const std::vector<std::string>& args);
