#include "foundation/lumBox.h"
#include "foundation/lumCapsule.h"
#include "foundation/lumProximityCollisionToolkit.h"
#include "foundation/lumProximityModel.h"
#include "foundation/lumMesh.h"
#include "foundation/lumSphere.h"
#include "support/dice.h"
#include "support/meshes.h"
#include "support/triangleOracle.h"

#include <gtest/gtest.h>

#include <limits>
#include <tuple>

// The proximity toolkit against all pairs of triangles, measured in extended precision.

namespace
{
constexpr double INF = std::numeric_limits<double>::infinity();

const ClumCollisionToolkitShPtr& proximityToolkit()
{
  static const ClumCollisionToolkitShPtr s_toolkit = ClumProximityCollisionToolkit::create();
  return s_toolkit;
}

ClumMat4 shifted(const ClumVect3& i_by)
{
  ClumMat4 frame;
  frame.setTranslation(i_by);
  return frame;
}

/// A shape with what the oracle needs to know of it.
struct Specimen
{
  ClumLeafGeometryShPtr leaf;
  bool isSolid = false;           ///< each of its parts is closed
  unsigned int partTriangles = 0; ///< each part has that many triangles; 0 if there is one part

  Specimen(const ClumMeshShPtr& i_mesh, unsigned int i_partTriangles = 0)
    : leaf(i_mesh), isSolid(i_mesh->isClosed()), partTriangles(i_partTriangles)
  {
  }
  Specimen(const ClumLeafGeometryShPtr& i_leaf, bool i_isSolid) : leaf(i_leaf), isSolid(i_isSolid) {}
};

/// One placed pair: what is true of it, and how large it is.
template <class R>
struct Truth
{
  R distance = 0;
  double magnitude = 0.0; ///< of the coordinates, in the shapes' frames and placed
  double extent = 0.0;    ///< of the scene

  /// An exact distance may be off by so much.
  double tolerance() const { return 1e-9 * extent + 1e-13 * magnitude; }
  /// What is so near is a contact as far as the oracle can tell.
  bool isContact() const { return distance <= R(1e-17) * magnitude; }
};

template <class R>
bool hasPartWithin(const Specimen& i_outer, const std::vector<oracle::BasicTriangle<R>>& i_surface,
                   const Specimen& i_inner, const std::vector<oracle::BasicTriangle<R>>& i_points)
{
  if (!i_outer.isSolid)
    return false;
  std::vector<oracle::Triangle> surface;
  for (const auto& t : i_surface)
  {
    oracle::Triangle rounded;
    for (int k = 0; k < 3; ++k)
      rounded.corners[k] =
        oracle::Vector(static_cast<oracle::Real>(t.corners[k].x), static_cast<oracle::Real>(t.corners[k].y),
                       static_cast<oracle::Real>(t.corners[k].z));
    surface.push_back(rounded);
  }
  const std::size_t step = i_inner.partTriangles ? i_inner.partTriangles : i_points.size();
  for (std::size_t i = 0; i < i_points.size(); i += step)
  {
    const auto& p = i_points[i].corners[0];
    const oracle::Vector point(static_cast<oracle::Real>(p.x), static_cast<oracle::Real>(p.y),
                               static_cast<oracle::Real>(p.z));
    bool isLow[3] = {}, isHigh[3] = {};
    for (const oracle::Triangle& t : surface)
      for (const oracle::Vector& c : t.corners)
      {
        isLow[0] |= c.x < point.x, isLow[1] |= c.y < point.y, isLow[2] |= c.z < point.z;
        isHigh[0] |= c.x > point.x, isHigh[1] |= c.y > point.y, isHigh[2] |= c.z > point.z;
      }
    const bool isInBox = isLow[0] && isLow[1] && isLow[2] && isHigh[0] && isHigh[1] && isHigh[2];
    if (isInBox && std::fabs(oracle::winding(surface, point)) > 0.5)
      return true;
  }
  return false;
}

template <class R>
Truth<R> truthOf(const Specimen& i_a, const ClumMat4& i_poseA, const Specimen& i_b, const ClumMat4& i_poseB)
{
  const auto a = oracle::placedAs<R>(*i_a.leaf, i_poseA), b = oracle::placedAs<R>(*i_b.leaf, i_poseB);
  Truth<R> truth;
  double low[3] = {INF, INF, INF}, high[3] = {-INF, -INF, -INF};
  for (const auto* triangles : {&a, &b})
    for (const auto& t : *triangles)
      for (const auto& c : t.corners)
      {
        const double x[3] = {static_cast<double>(c.x), static_cast<double>(c.y), static_cast<double>(c.z)};
        for (int k = 0; k < 3; ++k)
        {
          low[k] = std::min(low[k], x[k]);
          high[k] = std::max(high[k], x[k]);
          truth.magnitude = std::max(truth.magnitude, std::fabs(x[k]));
        }
      }
  for (const Specimen* specimen : {&i_a, &i_b})
  {
    ClumPoint3 lowest, highest;
    specimen->leaf->getBoundingBox(lowest, highest);
    truth.magnitude = std::max({truth.magnitude, lowest.toVect3().norm(), highest.toVect3().norm()});
  }
  truth.extent = ClumVect3(high[0] - low[0], high[1] - low[1], high[2] - low[2]).norm();
  ClumSweptTriangles sweptA, sweptB;
  i_a.leaf->getSweptTriangles(sweptA);
  i_b.leaf->getSweptTriangles(sweptB);
  truth.extent += 2.0 * (sweptA.radius + sweptB.radius);
  truth.distance = oracle::surfaceDistance(a, b) - R(sweptA.radius) - R(sweptB.radius);
  if (truth.distance < 0 || hasPartWithin(i_a, a, i_b, b) || hasPartWithin(i_b, b, i_a, a))
    truth.distance = 0;
  return truth;
}

/// Asks the toolkit about a placed pair and holds the answers against the truth.
template <class R>
class Examination
{
public:
  Examination(const Specimen& i_a, const ClumMat4& i_poseA, const Specimen& i_b, const ClumMat4& i_poseB)
    : m_toolkit(*proximityToolkit()), m_a(*i_a.leaf->collisionModel(m_toolkit)),
      m_b(*i_b.leaf->collisionModel(m_toolkit)), m_poseA(i_poseA), m_poseB(i_poseB),
      m_truth(truthOf<R>(i_a, i_poseA, i_b, i_poseB))
  {
  }

  const Truth<R>& truth() const { return m_truth; }

  void touching() const
  {
    const bool isTouching = m_toolkit.areTouching(m_a, m_poseA, m_b, m_poseB);
    EXPECT_EQ(isTouching, m_toolkit.areTouching(m_b, m_poseB, m_a, m_poseA));
    EXPECT_TRUE(isTouching || !m_truth.isContact());
    EXPECT_FALSE(isTouching && m_truth.distance > m_truth.tolerance()) << static_cast<double>(m_truth.distance);
  }

  ClumDistanceResult bounded(double i_cap, double i_accuracy, double i_stop,
                             const ClumDistanceResult* i_hint = nullptr) const
  {
    const ClumDistanceResult found =
      m_toolkit.boundedDistance(m_a, m_poseA, m_b, m_poseB, i_cap, i_accuracy, i_stop, i_hint);
    sound(found);
    const R asked = std::min(R(i_cap), (1 - R(i_accuracy)) * m_truth.distance);
    EXPECT_TRUE(R(found.lower) >= asked - R(m_truth.tolerance()) || found.upper <= i_stop)
      << "lower " << found.lower << " of " << static_cast<double>(m_truth.distance) << " cap " << i_cap << " accuracy "
      << i_accuracy << " stop " << i_stop;
    return found;
  }

  /// The distance with its points: no limit was set.
  ClumDistanceResult exact(const ClumDistanceResult* i_hint = nullptr) const
  {
    const ClumDistanceResult found = bounded(INF, 0.0, 0.0, i_hint);
    EXPECT_LE(R(found.upper), m_truth.distance + R(m_truth.tolerance()));
    if (m_truth.distance > m_truth.tolerance())
    {
      EXPECT_TRUE(found.hasPoints);
      EXPECT_NEAR(found.pointA.distanceFrom(found.pointB), static_cast<double>(m_truth.distance), m_truth.tolerance());
    }
    return found;
  }

  /// Everything that one may ask, with good and bad hints.
  void everything(Dice& io_dice) const
  {
    touching();
    const ClumDistanceResult first = exact();
    const double distance = static_cast<double>(m_truth.distance);
    const double scale = m_truth.extent;
    const double cap = io_dice(0.0, 2.0) * (distance > 0.0 ? distance : scale);
    const double stop = io_dice.rank(2) ? io_dice(0.0, 1.0) * cap : 0.0;
    const ClumDistanceResult second = bounded(cap, io_dice(0.0, 0.9), stop);
    bounded(0.9 * distance, 0.0, 0.0, &first);
    const ClumDistanceResult third = bounded(cap, 0.2, stop, second.hasPoints ? &second : &first);
    const ClumDistanceResult bare = m_toolkit.boundedDistance(m_a, m_poseA, m_b, m_poseB, cap, 0.2, stop,
                                                              second.hasTriangles ? &second : &first, false);
    EXPECT_EQ(std::tie(bare.lower, bare.upper, bare.triangleA, bare.triangleB),
              std::tie(third.lower, third.upper, third.triangleA, third.triangleB));
    ClumDistanceResult wild;
    wild.hasTriangles = io_dice.rank(4) != 0;
    wild.triangleA = io_dice.rank(20);
    wild.triangleB = io_dice.rank(8) ? io_dice.rank(20) : ClumDistanceResult::NO_TRIANGLE;
    wild.pointA = io_dice.point(1e3 * scale);
    wild.pointB = io_dice.point(scale);
    exact(&wild);
  }

private:
  void sound(const ClumDistanceResult& i_found) const
  {
    EXPECT_GE(i_found.lower, 0.0);
    EXPECT_LE(i_found.lower, i_found.upper);
    EXPECT_TRUE(m_truth.isContact() ? i_found.lower == 0.0 : R(i_found.lower) <= m_truth.distance)
      << "by " << static_cast<double>(R(i_found.lower) - m_truth.distance) << " of " << m_truth.extent;
    EXPECT_GE(R(i_found.upper), m_truth.distance - R(m_truth.tolerance()));
  }

  const ClumCollisionToolkit& m_toolkit;
  const ClumCollisionModel& m_a;
  const ClumCollisionModel& m_b;
  ClumMat4 m_poseA;
  ClumMat4 m_poseB;
  Truth<R> m_truth;
};

std::vector<Specimen> smallSpecimens()
{
  using TPoints = std::vector<ClumPoint3>;
  using TTriangles = std::vector<ClumMesh::TTriangle>;
  const ClumMeshShPtr box = boxMesh(0.8, 1.2, 0.3);
  TTriangles lidless = box->triangles();
  lidless.pop_back();
  return {
    ClumMesh::create(TPoints{{0, 0, 0}, {1, 0, 0}, {0.3, 0.9, 0.2}}, TTriangles{{0, 1, 2}}),
    ClumMesh::create(TPoints{{0, 0, 0}, {1, 0, 0}, {1, 1, 0.2}, {0, 1, 0}}, TTriangles{{0, 1, 2}, {0, 2, 3}}),
    ClumMesh::create(TPoints{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}},
                     TTriangles{{0, 2, 1}, {0, 1, 3}, {1, 2, 3}, {2, 0, 3}}),
    ClumMesh::create(TPoints{{-1, 0, 0}, {1, 1e-3, 0}, {1, -1e-3, 0}, {0.2, 0.5, 0.4}},
                     TTriangles{{0, 1, 2}, {0, 1, 3}}),
    ClumMesh::create(box->vertices(), lidless),
    box,
    boxMesh(2.5, 2.5, 2.5),
    sphereMesh(0.7, 3),
    {joined({{boxMesh(0.2, 0.2, 0.2), shifted({0.9, 0, 0})}, {boxMesh(0.3, 0.3, 0.1), shifted({-0.9, 0, 0})}}), 12},
    {ClumBox::create(0.6, 0.5, 0.9), true},
    {ClumSphere::create(0.4), false},
    {ClumCapsule::create(0.2, 1.1), false}};
}

Specimen scaled(const Specimen& i_specimen, double i_scale, const ClumVect3& i_shift)
{
  const ClumMesh* mesh = dynamic_cast<const ClumMesh*>(i_specimen.leaf.get());
  return Specimen(moved(*mesh, shifted(i_shift), i_scale), i_specimen.partTriangles);
}
} // namespace

TEST(ProximityOracle, RandomPairs)
{
  const std::vector<Specimen> specimens = smallSpecimens();
  Dice dice(1);
  unsigned int countContacts = 0;
  for (int n = 0; n < 100000; ++n)
  {
    // The simpler shapes come first, and more often: with these the oracle is quick.
    const Specimen& a = specimens[std::min(dice.rank(specimens.size()), dice.rank(specimens.size()))];
    const Specimen& b = specimens[std::min(dice.rank(specimens.size()), dice.rank(specimens.size()))];
    const double reach = n % 3 ? 1.2 : 0.5;
    const ClumMat4 poseA = dice.pose(reach), poseB = dice.pose(reach);
    const Examination<oracle::Real> pair(a, poseA, b, poseB);
    countContacts += pair.truth().isContact();
    if (n % 8 == 0)
      pair.everything(dice);
    else if (n % 2)
      pair.touching();
    else
      pair.exact();
    if (HasFailure())
      FAIL() << "case " << n;
  }
  EXPECT_GT(countContacts, 20000u);
  EXPECT_LT(countContacts, 80000u);
}

TEST(ProximityOracle, LargerMeshes)
{
  const std::vector<Specimen> specimens = {torusKnot(2, 3, 1.0, 0.12, 80, 8),
                                           {clutter(3, 20, 3.0), 12},
                                           sphereMesh(0.8, 14),
                                           lPart(2.0, 1.0, 0.2),
                                           longBar(3.0, 0.1),
                                           wallWithWindow(3.0, 0.2, 1.0, 0.8)};
  Dice dice(2);
  for (int n = 0; n < 150; ++n)
  {
    const Specimen& a = specimens[dice.rank(specimens.size())];
    const Specimen& b = specimens[dice.rank(specimens.size())];
    const ClumMat4 poseA = dice.pose(1.6), poseB = dice.pose(1.6);
    Examination<oracle::Real>(a, poseA, b, poseB).everything(dice);
    if (HasFailure())
      FAIL() << "case " << n;
  }
}

TEST(ProximityOracle, ScaledAndMovedCoordinates)
{
  std::vector<Specimen> specimens;
  for (const Specimen& specimen : smallSpecimens())
    if (boost::dynamic_pointer_cast<ClumMesh>(specimen.leaf))
      specimens.push_back(specimen);
  Dice dice(3);
  for (int n = 0; n < 1000; ++n)
  {
    const double scale = std::pow(10.0, dice(-6.0, 6.0));
    const double far = std::pow(10.0, dice(0.0, 6.0));
    // Moved in their own coordinates, and placed so that they meet; moved together in the world; or neither.
    const bool isMovedInside = n % 3 == 1, isMovedOutside = n % 3 == 2;
    const ClumVect3 shift = isMovedInside ? dice.vector(far * scale) : ClumVect3(0.0, 0.0, 0.0);
    const Specimen a = scaled(specimens[dice.rank(specimens.size())], scale, shift);
    const Specimen b = scaled(specimens[dice.rank(specimens.size())], scale, shift * -1.0);
    ClumMat4 poseA = dice.pose(1.2 * scale), poseB = dice.pose(1.2 * scale);
    poseA = poseA * shifted(shift * -1.0);
    poseB = poseB * shifted(shift);
    if (isMovedOutside)
    {
      const ClumVect3 aside = dice.vector(n % 2 ? far * scale : 1e6);
      poseA.setTranslation(poseA.translation() + aside);
      poseB.setTranslation(poseB.translation() + aside);
    }
    const Examination<oracle::Exact> pair(a, poseA, b, poseB);
    if (n % 4 == 0)
      pair.everything(dice);
    else
    {
      pair.touching();
      pair.exact();
    }
    if (HasFailure())
      FAIL() << "case " << n << ", scale " << scale << ", moved by " << far;
  }
}

TEST(ProximityOracle, NeedlesAndSlivers)
{
  Dice dice(4);
  for (int n = 0; n < 4000; ++n)
  {
    std::vector<Specimen> pair;
    while (pair.size() < 2)
    {
      std::vector<ClumPoint3> points;
      std::vector<ClumMesh::TTriangle> triangles;
      const unsigned int count = 1 + dice.rank(3);
      for (unsigned int t = 0; t < count; ++t)
      {
        const double thin = std::pow(10.0, dice(-13.0, -1.0));
        const ClumVect3 from = dice.vector(1.0), to = dice.vector(1.0);
        // A needle has one short edge, a sliver a corner near its long edge.
        const double along = dice.rank(2) ? dice(0.1, 0.9) : 1.0;
        const unsigned int first = static_cast<unsigned int>(points.size());
        points.emplace_back(from);
        points.emplace_back(to);
        points.emplace_back(from * (1.0 - along) + to * along + dice.vector(thin));
        triangles.push_back({first, first + 1, first + 2});
      }
      if (const ClumMeshShPtr mesh = ClumMesh::create(points, triangles))
        pair.emplace_back(mesh);
    }
    // Some pairs are nearly parallel, some cross.
    ClumMat4 poseB = dice.pose(1.0);
    if (n % 3 == 0)
      poseB = shifted(dice.vector(n % 2 ? 1e-3 : 0.3));
    if (n % 6 == 0)
      pair[1] = pair[0];
    const ClumMat4 poseA = n % 2 ? ClumMat4() : dice.pose(1.0);
    const Examination<oracle::Exact> examination(pair[0], poseA, pair[1], n % 2 ? poseB : poseA * poseB);
    examination.touching();
    examination.exact();
    if (HasFailure())
      FAIL() << "case " << n;
  }
}

TEST(ProximityOracle, CoplanarAndTouchingOnALattice)
{
  // Whole numbers, turned by quarters: contacts are contacts to the last bit, and the oracle is right about each.
  Dice dice(5);
  unsigned int countContacts = 0;
  for (int n = 0; n < 6000; ++n)
  {
    std::vector<Specimen> pair;
    const bool isFlat = n % 3 == 0;
    while (pair.size() < 2)
    {
      std::vector<ClumPoint3> points;
      std::vector<ClumMesh::TTriangle> triangles;
      const unsigned int corners = 3 + dice.rank(3);
      for (unsigned int i = 0; i < corners; ++i)
        points.emplace_back(dice.rank(4), dice.rank(4), isFlat ? 0.0 : dice.rank(4));
      for (unsigned int i = 1; i + 1 < corners; ++i)
        triangles.push_back({0, i, i + 1});
      if (const ClumMeshShPtr mesh = ClumMesh::create(points, triangles))
        pair.push_back({ClumLeafGeometryShPtr(mesh), false});
    }
    ClumMat4 pose = shifted({dice.rank(5) - 1.0, dice.rank(5) - 1.0, isFlat ? 0.0 : dice.rank(5) - 1.0});
    if (dice.rank(2)) // a quarter turn about z
    {
      pose.setColumnComponents(0, 0.0, 1.0, 0.0, 0.0);
      pose.setColumnComponents(1, -1.0, 0.0, 0.0, 0.0);
    }
    const Examination<oracle::Exact> examination(pair[0], ClumMat4(), pair[1], pose);
    countContacts += examination.truth().isContact();
    examination.touching();
    examination.exact();
    if (HasFailure())
      FAIL() << "case " << n;
  }
  EXPECT_GT(countContacts, 1000u);
  EXPECT_LT(countContacts, 5000u);
}

namespace
{
/// A square plate of `i_cells` by `i_cells` unit squares in the plane z = 0.
ClumMeshShPtr gridPlate(unsigned int i_cells)
{
  std::vector<ClumPoint3> points;
  std::vector<ClumMesh::TTriangle> triangles;
  const unsigned int row = i_cells + 1;
  for (unsigned int y = 0; y < row; ++y)
    for (unsigned int x = 0; x < row; ++x)
      points.emplace_back(x, y, 0.0);
  for (unsigned int y = 0; y < i_cells; ++y)
    for (unsigned int x = 0; x < i_cells; ++x)
    {
      const unsigned int corner = y * row + x;
      triangles.push_back({corner, corner + 1, corner + row});
      triangles.push_back({corner + 1, corner + row + 1, corner + row});
    }
  return ClumMesh::create(points, triangles);
}
} // namespace

TEST(ProximityOracle, PlatesThatShareAPlane)
{
  const Specimen plate = gridPlate(6);
  for (const double x : {0.0, 0.5, 3.0, 6.0, 6.0 + 1e-7, 7.25})
    for (const double y : {0.0, 0.25, 6.0, -6.0, 8.0})
      for (const double z : {0.0, 1e-7, 0.125})
      {
        const ClumMat4 pose = shifted({x, y, z});
        const Examination<oracle::Real> pair(plate, ClumMat4(), plate, pose);
        pair.touching();
        pair.exact();
        EXPECT_FALSE(HasFailure()) << x << ' ' << y << ' ' << z;
      }
}

TEST(ProximityOracle, SolidsWithinSolidsAndSurfaces)
{
  const ClumMeshShPtr big = boxMesh(4.0, 4.0, 4.0);
  std::vector<ClumMesh::TTriangle> lidless = big->triangles();
  lidless.pop_back();
  std::vector<ClumMesh::TTriangle> turned = boxMesh(3.0, 3.0, 3.0)->triangles();
  for (ClumMesh::TTriangle& triangle : turned)
    std::swap(triangle[1], triangle[2]);
  const ClumMeshShPtr cavity = ClumMesh::create(boxMesh(3.0, 3.0, 3.0)->vertices(), turned);
  const std::vector<Specimen> outers = {big,
                                        ClumMesh::create(big->vertices(), lidless),
                                        {joined({{big, ClumMat4()}, {cavity, ClumMat4()}}), 12},
                                        sphereMesh(2.0, 12),
                                        torusKnot(2, 3, 1.5, 0.5, 40, 8)};
  const std::vector<Specimen> inners = {boxMesh(0.4, 0.4, 0.4),
                                        sphereMesh(0.2, 5),
                                        ClumMesh::create({{0, 0, 0}, {0.3, 0, 0}, {0, 0.3, 0}}, {{0, 1, 2}}),
                                        {ClumSphere::create(0.1), false},
                                        {ClumBox::create(0.2, 0.3, 0.1), true}};
  Dice dice(6);
  unsigned int countNested = 0;
  for (int n = 0; n < 1500; ++n)
  {
    const Specimen& outer = outers[dice.rank(outers.size())];
    const Specimen& inner = inners[dice.rank(inners.size())];
    const ClumMat4 poseA = dice.pose(1.0), poseB = poseA * dice.pose(2.2);
    const Examination<oracle::Real> pair(outer, poseA, inner, poseB);
    countNested += pair.truth().isContact();
    pair.touching();
    pair.bounded(0.05, 0.2, 0.0);
    if (HasFailure())
      FAIL() << "case " << n;
  }
  EXPECT_GT(countNested, 250u);
}

namespace
{
/// Every so manieth triangle turned round: the surface bounds its volume still, but not by its windings.
ClumMeshShPtr partlyTurned(const ClumMesh& i_mesh, std::size_t i_step)
{
  std::vector<ClumMesh::TTriangle> triangles = i_mesh.triangles();
  for (std::size_t i = 0; i < triangles.size(); i += i_step)
    std::swap(triangles[i][1], triangles[i][2]);
  return ClumMesh::create(i_mesh.vertices(), triangles);
}

/// A shell: a solid ball with a hollow one in it.
ClumMeshShPtr hollowBall(double i_outer, double i_inner, unsigned int i_segments)
{
  const ClumMeshShPtr inner = sphereMesh(i_inner, i_segments);
  return joined({{sphereMesh(i_outer, i_segments), ClumMat4()}, {partlyTurned(*inner, 1), ClumMat4()}});
}

/// A mesh with the given solidity, and without its first triangle if it is to be open.
ClumMeshShPtr toldAs(const ClumMesh& i_mesh, ClumSweptTriangles::ESolidity i_solidity, bool i_isOpen)
{
  std::vector<ClumMesh::TTriangle> triangles = i_mesh.triangles();
  if (i_isOpen)
    triangles.erase(triangles.begin());
  return ClumMesh::create(i_mesh.vertices(), triangles, i_solidity);
}

const CProximityModel& proximityModel(const ClumLeafGeometry& i_leaf)
{
  return static_cast<const CProximityModel&>(*i_leaf.collisionModel(*proximityToolkit()));
}
} // namespace

TEST(ProximityOracle, InnerBallsBelongToTheirSolids)
{
  const ClumMeshShPtr ball = sphereMesh(1.0, 14), knot = torusKnot(2, 3, 1.0, 0.2, 40, 8);
  // The last number: the least radius that the largest ball must have.
  const std::vector<std::tuple<ClumMeshShPtr, ClumMeshShPtr, double>> cases = {
    {ball, ball, 0.8},
    {knot, knot, 0.1},
    {lPart(2.0, 1.5, 0.4), lPart(2.0, 1.5, 0.4), 0.12},
    {wallWithWindow(3.0, 0.2, 1.0, 0.8), wallWithWindow(3.0, 0.2, 1.0, 0.8), 0.06},
    {clutter(3, 40, 3.0), clutter(3, 40, 3.0), 0.03},
    {hollowBall(1.0, 0.7, 12), hollowBall(1.0, 0.7, 12), 0.08},
    {partlyTurned(*ball, 1), partlyTurned(*ball, 1), 0.8},
    // Where windings tell nothing, those of the mesh as it was.
    {partlyTurned(*ball, 3), ball, 0.8},
    {partlyTurned(*knot, 2), knot, 0.1}};
  for (std::size_t n = 0; n < cases.size(); ++n)
  {
    const auto& [mesh, oriented, expected] = cases[n];
    const CProximityModel& model = proximityModel(*mesh);
    const std::vector<oracle::Triangle> surface = oracle::placedAs<oracle::Real>(*oriented, ClumMat4());
    double largest = 0.0;
    for (std::uint32_t i = 0; i < model.tree().countBalls; ++i)
    {
      const CProximityBall& inner = model.tree().balls[i];
      if (!(inner.radius > 0.0f))
        continue;
      largest = std::max(largest, static_cast<double>(inner.radius));
      const oracle::Vector center(model.center().toVect3() +
                                  ClumVect3(inner.center[0], inner.center[1], inner.center[2]));
      EXPECT_GT(std::fabs(oracle::winding(surface, center)), 0.5) << n;
      for (const oracle::Triangle& triangle : surface)
        ASSERT_GE(oracle::pointTriangle(center, triangle), static_cast<oracle::Real>(inner.radius)) << n;
    }
    EXPECT_GT(largest, expected) << n;
  }
}

TEST(ProximityOracle, OpenShapesHaveNoInnerBalls)
{
  const ClumMeshShPtr ball = sphereMesh(1.0, 14);
  for (const ClumMeshShPtr& mesh :
       {toldAs(*ball, ClumSweptTriangles::SURFACE, false), toldAs(*ball, ClumSweptTriangles::SOLID_IF_CLOSED, true),
        toldAs(*ball, ClumSweptTriangles::SOLID, true)})
  {
    const CProximityModel& model = proximityModel(*mesh);
    EXPECT_GT(model.tree().countBalls, 0u);
    for (std::uint32_t i = 0; i < model.tree().countBalls; ++i)
      EXPECT_LE(model.tree().balls[i].radius, 0.0f);
  }
}

TEST(ProximityOracle, SolidsThatReachDeepIntoEachOther)
{
  const unsigned int segments = 9, partTriangles = 2 * segments * (segments - 1);
  const ClumMeshShPtr ball = sphereMesh(1.0, segments), small = sphereMesh(0.3, segments);
  const std::vector<Specimen> specimens = {ball,
                                           small,
                                           {hollowBall(2.0, 1.6, segments), partTriangles},
                                           torusKnot(2, 3, 1.0, 0.25, 24, 6),
                                           {clutter(5, 12, 2.0), 12},
                                           lPart(2.0, 1.5, 0.4),
                                           toldAs(*ball, ClumSweptTriangles::SURFACE, false),
                                           toldAs(*small, ClumSweptTriangles::SOLID_IF_CLOSED, true)};
  Dice dice(7);
  unsigned int countContacts = 0, countInHollow = 0;
  for (int n = 0; n < 700; ++n)
  {
    const Specimen& a = specimens[n % 4 ? dice.rank(specimens.size()) : 2];
    const Specimen& b = specimens[n % 4 ? dice.rank(specimens.size()) : 1];
    const ClumMat4 poseA = dice.pose(0.5), poseB = dice.pose(1.0);
    const Examination<oracle::Real> pair(a, poseA, b, poseB);
    countContacts += pair.truth().isContact();
    countInHollow += n % 4 == 0 && !pair.truth().isContact();
    pair.touching();
    pair.exact();
    if (HasFailure())
      FAIL() << "case " << n;
  }
  EXPECT_GT(countContacts, 200u);
  EXPECT_GT(countInHollow, 60u);
}
