#include "support/allocations.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace
{
std::atomic<std::size_t> g_allocations{0};
}

std::size_t countAllocations()
{
  return g_allocations.load(std::memory_order_relaxed);
}

void* operator new(std::size_t i_size)
{
  g_allocations.fetch_add(1, std::memory_order_relaxed);
  if (void* memory = std::malloc(i_size != 0 ? i_size : 1))
    return memory;
  throw std::bad_alloc();
}

// A sanitizer has its own of these, whose memory does not go to the operators below.
void* operator new(std::size_t i_size, const std::nothrow_t&) noexcept
{
  g_allocations.fetch_add(1, std::memory_order_relaxed);
  return std::malloc(i_size != 0 ? i_size : 1);
}

void operator delete(void* i_memory) noexcept
{
  std::free(i_memory);
}

void operator delete(void* i_memory, std::size_t) noexcept
{
  std::free(i_memory);
}
