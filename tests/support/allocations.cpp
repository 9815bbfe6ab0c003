#include "support/allocations.h"

#include <cstdlib>
#include <new>

namespace
{
std::size_t g_allocations = 0;
}

std::size_t countAllocations()
{
  return g_allocations;
}

void* operator new(std::size_t i_size)
{
  ++g_allocations;
  if (void* memory = std::malloc(i_size != 0 ? i_size : 1))
    return memory;
  throw std::bad_alloc();
}

// A sanitizer has its own of these, whose memory does not go to the operators below.
void* operator new(std::size_t i_size, const std::nothrow_t&) noexcept
{
  ++g_allocations;
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
