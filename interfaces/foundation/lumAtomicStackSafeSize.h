#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

/// A stack of elements in blocks: it grows at the end and is read by index, `i` standing in block `i >> 7` at place
/// `i & 127`.
///
/// An empty stack owns no memory. The first block grows by doubling, so that a short stack costs little; the later ones
/// are allocated whole and never move, so that a long stack grows without moving its elements. The size is raised after
/// the element is in place: what lies below `size()` is always complete. One thread at a time may change a stack.
template <class T>
class ClumAtomicStackSafeSize
{
public:
  static constexpr unsigned int BLOCK_SHIFT = 7;
  static constexpr unsigned int BLOCK_SIZE = 1u << BLOCK_SHIFT;

  ClumAtomicStackSafeSize() = default;
  ClumAtomicStackSafeSize(ClumAtomicStackSafeSize&& i_other) noexcept { swap(i_other); }
  ClumAtomicStackSafeSize& operator=(ClumAtomicStackSafeSize&& i_other) noexcept
  {
    ClumAtomicStackSafeSize(std::move(i_other)).swap(*this);
    return *this;
  }

  unsigned int size() const { return m_size; }
  bool empty() const { return m_size == 0; }

  /// @pre `i_index < size()`.
  const T& operator[](unsigned int i_index) const
  {
    return i_index < BLOCK_SIZE ? m_first[i_index]
                                : (*m_rest)[(i_index >> BLOCK_SHIFT) - 1][i_index & (BLOCK_SIZE - 1)];
  }

  void push(T i_element)
  {
    if (m_size < BLOCK_SIZE)
    {
      if (m_size == m_firstCapacity)
        growFirst();
      m_first[m_size] = std::move(i_element);
    }
    else
    {
      if ((m_size & (BLOCK_SIZE - 1)) == 0)
        addBlock();
      (*m_rest)[(m_size >> BLOCK_SHIFT) - 1][m_size & (BLOCK_SIZE - 1)] = std::move(i_element);
    }
    ++m_size;
  }

  void clear() { ClumAtomicStackSafeSize().swap(*this); }

  void swap(ClumAtomicStackSafeSize& io_other) noexcept
  {
    std::swap(m_size, io_other.m_size);
    std::swap(m_firstCapacity, io_other.m_firstCapacity);
    m_first.swap(io_other.m_first);
    m_rest.swap(io_other.m_rest);
  }

  /// Bytes held beside the object itself.
  std::size_t allocatedBytes() const
  {
    const std::size_t rest = m_rest ? sizeof(*m_rest) + m_rest->capacity() * sizeof(std::unique_ptr<T[]>) +
                                        m_rest->size() * BLOCK_SIZE * sizeof(T)
                                    : 0;
    return m_firstCapacity * sizeof(T) + rest;
  }

private:
  static constexpr unsigned int FIRST_CAPACITY = 2;

  void growFirst()
  {
    const unsigned int capacity = m_firstCapacity ? 2 * m_firstCapacity : FIRST_CAPACITY;
    std::unique_ptr<T[]> grown(new T[capacity]);
    std::move(m_first.get(), m_first.get() + m_size, grown.get());
    m_first.swap(grown);
    m_firstCapacity = capacity;
  }

  void addBlock()
  {
    if (!m_rest)
      m_rest.reset(new std::vector<std::unique_ptr<T[]>>);
    m_rest->emplace_back(new T[BLOCK_SIZE]);
  }

  unsigned int m_size = 0;
  unsigned int m_firstCapacity = 0;
  std::unique_ptr<T[]> m_first;
  std::unique_ptr<std::vector<std::unique_ptr<T[]>>> m_rest; ///< the blocks behind the first, null until needed
};
