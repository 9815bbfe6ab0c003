#include "foundation/lumProximityFar.h"

#include "foundation/lumTriangleDistance.h"

#include <cmath>
#include <limits>

namespace
{
/// For axes in single precision that are not quite orthonormal.
constexpr double FAR_HALF_SHARE = 1.0 + 1e-6;

/// How far the boxes of a model reach along the line, either way from the centre.
struct CFarSide
{
  const CProximityTree& tree;
  double direction[3]; ///< towards the other model, in this one's coordinates

  double reach(const CProximityBox& i_box) const
  {
    double reach = 0.0;
    for (unsigned int k = 0; k < 3; ++k)
    {
      double cosine = 0.0;
      for (unsigned int c = 0; c < 3; ++c)
        cosine += direction[c] * i_box.axes[k][c];
      reach += direction[k] * i_box.center[k] + std::fabs(cosine) * i_box.axes[k][3] * FAR_HALF_SHARE;
    }
    return reach;
  }
};

struct CFarTask
{
  double reach; ///< of both boxes together
  const CProximityBox* a;
  const CProximityBox* b;
};

class CFarSearch
{
public:
  explicit CFarSearch(const CProximityQuery& i_query)
    : m_query(i_query), m_a{*i_query.a, {}}, m_b{*i_query.b, {}}, m_bound(i_query.cap)
  {
    const double* t = i_query.translation;
    m_length = std::sqrt(t[0] * t[0] + t[1] * t[1] + t[2] * t[2]);
    for (unsigned int k = 0; k < 3; ++k)
      m_a.direction[k] = t[k] / m_length;
    for (unsigned int k = 0; k < 3; ++k)
      for (unsigned int c = 0; c < 3; ++c)
        m_b.direction[k] -= i_query.rotation[3 * c + k] * m_a.direction[c];
  }

  void run(CProximityAnswer& o_answer)
  {
    const CProximityBox &rootA = *m_query.a->boxes, &rootB = *m_query.b->boxes;
    m_stack[m_count++] = {m_a.reach(rootA) + m_b.reach(rootB), &rootA, &rootB};
    double passed = std::numeric_limits<double>::infinity();
    while (m_count > 0)
    {
      const CFarTask task = m_stack[--m_count];
      if (m_length - task.reach >= m_bound)
      {
        passed = m_length - task.reach < passed ? m_length - task.reach : passed;
        continue;
      }
      if (task.a->child & task.b->child & PROXIMITY_LEAF)
        measure(task.a->child, task.b->child);
      else
        split(task);
    }
    o_answer.best = m_best;
    o_answer.lower = m_best < passed ? m_best : passed;
    o_answer.placeA = m_placeA;
    o_answer.placeB = m_placeB;
  }

private:
  void split(const CFarTask& i_task)
  {
    const bool splitsA = (i_task.b->child & PROXIMITY_LEAF) ||
                         (!(i_task.a->child & PROXIMITY_LEAF) && i_task.a->axes[0][3] > i_task.b->axes[0][3]);
    const CFarSide& side = splitsA ? m_a : m_b;
    const double other = splitsA ? m_b.reach(*i_task.b) : m_a.reach(*i_task.a);
    const CProximityNode& node = side.tree.nodes[splitsA ? i_task.a->child : i_task.b->child];
    CFarTask* tasks = m_stack + m_count;
    unsigned int count = 0;
    for (unsigned int k = 0; k < node.countBoxes; ++k)
    {
      const CProximityBox& box = side.tree.boxes[node.firstBox + k];
      const CFarTask task = {side.reach(box) + other, splitsA ? &box : i_task.a, splitsA ? i_task.b : &box};
      unsigned int at = count++;
      for (; at > 0 && tasks[at - 1].reach > task.reach; --at)
        tasks[at] = tasks[at - 1];
      tasks[at] = task;
    }
    m_count += count;
  }

  static void load(const CProximityPacket& i_packet, unsigned int i_lane, ClumVect3 o_corners[3])
  {
    for (unsigned int k = 0; k < 3; ++k)
      o_corners[k].setValue(i_packet.corners[k][0][i_lane], i_packet.corners[k][1][i_lane],
                            i_packet.corners[k][2][i_lane]);
  }

  void loadB(const CProximityPacket& i_packet, unsigned int i_lane, ClumVect3 o_corners[3]) const
  {
    ClumVect3 own[3];
    load(i_packet, i_lane, own);
    for (unsigned int k = 0; k < 3; ++k)
      for (unsigned int r = 0; r < 3; ++r)
      {
        const double* row = m_query.rotation + 3 * r;
        o_corners[k][r] = row[0] * own[k][0] + row[1] * own[k][1] + row[2] * own[k][2] + m_query.translation[r];
      }
  }

  void measure(std::uint32_t i_a, std::uint32_t i_b)
  {
    const std::uint32_t packetA = i_a & PROXIMITY_PACKET_MASK, packetB = i_b & PROXIMITY_PACKET_MASK;
    ClumVect3 a[3], b[3], onA, onB;
    for (unsigned int l = 0; l < 4; ++l)
    {
      loadB(m_query.b->packets[packetB], l, b);
      for (unsigned int k = 0; k < 4; ++k)
      {
        load(m_query.a->packets[packetA], k, a);
        const double found = lumTriangleDistance(a, b, onA, onB);
        if (found >= m_best)
          continue;
        m_best = found;
        m_placeA = 4 * packetA + k;
        m_placeB = 4 * packetB + l;
        const double bound = m_query.sweep + (found - m_query.sweep) * m_query.share;
        m_bound = bound < m_bound ? bound : m_bound;
      }
    }
  }

  const CProximityQuery& m_query;
  CFarSide m_a;
  CFarSide m_b;
  double m_length = 0.0;
  double m_bound;
  double m_best = std::numeric_limits<double>::infinity();
  std::uint32_t m_placeA = PROXIMITY_NONE;
  std::uint32_t m_placeB = PROXIMITY_NONE;
  unsigned int m_count = 0;
  CFarTask m_stack[PROXIMITY_STACK_SIZE];
};
} // namespace

void lumProximityFarDistance(const CProximityQuery& i_query, CProximityAnswer& o_answer)
{
  CFarSearch(i_query).run(o_answer);
}
