#include "foundation/lumProximityPenetration.h"

#include "foundation/lumProximityPair.h"

#include <algorithm>
#include <limits>

namespace
{
constexpr unsigned int WAY_OUT_STEPS = 24; ///< of one direction
/// A way that is longer than this part of the best one is not looked at any further.
constexpr double WAY_OUT_GAIN = 0.999;

class CWayOutSearch
{
public:
  explicit CWayOutSearch(CProximityPair& io_pair) : m_pair(io_pair), m_home(io_pair.translation()) {}

  void run()
  {
    tryContact();
    tryFrame(false);
    tryFrame(true);
    tryBothWays(m_home);
    m_pair.moveTo(m_home);
  }

  double depth() const { return m_depth; }
  const ClumVect3& direction() const { return m_direction; }

private:
  /// Where the triangles without their sweep are apart, the way between the nearest points is the best for convex
  /// shapes.
  void tryContact()
  {
    const double infinity = std::numeric_limits<double>::infinity();
    const CProximityAnswer answer = m_pair.search(infinity, 1.0, m_pair.slack());
    if (answer.placeA == PROXIMITY_NONE)
      return;
    ClumVect3 onA, onB, s[3], t[3];
    const double distance = m_pair.nearestPoints(answer, onA, onB);
    const double overlap = m_pair.sweep() - distance;
    const ClumVect3 way = (onB - onA).normalized();
    if (distance > m_pair.slack() && overlap >= 0.0)
      tryLength(way, overlap + 2.0 * m_pair.slack());
    tryBothWays(onB - onA);
    m_pair.a().corners(answer.placeA, s);
    m_pair.b().corners(answer.placeB, t);
    tryBothWays((s[1] - s[0]) * (s[2] - s[0]));
    tryBothWays(m_pair.turnToA((t[1] - t[0]) * (t[2] - t[0])));
  }

  /// The directions to the faces, edges and corners of a cube in the frame of one of the two.
  void tryFrame(bool i_isSecond)
  {
    for (int x = -1; x <= 1; ++x)
      for (int y = -1; y <= 1; ++y)
        for (int z = -1; z <= 1; ++z)
        {
          const ClumVect3 direction(x, y, z);
          tryWay(i_isSecond ? m_pair.turnToA(direction) : direction);
        }
  }

  void tryBothWays(const ClumVect3& i_direction)
  {
    tryWay(i_direction);
    tryWay(-i_direction);
  }

  void tryWay(const ClumVect3& i_direction)
  {
    const double norm = i_direction.norm();
    if (!(norm > 0.0))
      return;
    const ClumVect3 way = i_direction / norm;
    const double apart = m_pair.a().support(way) + m_pair.b().support(-m_pair.turnToB(way)) -
                         way.scalarProduct(m_home) + m_pair.sweep() + 2.0 * m_pair.slack();
    double length = std::max(apart, 2.0 * m_pair.slack());
    if (length < m_depth)
      take(way, length);
    else if (!isFree(way, length = m_depth * WAY_OUT_GAIN))
      return;
    shorten(way, length);
  }

  void tryLength(const ClumVect3& i_way, double i_length)
  {
    if (i_length < m_depth && isFree(i_way, i_length))
      take(i_way, i_length);
  }

  /// Halves what lies between a length that is free and one that is not.
  void shorten(const ClumVect3& i_way, double i_length)
  {
    double touching = 0.0, free = i_length;
    for (unsigned int i = 0; i < WAY_OUT_STEPS && free - touching > 1e-6 * free; ++i)
    {
      const double middle = 0.5 * (touching + free);
      (isFree(i_way, middle) ? free : touching) = middle;
    }
    if (free < m_depth)
      take(i_way, free);
  }

  bool isFree(const ClumVect3& i_way, double i_length)
  {
    m_pair.moveTo(m_home + i_way * i_length);
    return !m_pair.areTouching();
  }

  void take(const ClumVect3& i_way, double i_length)
  {
    m_depth = i_length;
    m_direction = i_way;
  }

  CProximityPair& m_pair;
  const ClumVect3 m_home;
  double m_depth = std::numeric_limits<double>::infinity();
  ClumVect3 m_direction;
};
} // namespace

double lumProximityWayOut(CProximityPair& io_pair, ClumVect3& o_direction)
{
  CWayOutSearch search(io_pair);
  search.run();
  o_direction = search.direction();
  return search.depth();
}
