#include "foundation/lumJoinedTriangles.h"

#include <algorithm>

namespace
{
void appendSweptTriangles(const ClumSweptTriangles& i_shape, const ClumMat4& i_frame, ClumSweptTriangles& io_joined)
{
  const unsigned int first = static_cast<unsigned int>(io_joined.vertices.size());
  for (const ClumPoint3& vertex : i_shape.vertices)
    io_joined.vertices.push_back(i_frame * vertex);
  const auto append =
    [&](const std::vector<ClumSweptTriangles::TTriangle>& from, std::vector<ClumSweptTriangles::TTriangle>& to)
  {
    for (const ClumSweptTriangles::TTriangle& t : from)
      to.push_back({t[0] + first, t[1] + first, t[2] + first});
  };
  append(i_shape.triangles, io_joined.triangles);
  append(i_shape.seams, io_joined.seams);
  io_joined.excess = std::max(io_joined.excess, i_shape.excess);
}
} // namespace

bool lumJoinSweptTriangles(const std::vector<ClumPlacedLeaf>& i_leaves, ClumSweptTriangles& o_joined)
{
  o_joined = ClumSweptTriangles();
  for (std::size_t i = 0; i < i_leaves.size(); ++i)
  {
    ClumSweptTriangles shape;
    i_leaves[i].leaf->getSweptTriangles(shape);
    if (i == 0)
    {
      o_joined.radius = shape.radius;
      o_joined.solidity = shape.solidity;
    }
    if (shape.radius != o_joined.radius || shape.solidity != o_joined.solidity)
      return false;
    appendSweptTriangles(shape, i_leaves[i].frame, o_joined);
  }
  return !o_joined.triangles.empty();
}
