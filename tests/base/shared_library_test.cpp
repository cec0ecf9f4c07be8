#include "base/shared_library.h"

#include <cstdlib>
#include <gtest/gtest.h>

namespace {

TEST(SharedLibrary, AMissingLibraryOrFunctionIsAResultWithAMessageThatNamesIt) {
  LSharedLibrary nowhere;
  EXPECT_FALSE(nowhere.Load("libsonvale-nowhere.so.7"));
  EXPECT_FALSE(nowhere.IsLoaded());
  EXPECT_NE(nowhere.Error().find("\"libsonvale-nowhere.so.7\""), std::string::npos) << nowhere.Error();

  // The unversioned name stands in for a soname that is not there.
  LSharedLibrary math;
  ASSERT_TRUE(math.Load("libm.so.999", "libm.so.6"));
  double (*cosine)(double) = nullptr;
  ASSERT_TRUE(math.Bind(cosine, "cos"));
  EXPECT_EQ(cosine(0.0), 1.0);
  void (*none)() = nullptr;
  EXPECT_FALSE(math.Bind(none, "sonvale_no_such_function"));
  EXPECT_NE(math.Error().find("\"sonvale_no_such_function\""), std::string::npos) << math.Error();

  // A library named in the variable counts as missing, as on a machine without it.
  ASSERT_EQ(setenv("SONVALE_MISSING_LIBRARIES", "libsonvale-other:libm.so", 1), 0);
  LSharedLibrary hidden;
  EXPECT_FALSE(hidden.Load("libm.so.6"));
  unsetenv("SONVALE_MISSING_LIBRARIES");
  EXPECT_TRUE(hidden.Load("libm.so.6"));
}

}  // namespace
