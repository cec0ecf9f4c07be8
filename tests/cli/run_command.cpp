#include "run_command.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>
#include <sys/wait.h>
#include <unistd.h>

namespace {

std::string Quote(const std::string& s) {
  std::string q = "'";
  for (char c : s) q += (c == '\'') ? std::string("'\\''") : std::string(1, c);
  return q + "'";
}

std::string Slurp(const std::string& path) { return ReadFileBytes(path); }

}  // namespace

CommandResult RunSonvale(const std::vector<std::string>& args, const std::vector<std::string>& env,
                         const std::string& input) {
  char dir[] = "/tmp/sonvale-run-XXXXXX";
  CommandResult result;
  if (!mkdtemp(dir)) return result;
  std::string base = dir;
  {
    std::ofstream in(base + "/in");
    in << input;
  }
  std::string line;
  for (const auto& e : env) line += e + " ";
  line += Quote(SONVALE_BINARY);
  for (const auto& a : args) line += " " + Quote(a);
  line += " <" + base + "/in >" + base + "/out 2>" + base + "/err";
  int raw = std::system(("env " + line).c_str());
  result.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
  result.out = Slurp(base + "/out");
  result.err = Slurp(base + "/err");
  std::system(("rm -rf " + base).c_str());
  return result;
}

int RunTool(const std::string& commandLine, std::string* output) {
  FILE* pipe = popen((commandLine + " 2>&1").c_str(), "r");
  if (!pipe) return -1;
  std::array<char, 4096> buffer{};
  std::string text;
  size_t n;
  while ((n = fread(buffer.data(), 1, buffer.size(), pipe)) > 0) text.append(buffer.data(), n);
  int raw = pclose(pipe);
  if (output) *output = text;
  return WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
}

bool ToolAvailable(const char* name) { return RunTool(std::string("command -v ") + name + " >/dev/null") == 0; }

std::string ReadFileBytes(const std::string& path) {
  std::ifstream f(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(f), std::istreambuf_iterator<char>());
}
