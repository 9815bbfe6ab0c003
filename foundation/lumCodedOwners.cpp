#include "foundation/lumClass.h"
#include "foundation/lumCodedGraph.h"
#include "foundation/lumXMLText.h"

#include <algorithm>

namespace
{
/// Objects that may be shared may unfold to this much more than there are.
constexpr std::size_t SHARED_SURPLUS = 1000000;

/// Walks the objects depth first, without recursion: an object that is met while it is still open closes a circle.
class CCodedOwners
{
public:
  explicit CCodedOwners(const CCodedGraph& i_graph)
    : m_graph(i_graph), m_marks(i_graph.objects.size(), NEW), m_treeSizes(i_graph.objects.size(), 1)
  {
  }

  bool check(std::size_t& o_object, std::string& o_reason)
  {
    for (std::size_t first = 0; first < m_marks.size(); ++first)
      if (m_marks[first] == NEW && m_graph.objects[first].state == CCodedObject::WRITTEN &&
          !walkFrom(first, o_object, o_reason))
        return false;
    return true;
  }

private:
  enum EMark : unsigned char
  {
    NEW,
    OPEN,
    DONE
  };
  struct CStep
  {
    std::size_t object;
    std::vector<std::size_t> owned;
    std::size_t next = 0;
  };

  bool walkFrom(std::size_t i_first, std::size_t& o_object, std::string& o_reason)
  {
    open(i_first);
    while (!m_steps.empty())
    {
      CStep& step = m_steps.back();
      o_object = step.object;
      if (step.next == step.owned.size())
      {
        if (!close(step))
        {
          o_reason = "the objects that it shares unfold to a tree without end";
          return false;
        }
        m_steps.pop_back();
        continue;
      }
      const std::size_t owned = step.owned[step.next++];
      o_reason = "the object owns itself over others";
      if (m_marks[owned] == OPEN)
        return false;
      if (m_marks[owned] == NEW)
        open(owned);
    }
    o_reason.clear();
    return true;
  }

  void open(std::size_t i_object)
  {
    m_marks[i_object] = OPEN;
    m_steps.emplace_back();
    m_steps.back().object = i_object;
    collect(m_graph.objects[i_object].space, m_steps.back().owned);
  }

  /// Only objects of one family are walked together: a path and its parts, a space and its sub-spaces.
  bool close(const CStep& i_step)
  {
    m_marks[i_step.object] = DONE;
    std::size_t& size = m_treeSizes[i_step.object];
    const ClumClass* const family = familyOf(m_graph.objects[i_step.object].classObject);
    for (const std::size_t owned : i_step.owned)
      if (familyOf(m_graph.objects[owned].classObject) == family)
        size = std::min(size + m_treeSizes[owned], 2 * SHARED_SURPLUS + m_marks.size());
    return size <= SHARED_SURPLUS + m_marks.size();
  }

  void collect(const CCodedSpace& i_space, std::vector<std::size_t>& io_owned) const
  {
    for (const CCodedEntry& entry : i_space.entries)
      if (const auto* reference = std::get_if<CCodedReference>(&entry.value))
      {
        if (!reference->isWeak && reference->object != NO_OBJECT &&
            m_graph.objects[reference->object].state == CCodedObject::WRITTEN)
          io_owned.push_back(reference->object);
      }
      else if (const auto* inner = std::get_if<std::unique_ptr<CCodedSpace>>(&entry.value))
        collect(**inner, io_owned);
  }

  /// The topmost class of the object's own kind.
  const ClumClass* familyOf(const ClumClassShPtr& i_class)
  {
    const ClumClass*& family = m_families[i_class.get()];
    if (family)
      return family;
    ClumClassShPtr top = i_class;
    for (ClumClassShPtr above = top; above != ClumMutableCodable::CLASS && above != ClumCodable::CLASS;
         above = above->parents().at(0))
      top = above;
    return family = top.get();
  }

  const CCodedGraph& m_graph;
  std::vector<EMark> m_marks;
  std::vector<std::size_t> m_treeSizes;
  std::vector<CStep> m_steps;
  std::unordered_map<const ClumClass*, const ClumClass*> m_families;
};
} // namespace

bool lumCheckOwners(const CCodedGraph& i_graph, std::size_t& o_object, std::string& o_reason)
{
  return CCodedOwners(i_graph).check(o_object, o_reason);
}
