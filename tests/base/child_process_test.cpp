// Children made by copying this process or by starting a program, and their exit codes.
#include "base/child_process.h"

#include <gtest/gtest.h>

#include "base/environment.h"

TEST(ChildProcess, ACopyAndAProgramEndWithTheirCodesAndASignalEndsWithNone) {
  const int copy = LChildStartCopy([] { return 7; });
  ASSERT_GT(copy, 0);
  LChildEnd end;
  ASSERT_TRUE(LChildWaitAny(&end));
  EXPECT_EQ(end.id, copy);
  EXPECT_EQ(end.code, 7);
  EXPECT_FALSE(LChildWaitAny(&end)) << "no child is left";

  ASSERT_TRUE(LProgramIsRunnable("/bin/sh"));
  char* exits[] = {const_cast<char*>("sh"), const_cast<char*>("-c"), const_cast<char*>("exit 3"), nullptr};
  const int shell = LChildStartProgram("/bin/sh", exits, LEnvironmentVariables());
  ASSERT_TRUE(LChildWait(shell, &end));
  EXPECT_EQ(end.code, 3);

  char* killed[] = {const_cast<char*>("sh"), const_cast<char*>("-c"), const_cast<char*>("kill -9 $$"), nullptr};
  ASSERT_TRUE(LChildWait(LChildStartProgram("/bin/sh", killed, LEnvironmentVariables()), &end));
  EXPECT_EQ(end.code, -1);
  EXPECT_EQ(LChildStartProgram("/kein/programm", exits, LEnvironmentVariables()), -1);
}
