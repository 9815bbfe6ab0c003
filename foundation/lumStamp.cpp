#include "foundation/lumStamp.h"

#include <atomic>

std::uint64_t lumNextStamp()
{
  static std::atomic<std::uint64_t> s_last{0};
  return s_last.fetch_add(1, std::memory_order_relaxed) + 1;
}
