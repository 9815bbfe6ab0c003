#include "foundation/lumStamp.h"

#include <atomic>

namespace
{
std::atomic<std::uint64_t>& latestStamp()
{
  static std::atomic<std::uint64_t> s_latest{0};
  return s_latest;
}
} // namespace

std::uint64_t lumNextStamp()
{
  return latestStamp().fetch_add(1, std::memory_order_relaxed) + 1;
}

std::uint64_t lumLatestStamp()
{
  return latestStamp().load(std::memory_order_relaxed);
}
