#include "foundation/lumBox.h"
#include "foundation/lumCapsule.h"
#include "foundation/lumCone.h"
#include "foundation/lumConvex.h"
#include "foundation/lumCylinder.h"
#include "foundation/lumFCLCollisionToolkit.h"
#include "foundation/lumMesh.h"
#include "foundation/lumProximityCollisionToolkit.h"
#include "foundation/lumSphere.h"
#include "foundation/lumTriangleDistance.h"
#include "support/dice.h"
#include "support/meshes.h"
#include "support/triangleOracle.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>

namespace
{
constexpr double INF = std::numeric_limits<double>::infinity();

ClumCollisionToolkitShPtr toolkitNamed(const std::string& i_name)
{
  if (i_name == "FCL")
    return ClumFCLCollisionToolkit::create();
  return ClumProximityCollisionToolkit::create();
}

/// Asks about leaves instead of models.
class Toolkit
{
public:
  explicit Toolkit(const std::string& i_name) : m_toolkit(toolkitNamed(i_name)) {}
  bool areTouching(const ClumLeafGeometry& i_a, const ClumMat4& i_poseA, const ClumLeafGeometry& i_b,
                   const ClumMat4& i_poseB) const
  {
    return m_toolkit->areTouching(*i_a.collisionModel(*m_toolkit), i_poseA, *i_b.collisionModel(*m_toolkit), i_poseB);
  }
  ClumDistanceResult distance(const ClumLeafGeometry& i_a, const ClumMat4& i_poseA, const ClumLeafGeometry& i_b,
                              const ClumMat4& i_poseB, double i_cap = INF, double i_accuracy = 0.0, double i_stop = 0.0,
                              const ClumDistanceResult* i_hint = nullptr) const
  {
    return m_toolkit->boundedDistance(*i_a.collisionModel(*m_toolkit), i_poseA, *i_b.collisionModel(*m_toolkit),
                                      i_poseB, i_cap, i_accuracy, i_stop, i_hint);
  }
  const ClumCollisionToolkit& operator*() const { return *m_toolkit; }

private:
  ClumCollisionToolkitShPtr m_toolkit;
};

void expectTriangles(const ClumVect3 i_s[3], const ClumVect3 i_t[3])
{
  oracle::Triangle s, t;
  double size = 0.0;
  for (int k = 0; k < 3; ++k)
  {
    s.corners[k] = oracle::Vector(i_s[k]);
    t.corners[k] = oracle::Vector(i_t[k]);
    size = std::max({size, i_s[k].norm(), i_t[k].norm()});
  }
  ClumVect3 onS, onT;
  const double found = lumTriangleDistance(i_s, i_t, onS, onT);
  const double expected = static_cast<double>(oracle::triangleTriangle(s, t));
  const double slack = 1e-13 * size + lumTriangleUncertainty(i_s) + lumTriangleUncertainty(i_t);
  ASSERT_NEAR(found, expected, slack);
  for (int k = 0; k < 3; ++k)
    ASSERT_NEAR(lumPointTriangleDistance(i_t[k], i_s),
                static_cast<double>(oracle::pointTriangle(oracle::Vector(i_t[k]), s)), slack);
  if (found > slack)
  {
    ASSERT_NEAR((onS - onT).norm(), found, 1e-13 * size);
    ASSERT_LE(static_cast<double>(oracle::pointTriangle(oracle::Vector(onS), s)), slack);
    ASSERT_LE(static_cast<double>(oracle::pointTriangle(oracle::Vector(onT), t)), slack);
  }
}
} // namespace

/// What must hold of both toolkits.
class CollisionToolkit : public testing::TestWithParam<const char*>
{
};
INSTANTIATE_TEST_SUITE_P(All, CollisionToolkit, testing::Values("FCL", "Proximity"),
                         [](const testing::TestParamInfo<const char*>& i_info) { return std::string(i_info.param); });

TEST(TriangleDistance, AgreesWithAllFeaturePairs)
{
  Dice dice(11);
  for (int n = 0; n < 20000; ++n)
  {
    const double scale = std::pow(10.0, dice(-3.0, 3.0));
    ClumVect3 s[3], t[3];
    for (int k = 0; k < 3; ++k)
    {
      s[k] = dice.vector(scale);
      t[k] = dice.vector(scale) + ClumVect3(n % 3 * 0.7 * scale, 0.0, 0.0);
    }
    switch (n % 8)
    {
    case 0: s[2] = s[1]; break;                                                              // a segment
    case 1: s[1] = s[2] = s[0]; break;                                                       // a point
    case 2: s[2] = s[0] + (s[1] - s[0]) * 0.4 + dice.vector(1e-9 * scale); break;            // a sliver
    case 3: t[0] = s[1]; break;                                                              // a common corner
    case 4: t[1] = s[0] * 0.2 + s[1] * 0.3 + s[2] * 0.5; break;                              // a corner on the face
    case 5: t[0][2] = t[1][2] = t[2][2] = s[0][2] = s[1][2] = s[2][2]; break;                // coplanar
    case 6: t[1] = t[0] + (s[1] - s[0]) * dice(0.5, 2.0) + dice.vector(1e-8 * scale); break; // parallel edges
    default: break;
    }
    expectTriangles(s, t);
    expectTriangles(t, s);
    if (HasFatalFailure())
      FAIL() << "case " << n;
  }
}

namespace
{
/// Meshes of every kind, small enough for all pairs of triangles.
std::vector<ClumMeshShPtr> zoo()
{
  const ClumMeshShPtr open = ClumMesh::create({{0, 0, 0}, {1, 0, 0}, {1, 1, 0.2}, {0, 1, 0}}, {{0, 1, 2}, {0, 2, 3}});
  return {boxMesh(2.0, 2.0, 2.0),
          boxMesh(0.1, 0.1, 0.1),
          torusKnot(2, 3, 1.0, 0.15, 18, 4),
          clutter(3, 5, 3.0),
          lPart(2.0, 1.0, 0.2),
          longBar(3.0, 0.1),
          wallWithWindow(3.0, 0.2, 1.0, 0.8),
          sphereMesh(0.7, 6),
          open};
}

struct Truth
{
  double surface;
  bool isNested;
  double distance() const { return isNested ? 0.0 : surface; }
};

bool windsAround(const std::vector<oracle::Triangle>& i_surface, const std::vector<oracle::Triangle>& i_points)
{
  // Every corner is tried: the parts of a mesh may lie inside one by one.
  for (const oracle::Triangle& triangle : i_points)
    if (std::fabs(oracle::winding(i_surface, triangle.corners[0])) > 0.5)
      return true;
  return false;
}

Truth truth(const ClumMesh& i_a, const ClumMat4& i_poseA, const ClumMesh& i_b, const ClumMat4& i_poseB)
{
  const auto a = oracle::placed(i_a, i_poseA), b = oracle::placed(i_b, i_poseB);
  const double surface = static_cast<double>(oracle::surfaceDistance(a, b));
  return {surface, surface > 0.0 && ((i_a.isClosed() && windsAround(a, b)) || (i_b.isClosed() && windsAround(b, a)))};
}

/// What must hold of every answer, whatever was asked.
void expectSound(const ClumDistanceResult& i_result, const Truth& i_truth, double i_slack)
{
  ASSERT_LE(i_result.lower, i_truth.distance() + 1e-14 * i_slack);
  ASSERT_GE(i_result.upper, i_truth.distance() - i_slack);
  ASSERT_GE(i_result.lower, 0.0);
  if (i_truth.surface > 0.0 && i_result.hasPoints && i_result.upper > 0.0)
  {
    ASSERT_NEAR(i_result.pointA.distanceFrom(i_result.pointB), i_result.upper, i_slack);
  }
}
} // namespace

TEST_P(CollisionToolkit, MeshDistancesAgreeWithAllTrianglePairs)
{
  const std::vector<ClumMeshShPtr> meshes = zoo();
  const Toolkit toolkit(GetParam());
  Dice dice(5);
  unsigned int countContacts = 0, countNested = 0;
  for (int n = 0; n < 160; ++n)
  {
    const double scale = std::pow(10.0, n % 7 - 3);
    // Now and then the large and the small box.
    const ClumMeshShPtr a = moved(*meshes[n % 9 ? dice.rank(meshes.size()) : 0], ClumMat4(), scale);
    const ClumMeshShPtr b = moved(*meshes[n % 9 ? dice.rank(meshes.size()) : 1], ClumMat4(), scale);
    const ClumMat4 poseA = dice.pose(1.3 * scale), poseB = dice.pose(1.3 * scale);
    const Truth expected = truth(*a, poseA, *b, poseB);
    const double slack = 2e-10 * scale;
    countContacts += expected.distance() == 0.0;
    countNested += expected.isNested;

    EXPECT_EQ(toolkit.areTouching(*a, poseA, *b, poseB), expected.distance() == 0.0) << n;
    const ClumDistanceResult exact = toolkit.distance(*a, poseA, *b, poseB);
    expectSound(exact, expected, slack);
    ASSERT_NEAR(exact.lower, expected.distance(), slack) << n;
    ASSERT_NEAR(exact.upper, expected.distance(), slack) << n;

    // Bounded questions, at first without and then with the last answer for a hint, in either order of the two.
    ClumDistanceResult last = exact;
    for (int k = 0; k < 6; ++k)
    {
      const double cap = dice(0.0, 2.0) * scale, accuracy = dice(0.0, 0.9);
      const double stop = k < 4 ? 0.0 : dice(0.0, 1.0) * scale;
      const ClumDistanceResult bounded =
        toolkit.distance(*a, poseA, *b, poseB, cap, accuracy, stop, k ? &last : nullptr);
      expectSound(bounded, expected, slack);
      if (bounded.upper > stop)
      {
        ASSERT_GE(bounded.lower, std::min(cap, (1.0 - accuracy) * expected.distance()) - slack);
      }
      const ClumDistanceResult swapped = toolkit.distance(*b, poseB, *a, poseA, cap, accuracy);
      expectSound(swapped, expected, slack);
      ASSERT_GE(swapped.lower, std::min(cap, (1.0 - accuracy) * expected.distance()) - slack);
      last = bounded;
    }
    if (HasFatalFailure())
      FAIL() << "case " << n;
  }
  EXPECT_GT(countContacts, 30u);
  EXPECT_LT(countContacts, 130u);
  EXPECT_GT(countNested, 2u);
}

TEST_P(CollisionToolkit, TouchingShapesCollide)
{
  const Toolkit toolkit(GetParam());
  const ClumMeshShPtr box = boxMesh(1.0, 1.0, 1.0);
  const ClumBoxShPtr solid = ClumBox::create(1.0, 1.0, 1.0);
  const ClumSphereShPtr ball = ClumSphere::create(0.5);
  // Face on face, edge on edge, corner on corner, corner on face, and sliding along a common plane.
  const ClumMat4 contacts[] = {placedAt(1, 0, 0), placedAt(1, 1, 0), placedAt(1, 1, 1), placedAt(1, 0.5, 0.25),
                               placedAt(1, 0.9, 0.9)};
  const ClumLeafGeometry* shapes[] = {box.get(), solid.get()};
  for (const ClumMat4& pose : contacts)
    for (const ClumLeafGeometry* shape : shapes)
    {
      EXPECT_TRUE(toolkit.areTouching(*box, ClumMat4(), *shape, pose));
      EXPECT_EQ(toolkit.distance(*box, ClumMat4(), *shape, pose).lower, 0.0);
      ClumMat4 apart = pose;
      apart.setTranslation(pose.translation() * (1.0 + 1e-6));
      EXPECT_FALSE(toolkit.areTouching(*box, ClumMat4(), *shape, apart));
      EXPECT_GT(toolkit.distance(*box, ClumMat4(), *shape, apart).lower, 0.0);
    }
  EXPECT_TRUE(toolkit.areTouching(*ball, ClumMat4(), *ball, placedAt(1, 0, 0)));
  EXPECT_TRUE(toolkit.areTouching(*ball, ClumMat4(), *box, placedAt(1, 0, 0)));
  EXPECT_FALSE(toolkit.areTouching(*ball, ClumMat4(), *box, placedAt(1.0 + 1e-6, 0, 0)));
  EXPECT_TRUE(toolkit.areTouching(*box, ClumMat4(), *box, ClumMat4()));
}

TEST_P(CollisionToolkit, WhatLiesInsideASolidCollides)
{
  const Toolkit toolkit(GetParam());
  const ClumMeshShPtr big = boxMesh(4.0, 4.0, 4.0), small = boxMesh(1.0, 1.0, 1.0);
  const auto turned = [](const ClumMesh& i_mesh, std::size_t i_every)
  {
    std::vector<ClumMesh::TTriangle> triangles = i_mesh.triangles();
    for (std::size_t i = 0; i < triangles.size(); i += i_every)
      std::swap(triangles[i][1], triangles[i][2]);
    return ClumMesh::create(i_mesh.vertices(), triangles);
  };
  std::vector<ClumMesh::TTriangle> lidless = big->triangles();
  lidless.pop_back();
  const ClumMeshShPtr open = ClumMesh::create(big->vertices(), lidless);
  const ClumMeshShPtr hollow = joined({{big, ClumMat4()}, {turned(*boxMesh(3.0, 3.0, 3.0), 1), ClumMat4()}});
  const ClumMeshShPtr overlapping = joined({{big, ClumMat4()}, {turned(*big, 1), placedAt(1.0, 0.0, 0.0)}});
  const ClumMeshShPtr twoParts = joined({{small, placedAt(9.0, 0.0, 0.0)}, {small, ClumMat4()}});
  EXPECT_FALSE(open->isClosed());
  EXPECT_TRUE(hollow->isClosed());

  const struct
  {
    const char* name;
    ClumMeshShPtr outer;
    ClumMeshShPtr inner;
    ClumMat4 pose;
    bool collides;
  } cases[] = {
    {"inside", big, small, placedAt(0.1, 0.2, 0.3), true},
    {"inside, on rays through corners and edges", big, small, ClumMat4(), true},
    {"turned inside out", turned(*big, 1), small, ClumMat4(), true},
    {"turned here and there", turned(*big, 3), small, ClumMat4(), true},
    {"inside a bare surface", open, small, ClumMat4(), false},
    {"a bare surface inside", big, moved(*open, ClumMat4(), 0.2), ClumMat4(), true},
    {"in the hollow", hollow, small, ClumMat4(), false},
    {"in an overlap", overlapping, small, placedAt(0.5, 0.0, 0.0), true},
    {"one part of two", big, twoParts, ClumMat4(), true},
    {"beside", big, small, placedAt(3.0, 0.0, 0.0), false},
    {"in the window", wallWithWindow(4.0, 0.5, 2.0, 2.0), moved(*small, ClumMat4(), 0.2), ClumMat4(), false},
    {"in the wall", wallWithWindow(4.0, 0.5, 2.0, 2.0), moved(*small, ClumMat4(), 0.2), placedAt(0, 1.5, 0), true},
  };
  for (const auto& test : cases)
  {
    EXPECT_EQ(toolkit.areTouching(*test.outer, ClumMat4(), *test.inner, test.pose), test.collides) << test.name;
    EXPECT_EQ(toolkit.areTouching(*test.inner, test.pose, *test.outer, ClumMat4()), test.collides) << test.name;
    EXPECT_EQ(toolkit.distance(*test.outer, ClumMat4(), *test.inner, test.pose, 0.01, 0.5).lower == 0.0, test.collides)
      << test.name;
    EXPECT_EQ(toolkit.distance(*test.inner, test.pose, *test.outer, ClumMat4()).lower == 0.0, test.collides)
      << test.name;
  }
}

TEST_P(CollisionToolkit, InsideIsToldAlongRaysThroughCornersAndEdges)
{
  // The ball's corners share coordinates with the probes, so rays run through corners and along edges.
  const Toolkit toolkit(GetParam());
  const ClumMeshShPtr ball = sphereMesh(1.0, 8);
  const ClumSphereShPtr probe = ClumSphere::create(1e-6);
  const auto surface = oracle::placed(*ball, ClumMat4());
  std::vector<double> lattice = {-1.2, -0.3, 0.0, 0.45, 1.2};
  for (unsigned int i = 0; i < ball->vertices().size(); i += 5)
    lattice.push_back(ball->vertices()[i][i % 3]);
  for (const double x : {-1.5, -0.5, 0.0, 0.25})
    for (const double y : lattice)
      for (const double z : lattice)
      {
        const double around = static_cast<double>(oracle::winding(surface, oracle::Vector(x, y, z)));
        const bool isOnSurface =
          oracle::surfaceDistance(
            surface, {{{oracle::Vector(x, y, z), oracle::Vector(x, y, z), oracle::Vector(x, y, z)}}}) < 1e-5;
        if (!isOnSurface)
        {
          EXPECT_EQ(toolkit.areTouching(*ball, ClumMat4(), *probe, placedAt(x, y, z)), around > 0.5) << x << y << z;
        }
      }
}

namespace
{
/// The distance of a point from a solid of revolution about z, told by its profile in the half plane of radius and z.
double profileDistance(const ClumPoint3& i_point, const std::vector<std::pair<double, double>>& i_profile)
{
  const oracle::Vector p(std::hypot(i_point.x(), i_point.y()), i_point.z(), 0);
  bool isInside = true;
  oracle::Real best = HUGE_VALL;
  for (std::size_t i = 0; i + 1 < i_profile.size(); ++i)
  {
    const oracle::Vector a(i_profile[i].first, i_profile[i].second, 0);
    const oracle::Vector b(i_profile[i + 1].first, i_profile[i + 1].second, 0);
    best = std::min(best, oracle::pointSegment(p, a, b));
    isInside = isInside && (b - a).cross(p - a).z >= 0;
  }
  return isInside ? 0.0 : static_cast<double>(best);
}
} // namespace

TEST_P(CollisionToolkit, ShapesAgreeWithTheirFormulas)
{
  using oracle::Vector;
  const struct
  {
    ClumLeafGeometryShPtr shape;
    std::function<double(const ClumPoint3&)> distance;
    double excess;
  } cases[] = {
    {ClumSphere::create(0.8), [](const ClumPoint3& p) { return std::max(0.0, p.toVect3().norm() - 0.8); }, 0.0},
    {ClumCapsule::create(0.3, 1.6),
     [](const ClumPoint3& p) {
       return std::max(0.0, double(oracle::pointSegment(Vector(p.toVect3()), {0, 0, -0.8}, {0, 0, 0.8})) - 0.3);
     },
     0.0},
    {ClumBox::create(1.0, 2.0, 0.5),
     [](const ClumPoint3& p)
     {
       return ClumVect3(std::max(0.0, std::fabs(p.x()) - 0.5), std::max(0.0, std::fabs(p.y()) - 1.0),
                        std::max(0.0, std::fabs(p.z()) - 0.25))
         .norm();
     },
     0.0},
    {ClumCylinder::create(0.7, 1.5),
     [](const ClumPoint3& p) {
       return profileDistance(p, {{0, -0.75}, {0.7, -0.75}, {0.7, 0.75}, {0, 0.75}});
     },
     0.7 * 7.6e-5},
    {ClumCone::create(0.9, 1.5),
     [](const ClumPoint3& p) {
       return profileDistance(p, {{0, -0.75}, {0.9, -0.75}, {0, 0.75}});
     },
     0.9 * 7.6e-5},
  };
  const Toolkit toolkit(GetParam());
  const ClumSphereShPtr probe = ClumSphere::create(0.05);
  Dice dice(21);
  for (const auto& test : cases)
    for (int n = 0; n < 300; ++n)
    {
      const ClumMat4 pose = dice.pose(3.0);
      const ClumPoint3 point(dice.vector(1.6));
      const double expected = std::max(0.0, test.distance(point) - 0.05);
      const ClumMat4 probePose = pose * placedAt(point.x(), point.y(), point.z());
      const ClumDistanceResult found = toolkit.distance(*test.shape, pose, *probe, probePose);
      ASSERT_LE(found.lower, expected + 1e-14);
      ASSERT_GE(found.lower, expected - test.excess - 1e-9);
      ASSERT_GE(found.upper, expected - 1e-9);
      if (expected > test.excess + 1e-9)
      {
        ASSERT_TRUE(found.hasPoints);
        ASSERT_NEAR(found.pointA.distanceFrom(found.pointB), expected, test.excess + 1e-9);
        // The second point lies on the probe.
        ASSERT_NEAR(found.pointB.distanceFrom(probePose * ClumPoint3()), 0.05, 1e-9);
      }
      ASSERT_EQ(toolkit.areTouching(*probe, probePose, *test.shape, pose), found.lower == 0.0);
    }
}

TEST_P(CollisionToolkit, ShapesAgreeWithMeshesOfThemselves)
{
  const Toolkit toolkit(GetParam());
  const ClumMeshShPtr knot = torusKnot(2, 3, 1.0, 0.2, 60, 8), cloud = sphereMesh(0.8, 9);
  const ClumConvexShPtr hull = ClumConvex::create(cloud->vertices());
  ASSERT_TRUE(hull);
  const ClumMeshShPtr capsule = joined({{cylinderMesh(0.3, 1.6, 200), ClumMat4()},
                                        {sphereMesh(0.3, 80), placedAt(0, 0, -0.8)},
                                        {sphereMesh(0.3, 80), placedAt(0, 0, 0.8)}});
  const struct
  {
    ClumLeafGeometryShPtr shape;
    ClumMeshShPtr mesh;
    double error; // of the mesh, which lies inside
  } cases[] = {{ClumSphere::create(0.8), sphereMesh(0.8, 100), 1.3e-3},
               {ClumCapsule::create(0.3, 1.6), capsule, 8e-4},
               {ClumCylinder::create(0.7, 1.5), cylinderMesh(0.7, 1.5, 256), 2e-4},
               {ClumBox::create(1.0, 2.0, 0.5), boxMesh(1.0, 2.0, 0.5), 1e-9},
               {hull, cloud, 1e-9}};
  Dice dice(8);
  for (const auto& test : cases)
    for (int n = 0; n < 60; ++n)
    {
      const ClumMat4 pose = dice.pose(2.2), other = dice.pose(0.5);
      const ClumDistanceResult shape = toolkit.distance(*knot, other, *test.shape, pose);
      const ClumDistanceResult mesh = toolkit.distance(*knot, other, *test.mesh, pose);
      ASSERT_LE(shape.lower, mesh.lower + 1e-9);
      ASSERT_GE(shape.lower, mesh.lower - test.error);
      if (mesh.lower > test.error || mesh.lower == 0.0)
      {
        ASSERT_EQ(toolkit.areTouching(*knot, other, *test.shape, pose), mesh.lower == 0.0);
      }
    }
}

TEST_P(CollisionToolkit, JoinedModelAnswersForAllOfItsShapes)
{
  const Toolkit toolkit(GetParam());
  Dice dice(31);
  std::vector<ClumPlacedLeaf> leaves;
  for (int i = 0; i < 5; ++i)
    leaves.push_back({ClumBox::create(0.5, 1.0, 0.3), dice.pose(1.5)});
  leaves.push_back({torusKnot(2, 3, 0.4, 0.1, 24, 5), dice.pose(1.5)});
  const ClumCollisionModelConstShPtr whole = (*toolkit).makeJoinedModel(leaves);
  ASSERT_TRUE(whole);
  const ClumMeshShPtr part = lPart(0.6, 0.4, 0.1);
  const ClumCollisionModelConstShPtr model = part->collisionModel(*toolkit);
  for (int n = 0; n < 100; ++n)
  {
    const ClumMat4 pose = dice.pose(2.0), frame = dice.pose(1.0);
    double expected = INF;
    for (const ClumPlacedLeaf& leaf : leaves)
      expected = std::min(expected, toolkit.distance(*leaf.leaf, frame * leaf.frame, *part, pose).lower);
    EXPECT_NEAR((*toolkit).exactDistance(*whole, frame, *model, pose).lower, expected, 1e-9);
    EXPECT_EQ((*toolkit).areTouching(*whole, frame, *model, pose), expected == 0.0);
  }
  leaves.push_back({ClumSphere::create(0.2), ClumMat4()});
  EXPECT_FALSE((*toolkit).makeJoinedModel(leaves));
  EXPECT_FALSE((*toolkit).makeJoinedModel({}));
}

TEST(FclToolkit, PenetrationIsToldForConvexShapesWithInnerOnesApart)
{
  const ClumFCLCollisionToolkitShPtr toolkit = ClumFCLCollisionToolkit::create();
  const auto depth =
    [&](const ClumLeafGeometryShPtr& a, const ClumLeafGeometryShPtr& b, const ClumMat4& pose, double& o_depth)
  {
    ClumVect3 direction;
    return toolkit->penetration(*a->collisionModel(*toolkit), ClumMat4(), *b->collisionModel(*toolkit), pose, o_depth,
                                direction);
  };
  const ClumSphereShPtr ball = ClumSphere::create(0.5);
  const ClumCapsuleShPtr capsule = ClumCapsule::create(0.25, 2.0);
  const ClumBoxShPtr box = ClumBox::create(1.0, 1.0, 1.0);
  double found = -1.0;
  EXPECT_TRUE(depth(ball, capsule, placedAt(0.6, 0.0, 0.3), found).succeeded());
  EXPECT_NEAR(found, 0.15, 1e-12);
  EXPECT_TRUE(depth(box, ball, placedAt(0.8, 0.0, 0.0), found).succeeded());
  EXPECT_NEAR(found, 0.2, 1e-12);
  EXPECT_TRUE(depth(box, ball, placedAt(3.0, 0.0, 0.0), found).succeeded());
  EXPECT_EQ(found, 0.0);
  found = -1.0;
  EXPECT_EQ(depth(box, ball, placedAt(0.1, 0.0, 0.0), found), ClumCollisionToolkit::PENETRATION_UNSUPPORTED_ERROR);
  EXPECT_EQ(depth(lPart(1.0, 1.0, 0.2), ball, placedAt(0.1, 0.0, 0.0), found),
            ClumCollisionToolkit::PENETRATION_UNSUPPORTED_ERROR);
  EXPECT_EQ(found, -1.0);
}

TEST(DefaultToolkit, RefusesWhatItCannotAnswerAsAContact)
{
  struct ForeignModel : ClumCollisionModel
  {
    ForeignModel() : ClumCollisionModel(nullptr) {}
  };
  const ClumCollisionToolkitShPtr& toolkit = ClumCollisionToolkit::defaultCollisionToolkit();
  const ClumMeshShPtr box = boxMesh(1.0, 1.0, 1.0);
  const ClumCollisionModel& model = *box->collisionModel(*toolkit);
  const std::uint64_t before = toolkit->countQueries();
  const ClumMat4 far = placedAt(9.0, 0.0, 0.0);
  EXPECT_FALSE(toolkit->areTouching(model, ClumMat4(), model, far));
  EXPECT_TRUE(toolkit->areTouching(model, ClumMat4(), ForeignModel(), far));
  for (const double bad : {std::nan(""), INF})
  {
    EXPECT_TRUE(toolkit->areTouching(model, ClumMat4(), model, placedAt(9.0, bad, 0.0)));
    EXPECT_EQ(toolkit->boundedDistance(model, placedAt(bad, 0.0, 0.0), model, far, 1.0).lower, 0.0);
  }
  EXPECT_EQ(toolkit->countQueries() - before, 6u);
  // All copies of a leaf share one model, whatever the toolkit object.
  const ClumGeometryShPtr copy = box->clone();
  EXPECT_EQ(boost::dynamic_pointer_cast<ClumMesh>(copy)->collisionModel(*ClumProximityCollisionToolkit::create()).get(),
            &model);
}
