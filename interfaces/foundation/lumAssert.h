#pragma once

#include "foundation/lumLogManager.h"

/// Logs a violated condition, with file and line, and goes on: the code after it copes with the failure by itself.
#define LUM_ASSERT(EXPRESSION)                                                             \
  do                                                                                       \
  {                                                                                        \
    if (!(EXPRESSION))                                                                     \
      ClumLogManager::addError(__FILE__, __LINE__, "Assertion failed: " #EXPRESSION);      \
  } while (false)

/// Logs an operation whose status is no success, and goes on.
#define LUM_ASSERT_SUCCESS(EXPRESSION)                                                                       \
  do                                                                                                         \
  {                                                                                                          \
    if (((unsigned int)0) != (EXPRESSION).code())                                                            \
      ClumLogManager::addError(__FILE__, __LINE__,                                                           \
                               "Assertion failed: ( ((unsigned int)0) == (" #EXPRESSION ").code() )");       \
  } while (false)
