#pragma once

#include <cstddef>
#include <iterator>
#include <list>
#include <memory>
#include <utility>
#include <vector>

/// Runs over several lists as over one. All iterators at the end of their chain are equal to one another.
///
/// `KEEPER` is what keeps the lists alive while the iterator is in use: the chain is a vector of (keeper, list).
template <class T, class KEEPER>
class CorvLinkedIterator
{
public:
  using iterator_category = std::forward_iterator_tag;
  using value_type = T;
  using difference_type = std::ptrdiff_t;
  using pointer = const T*;
  using reference = const T&;
  using TList = std::list<T>;
  using TChain = std::vector<std::pair<KEEPER, const TList*>>;

  /// The end of any chain.
  CorvLinkedIterator() = default;
  /// The first element of a chain.
  explicit CorvLinkedIterator(TChain i_chain) : m_chain(std::make_shared<const TChain>(std::move(i_chain)))
  {
    if (m_chain->empty())
      return;
    m_element = (*m_chain)[0].second->begin();
    skipEmpty();
  }

  reference operator*() const { return *m_element; }
  pointer operator->() const { return &*m_element; }
  CorvLinkedIterator& operator++()
  {
    ++m_element;
    skipEmpty();
    return *this;
  }
  CorvLinkedIterator operator++(int)
  {
    CorvLinkedIterator before = *this;
    ++*this;
    return before;
  }

  bool operator==(const CorvLinkedIterator& i_other) const
  {
    return isAtEnd() || i_other.isAtEnd() ? isAtEnd() == i_other.isAtEnd() : m_element == i_other.m_element;
  }
  bool operator!=(const CorvLinkedIterator& i_other) const { return !(*this == i_other); }

private:
  bool isAtEnd() const { return !m_chain || m_list >= m_chain->size(); }

  void skipEmpty()
  {
    while (m_element == (*m_chain)[m_list].second->end())
    {
      if (++m_list >= m_chain->size())
        return;
      m_element = (*m_chain)[m_list].second->begin();
    }
  }

  std::shared_ptr<const TChain> m_chain;
  std::size_t m_list = 0;
  typename TList::const_iterator m_element;
};
