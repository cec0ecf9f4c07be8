#pragma once
// sonvale edit FILE... [-e COMMAND]... [-f SCRIPT] [-o OUT] [--to FORMAT]
// sonvale shell [FILE...]
#include <string>
#include <vector>

[[nodiscard]] int RunEditCommand(const std::vector<std::string>& args);
[[nodiscard]] int RunShellCommand(const std::vector<std::string>& args);
