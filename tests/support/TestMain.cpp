#include "core/Log.h"

#include <gtest/gtest.h>

int main(int argc, char **argv) {
  testing::InitGoogleTest(&argc, argv);
  // Tests observe the log through sinks; nothing goes to a file by default.
  ResetLog();
  return RUN_ALL_TESTS();
}
