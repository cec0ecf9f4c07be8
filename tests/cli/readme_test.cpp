#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "run_command.h"
#include "support/temp_folder.h"

// Every fenced block without a language in README.md holds commands of the
// command language; they must run as written, in a folder of their own.
TEST(ReadmeTour, EveryCommandBlockRunsAsWritten) {
  std::istringstream readme(ReadFileBytes(SONVALE_README));
  std::string line, script;
  bool inCommands = false, inOther = false;
  while (std::getline(readme, line)) {
    if (line.rfind("```", 0) == 0) {
      if (inCommands || inOther) {
        inCommands = inOther = false;
      } else {
        (line == "```" ? inCommands : inOther) = true;
      }
    } else if (inCommands) {
      script += line + "\n";
    }
  }
  ASSERT_NE(script.find("save out.wav"), std::string::npos) << script;
  TempFolder tmp;
  std::ofstream(tmp.File("tour.txt")) << script;
  std::string output;
  const int status = RunTool("cd '" + tmp.Path() + "' && env SONVALE_CACHE_DIR=cache XDG_CONFIG_HOME=config XDG_DATA_HOME=data '" +
                                 SONVALE_BINARY + "' edit -f tour.txt",
                             &output);
  EXPECT_EQ(status, 0) << output;
  EXPECT_NE(ReadFileBytes(tmp.File("out.wav")), "");
  EXPECT_NE(ReadFileBytes(tmp.File("demo.svp")), "");
}
