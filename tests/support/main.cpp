#include <gtest/gtest.h>

int main(int i_count, char** i_arguments)
{
  testing::InitGoogleTest(&i_count, i_arguments);
  return RUN_ALL_TESTS();
}
