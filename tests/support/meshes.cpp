#include "support/meshes.h"

#include "foundation/lumMat4.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <random>
#include <utility>

namespace
{
using TTriangle = ClumMesh::TTriangle;
constexpr double PI = 3.14159265358979323846;

struct Draft
{
  std::vector<ClumPoint3> vertices;
  std::vector<TTriangle> triangles;

  void quad(unsigned int i_a, unsigned int i_b, unsigned int i_c, unsigned int i_d)
  {
    triangles.push_back({i_a, i_b, i_c});
    triangles.push_back({i_a, i_c, i_d});
  }
  ClumMeshShPtr mesh() const { return ClumMesh::create(vertices, triangles); }
};

/// A prism over a polygon in the plane of x and y that is star-shaped from its first corner, turning left.
Draft prism(const std::vector<ClumPoint3>& i_polygon, double i_low, double i_high)
{
  Draft draft;
  const unsigned int n = static_cast<unsigned int>(i_polygon.size());
  for (const double z : {i_low, i_high})
    for (const ClumPoint3& corner : i_polygon)
      draft.vertices.emplace_back(corner.x(), corner.y(), z);
  for (unsigned int i = 0; i < n; ++i)
    draft.quad(i, (i + 1) % n, n + (i + 1) % n, n + i);
  for (unsigned int i = 1; i + 1 < n; ++i)
  {
    draft.triangles.push_back({0, i + 1, i});
    draft.triangles.push_back({n, n + i, n + i + 1});
  }
  return draft;
}

ClumVect3 knotPoint(unsigned int i_p, unsigned int i_q, double i_t)
{
  const double r = 1.0 + 0.4 * std::cos(i_q * i_t);
  return ClumVect3(r * std::cos(i_p * i_t), r * std::sin(i_p * i_t), 0.4 * std::sin(i_q * i_t));
}

ClumMat4 at(double i_x, double i_y, double i_z)
{
  ClumMat4 frame;
  frame.translate(i_x, i_y, i_z);
  return frame;
}
} // namespace

ClumMeshShPtr boxMesh(double i_sizeX, double i_sizeY, double i_sizeZ)
{
  const double x = 0.5 * i_sizeX, y = 0.5 * i_sizeY;
  return prism({{-x, -y, 0.0}, {x, -y, 0.0}, {x, y, 0.0}, {-x, y, 0.0}}, -0.5 * i_sizeZ, 0.5 * i_sizeZ).mesh();
}

ClumMeshShPtr sphereMesh(double i_radius, unsigned int i_segments)
{
  Draft draft;
  const unsigned int n = i_segments;
  draft.vertices.emplace_back(0.0, 0.0, -i_radius);
  for (unsigned int i = 1; i < n; ++i)
    for (unsigned int j = 0; j < n; ++j)
    {
      const double latitude = PI * (double(i) / n - 0.5), longitude = 2.0 * PI * j / n;
      draft.vertices.emplace_back(i_radius * std::cos(latitude) * std::cos(longitude),
                                  i_radius * std::cos(latitude) * std::sin(longitude), i_radius * std::sin(latitude));
    }
  draft.vertices.emplace_back(0.0, 0.0, i_radius);
  const unsigned int top = static_cast<unsigned int>(draft.vertices.size()) - 1;
  const auto ring = [&](unsigned int i, unsigned int j) { return 1 + (i - 1) * n + j % n; };
  for (unsigned int j = 0; j < n; ++j)
  {
    draft.triangles.push_back({0, ring(1, j + 1), ring(1, j)});
    draft.triangles.push_back({top, ring(n - 1, j), ring(n - 1, j + 1)});
    for (unsigned int i = 1; i + 1 < n; ++i)
      draft.quad(ring(i, j), ring(i, j + 1), ring(i + 1, j + 1), ring(i + 1, j));
  }
  return draft.mesh();
}

ClumMeshShPtr cylinderMesh(double i_radius, double i_height, unsigned int i_segments)
{
  std::vector<ClumPoint3> polygon;
  for (unsigned int i = 0; i < i_segments; ++i)
    polygon.emplace_back(i_radius * std::cos(2.0 * PI * i / i_segments), i_radius * std::sin(2.0 * PI * i / i_segments),
                         0.0);
  return prism(polygon, -0.5 * i_height, 0.5 * i_height).mesh();
}

ClumMeshShPtr lPart(double i_lengthX, double i_lengthY, double i_width)
{
  const double w = i_width;
  // The inner corner sees all others.
  return prism({{w, w, 0.0},
                {w, i_lengthY, 0.0},
                {0.0, i_lengthY, 0.0},
                {0.0, 0.0, 0.0},
                {i_lengthX, 0.0, 0.0},
                {i_lengthX, w, 0.0}},
               -0.5 * w, 0.5 * w)
    .mesh();
}

ClumMeshShPtr torusKnot(unsigned int i_p, unsigned int i_q, double i_size, double i_tubeRadius, unsigned int i_along,
                        unsigned int i_around)
{
  Draft draft;
  for (unsigned int i = 0; i < i_along; ++i)
  {
    const double t = 2.0 * PI * i / i_along;
    const ClumVect3 center = knotPoint(i_p, i_q, t) * i_size;
    const ClumVect3 along = (knotPoint(i_p, i_q, t + 1e-4) - knotPoint(i_p, i_q, t - 1e-4)).normalized();
    const ClumVect3 side = (along * ClumVect3(0.0, 0.0, 1.0)).normalized();
    const ClumVect3 up = side * along;
    for (unsigned int j = 0; j < i_around; ++j)
    {
      const double angle = 2.0 * PI * j / i_around;
      draft.vertices.emplace_back(center + (side * std::cos(angle) + up * std::sin(angle)) * i_tubeRadius);
    }
  }
  const auto rank = [&](unsigned int i, unsigned int j) { return (i % i_along) * i_around + j % i_around; };
  for (unsigned int i = 0; i < i_along; ++i)
    for (unsigned int j = 0; j < i_around; ++j)
      draft.quad(rank(i, j), rank(i + 1, j), rank(i + 1, j + 1), rank(i, j + 1));
  return draft.mesh();
}

ClumMeshShPtr longBar(double i_length, double i_width)
{
  Draft draft;
  const unsigned int n = std::max(1u, static_cast<unsigned int>(i_length / i_width));
  const double w = 0.5 * i_width;
  const double sides[4][2] = {{-w, -w}, {w, -w}, {w, w}, {-w, w}};
  for (unsigned int i = 0; i <= n; ++i)
    for (const auto& side : sides)
      draft.vertices.emplace_back(i_length * (double(i) / n - 0.5), side[0], side[1]);
  for (unsigned int i = 0; i < n; ++i)
    for (unsigned int k = 0; k < 4; ++k)
      draft.quad(4 * i + k, 4 * i + 4 + k, 4 * i + 4 + (k + 1) % 4, 4 * i + (k + 1) % 4);
  draft.quad(0, 1, 2, 3);
  draft.quad(4 * n + 3, 4 * n + 2, 4 * n + 1, 4 * n);
  for (TTriangle& triangle : draft.triangles)
    std::swap(triangle[1], triangle[2]);
  return draft.mesh();
}

ClumMeshShPtr wallWithWindow(double i_size, double i_thickness, double i_windowY, double i_windowZ)
{
  Draft draft;
  for (const double x : {-0.5 * i_thickness, 0.5 * i_thickness})
    for (const auto& half : {std::make_pair(i_size, i_size), std::make_pair(i_windowY, i_windowZ)})
      for (const auto& sign :
           {std::make_pair(-1, -1), std::make_pair(1, -1), std::make_pair(1, 1), std::make_pair(-1, 1)})
        draft.vertices.emplace_back(x, 0.5 * half.first * sign.first, 0.5 * half.second * sign.second);
  // Ranks: the outer rim, then the window's, first at the back, then at the front.
  for (unsigned int i = 0; i < 4; ++i)
  {
    const unsigned int j = (i + 1) % 4;
    draft.quad(i, 4 + i, 4 + j, j);
    draft.quad(8 + i, 8 + j, 12 + j, 12 + i);
    draft.quad(i, j, 8 + j, 8 + i);
    draft.quad(4 + i, 12 + i, 12 + j, 4 + j);
  }
  return draft.mesh();
}

ClumMeshShPtr clutter(unsigned int i_seed, unsigned int i_count, double i_extent)
{
  std::mt19937 random(i_seed);
  const auto uniform = [&](double low, double high) { return low + (high - low) * (random() / 4294967296.0); };
  std::vector<ClumPlacedLeaf> boxes;
  for (unsigned int i = 0; i < i_count; ++i)
  {
    const double a = uniform(0.04, 0.12), b = uniform(0.04, 0.12), c = uniform(0.04, 0.12);
    const ClumVect3 axis(uniform(-1.0, 1.0), uniform(-1.0, 1.0), uniform(-1.0, 1.0));
    ClumMat4 turn;
    turn.rotate(axis, uniform(0.0, 2.0 * PI));
    const double h = 0.5 * i_extent;
    const double x = uniform(-h, h), y = uniform(-h, h), z = uniform(-h, h);
    boxes.push_back({boxMesh(a * i_extent, b * i_extent, c * i_extent), at(x, y, z) * turn});
  }
  return joined(boxes);
}

ClumMeshShPtr joined(const std::vector<ClumPlacedLeaf>& i_meshes)
{
  Draft draft;
  for (const ClumPlacedLeaf& placed : i_meshes)
  {
    ClumSweptTriangles shape;
    placed.leaf->getSweptTriangles(shape);
    const unsigned int first = static_cast<unsigned int>(draft.vertices.size());
    for (const ClumPoint3& vertex : shape.vertices)
      draft.vertices.push_back(placed.frame * vertex);
    for (const TTriangle& t : shape.triangles)
      draft.triangles.push_back({t[0] + first, t[1] + first, t[2] + first});
  }
  return draft.mesh();
}

ClumMeshShPtr moved(const ClumMesh& i_mesh, const ClumMat4& i_frame, double i_scale)
{
  std::vector<ClumPoint3> vertices;
  for (const ClumPoint3& vertex : i_mesh.vertices())
    vertices.push_back(i_frame * ClumPoint3(vertex.toVect3() * i_scale));
  return ClumMesh::create(vertices, i_mesh.triangles());
}

ClumMeshShPtr refined(const ClumMesh& i_mesh, std::size_t i_least)
{
  std::vector<ClumPoint3> vertices = i_mesh.vertices();
  std::vector<TTriangle> triangles = i_mesh.triangles();
  while (triangles.size() < i_least)
  {
    std::map<std::pair<unsigned int, unsigned int>, unsigned int> middles;
    const auto middle = [&](unsigned int i_a, unsigned int i_b)
    {
      const auto [entry, isNew] = middles.emplace(std::minmax(i_a, i_b), static_cast<unsigned int>(vertices.size()));
      if (isNew)
        vertices.emplace_back((vertices[i_a].toVect3() + vertices[i_b].toVect3()) * 0.5);
      return entry->second;
    };
    std::vector<TTriangle> finer;
    for (const auto& [a, b, c] : triangles)
    {
      const unsigned int ab = middle(a, b), bc = middle(b, c), ca = middle(c, a);
      finer.insert(finer.end(), {{a, ab, ca}, {ab, b, bc}, {ca, bc, c}, {ab, bc, ca}});
    }
    triangles.swap(finer);
  }
  return ClumMesh::create(vertices, triangles);
}
