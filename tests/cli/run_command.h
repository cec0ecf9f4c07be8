#pragma once
// Runs the built sonvale binary as a user would and collects what it prints.
#include <string>
#include <vector>

struct CommandResult {
  int status = -1;
  std::string out;
  std::string err;
};

// env: extra "NAME=VALUE" entries; input: fed to standard input.
CommandResult RunSonvale(const std::vector<std::string>& args, const std::vector<std::string>& env = {},
                         const std::string& input = "");
// Runs a shell command line (for outside tools such as sox); answers its exit status.
int RunTool(const std::string& commandLine, std::string* output = nullptr);
bool ToolAvailable(const char* name);
std::string ReadFileBytes(const std::string& path);
