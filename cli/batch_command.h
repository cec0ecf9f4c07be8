#pragma once
// sonvale batch [-j N] (--chain FILE.ecf | -e COMMANDS...) [--to FORMAT] --out DIR [--shard K/N] FILE...
#include <string>
#include <vector>

[[nodiscard]] int RunBatchCommand(const std::vector<std::string>& args);
