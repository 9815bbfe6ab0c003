#include "foundation/lumBox.h"
#include "foundation/lumCapsule.h"
#include "foundation/lumMemoryCoder.h"
#include "foundation/lumMesh.h"
#include "foundation/lumProximityCollisionToolkit.h"
#include "foundation/lumSphere.h"
#include "foundation/lumProximityModel.h"
#include "support/allocations.h"
#include "support/dice.h"
#include "support/meshes.h"

#include <gtest/gtest.h>

#include <cstring>

namespace
{
using TSolidity = ClumSweptTriangles;

/// The kernel of the library in use, put back at the end.
class KernelSwitch
{
public:
  KernelSwitch() : m_before(lumProximityKernel()) {}
  ~KernelSwitch() { lumUseProximityKernel(m_before); }
  KernelSwitch(const KernelSwitch&) = delete;
  KernelSwitch& operator=(const KernelSwitch&) = delete;

private:
  const CProximityKernel& m_before;
};

void appendBits(double i_value, std::vector<std::uint64_t>& io_bits)
{
  std::uint64_t bits = 0;
  std::memcpy(&bits, &i_value, sizeof bits);
  io_bits.push_back(bits);
}

void appendBits(const ClumDistanceResult& i_result, std::vector<std::uint64_t>& io_bits)
{
  appendBits(i_result.lower, io_bits);
  appendBits(i_result.upper, io_bits);
  io_bits.push_back(i_result.hasPoints);
  io_bits.push_back(i_result.triangleA);
  io_bits.push_back(i_result.triangleB);
  for (unsigned int k = 0; k < 3; ++k)
  {
    appendBits(i_result.pointA[k], io_bits);
    appendBits(i_result.pointB[k], io_bits);
  }
}

class ProximityKernel : public testing::Test
{
protected:
  ClumCollisionModelConstShPtr model(const ClumLeafGeometry& i_leaf) const { return i_leaf.collisionModel(*m_toolkit); }

  ClumProximityCollisionToolkitShPtr m_toolkit = ClumProximityCollisionToolkit::create();
};

class ProximityPenetration : public ProximityKernel
{
protected:
  /// Checks that the move told parts the two. @return its length.
  double wayOut(const ClumLeafGeometry& i_a, const ClumMat4& i_poseA, const ClumLeafGeometry& i_b,
                const ClumMat4& i_poseB)
  {
    double depth = -1.0;
    ClumVect3 direction;
    EXPECT_TRUE(m_toolkit->penetration(*model(i_a), i_poseA, *model(i_b), i_poseB, depth, direction).succeeded());
    ClumMat4 moved = i_poseB;
    moved.setTranslation(i_poseB.translation() + direction * depth);
    EXPECT_FALSE(m_toolkit->areTouching(*model(i_a), i_poseA, *model(i_b), moved));
    EXPECT_NEAR(direction.norm(), depth > 0.0 ? 1.0 : 0.0, 1e-12);
    return depth;
  }
};

std::vector<ClumLeafGeometryShPtr> kernelShapes()
{
  return {torusKnot(2, 3, 1.0, 0.15, 125, 20),
          sphereMesh(1.0, 12),
          clutter(3, 60, 4.0),
          boxMesh(1.0, 0.5, 2.0),
          wallWithWindow(3.0, 0.2, 1.0, 0.8),
          longBar(3.0, 0.1),
          ClumBox::create(1.0, 1.0, 1.0),
          ClumCapsule::create(0.2, 1.0),
          ClumSphere::create(0.3)};
}

/// The bits of many answers, to questions of all kinds.
std::vector<std::uint64_t> answersOf(const ClumCollisionToolkit& i_toolkit,
                                     const std::vector<ClumLeafGeometryShPtr>& i_shapes)
{
  Dice dice(17);
  std::vector<std::uint64_t> bits;
  for (int n = 0; n < 1500; ++n)
  {
    const ClumCollisionModel& a = *i_shapes[dice.rank(i_shapes.size())]->collisionModel(i_toolkit);
    const ClumCollisionModel& b = *i_shapes[dice.rank(i_shapes.size())]->collisionModel(i_toolkit);
    // Some side by side along common axes, where edges are parallel and faces touch.
    const bool isAligned = n % 5 == 0;
    const ClumMat4 poseA = isAligned ? placedAt(dice.rank(5) * 0.25, dice.rank(3) * 0.5, 0.0) : dice.pose(1.5);
    const ClumMat4 poseB = isAligned ? ClumMat4() : dice.pose(1.5);
    ClumTrianglePair pair;
    bits.push_back(i_toolkit.areTouching(a, poseA, b, poseB, &pair));
    bits.push_back(pair.a);
    bits.push_back(pair.b);
    const ClumDistanceResult exact = i_toolkit.exactDistance(a, poseA, b, poseB);
    appendBits(exact, bits);
    const double cap = dice(0.0, 2.0), accuracy = dice(0.0, 0.9), stop = n % 2 ? dice(0.0, 1.0) : 0.0;
    appendBits(i_toolkit.boundedDistance(a, poseA, b, poseB, cap, accuracy, stop, &exact), bits);
    appendBits(i_toolkit.boundedDistance(a, poseA, b, poseB, cap, accuracy, stop), bits);
  }
  return bits;
}
} // namespace

TEST_F(ProximityKernel, AllInstructionSetsGiveTheSameBits)
{
  const KernelSwitch keeper;
  const std::vector<ClumLeafGeometryShPtr> shapes = kernelShapes();
  const TProximityKernels kernels = lumProximityKernels();
  lumUseProximityKernel(*kernels[0]);
  const std::vector<std::uint64_t> expected = answersOf(*m_toolkit, shapes);
  for (const CProximityKernel* kernel : kernels)
  {
    lumUseProximityKernel(*kernel);
    EXPECT_EQ(answersOf(*m_toolkit, shapes), expected) << kernel->name;
  }
#if defined(__x86_64__)
  EXPECT_GE(kernels.size(), 2u);
#endif
}

TEST_F(ProximityKernel, AllInstructionSetsMakeTheSameModels)
{
  const KernelSwitch keeper;
  for (const ClumLeafGeometryShPtr& leaf : kernelShapes())
  {
    ClumSweptTriangles shape;
    leaf->getSweptTriangles(shape);
    std::vector<std::uint64_t> expected;
    for (const CProximityKernel* kernel : lumProximityKernels())
    {
      lumUseProximityKernel(*kernel);
      const auto made = boost::static_pointer_cast<const CProximityModel>(CProximityModel::create(shape));
      std::vector<std::uint64_t> bits;
      for (std::uint32_t i = 0; i < made->tree().countBalls; ++i)
      {
        const CProximityBall& ball = made->tree().balls[i];
        for (const float number : {ball.center[0], ball.center[1], ball.center[2], ball.radius})
          appendBits(number, bits);
      }
      EXPECT_FALSE(bits.empty());
      if (expected.empty())
        expected = bits;
      EXPECT_EQ(bits, expected) << kernel->name;
    }
  }
}

TEST_F(ProximityKernel, AskingAllocatesNothing)
{
  const ClumMeshShPtr knot = torusKnot(2, 3, 1.0, 0.15, 60, 10), boxes = clutter(3, 60, 3.0);
  const ClumCollisionModel& a = *model(*knot);
  const ClumCollisionModel& b = *model(*boxes);
  Dice dice(23);
  std::vector<ClumMat4> poses;
  for (int n = 0; n < 60; ++n)
    poses.push_back(dice.pose(3.0));
  unsigned int countContacts = 0;
  const std::size_t before = countAllocations();
  for (const ClumMat4& pose : poses)
  {
    ClumTrianglePair pair;
    countContacts += m_toolkit->areTouching(a, pose, b, ClumMat4(), &pair);
    const ClumDistanceResult found = m_toolkit->boundedDistance(a, pose, b, ClumMat4(), 0.5, 0.2);
    m_toolkit->exactDistance(a, pose, b, ClumMat4(), &found);
  }
  EXPECT_EQ(countAllocations(), before);
  EXPECT_GT(countContacts, 10u);
  EXPECT_LT(countContacts, 50u);
}

TEST_F(ProximityKernel, PairOfAContactIsToldAndTakenAsAHint)
{
  const ClumMeshShPtr ball = sphereMesh(1.0, 12), knot = torusKnot(2, 3, 1.0, 0.15, 60, 10);
  const auto surface = [](const ClumMesh& i_mesh)
  { return ClumMesh::create(i_mesh.vertices(), i_mesh.triangles(), TSolidity::SURFACE); };
  const ClumMeshShPtr ballSurface = surface(*ball), knotSurface = surface(*knot);
  Dice dice(29);
  unsigned int countContacts = 0, countSolid = 0;
  for (int n = 0; n < 200; ++n)
  {
    // Solids that reach deep into each other touch without any pair.
    const bool areSolid = n % 2 == 0;
    const ClumMeshShPtr a = areSolid ? ball : ballSurface, b = areSolid ? knot : knotSurface;
    const ClumMat4 pose = dice.pose(2.0);
    const bool expected = m_toolkit->areTouching(*model(*a), ClumMat4(), *model(*b), pose);
    // Any hint leaves the answer as it is.
    ClumTrianglePair pair = {dice.rank(400), n % 3 ? dice.rank(2000) : ClumTrianglePair::NO_TRIANGLE};
    const ClumTrianglePair before = pair;
    ASSERT_EQ(m_toolkit->areTouching(*model(*a), ClumMat4(), *model(*b), pose, &pair), expected);
    const bool isTold = pair.a != before.a || pair.b != before.b;
    if (!isTold)
    {
      EXPECT_TRUE(areSolid || !expected);
      continue;
    }
    EXPECT_TRUE(expected);
    ++countContacts;
    countSolid += areSolid;
    ASSERT_LT(pair.a, a->triangles().size());
    ASSERT_LT(pair.b, b->triangles().size());
    const auto single = [](const ClumMesh& i_mesh, unsigned int i_rank)
    { return ClumMesh::create(i_mesh.vertices(), {i_mesh.triangles()[i_rank]}); };
    EXPECT_TRUE(m_toolkit->areTouching(*model(*single(*a, pair.a)), ClumMat4(), *model(*single(*b, pair.b)), pose));
  }
  EXPECT_GT(countContacts, 20u);
  EXPECT_GT(countSolid, 3u);
}

TEST_F(ProximityKernel, FarShapesAreMeasuredToTheirSizes)
{
  // Two boxes of which the nearest points are known: corners, or points of facing sides.
  const ClumBoxShPtr a = ClumBox::create(1.0, 2.0, 3.0);
  const ClumMeshShPtr ball = sphereMesh(1.0, 30);
  for (const double far : {1e1, 1e3, 1e4, 1e6, 1e9, 1e12})
  {
    const ClumDistanceResult aside = m_toolkit->exactDistance(*model(*a), ClumMat4(), *model(*a), placedAt(0, far, 0));
    EXPECT_NEAR(aside.lower, far - 2.0, 1e-9 * far);
    EXPECT_LE(aside.lower, far - 2.0);
    EXPECT_NEAR(aside.upper, far - 2.0, 1e-9 * far);
    const ClumVect3 gap(far - 1.0, far - 2.0, far - 3.0);
    const ClumDistanceResult across =
      m_toolkit->exactDistance(*model(*a), ClumMat4(), *model(*a), placedAt(far, far, far));
    EXPECT_NEAR(across.lower, gap.norm(), 1e-9 * far);
    EXPECT_LE(across.lower, gap.norm() * (1.0 + 1e-15));
    const ClumDistanceResult round =
      m_toolkit->exactDistance(*model(*ball), ClumMat4(), *model(*ball), placedAt(0, 0, far));
    EXPECT_NEAR(round.lower, far - 2.0, 1e-9 * far);
    EXPECT_FALSE(m_toolkit->areTouching(*model(*ball), ClumMat4(), *model(*a), placedAt(far, 0, 0)));
  }
}

TEST_F(ProximityKernel, SolidityOverridesWhatWasFoundOut)
{
  const ClumMeshShPtr big = boxMesh(4.0, 4.0, 4.0), small = boxMesh(1.0, 1.0, 1.0);
  std::vector<ClumMesh::TTriangle> lidless = big->triangles();
  lidless.pop_back();
  const ClumMeshShPtr shell = ClumMesh::create(big->vertices(), big->triangles(), TSolidity::SURFACE);
  const ClumMeshShPtr open = ClumMesh::create(big->vertices(), lidless);
  const ClumMeshShPtr filled = ClumMesh::create(big->vertices(), lidless, TSolidity::SOLID);
  const ClumMeshShPtr bubble = ClumMesh::create(small->vertices(), small->triangles(), TSolidity::SURFACE);
  const struct
  {
    ClumMeshShPtr outer;
    ClumMeshShPtr inner;
    bool collides;
  } cases[] = {{big, small, true},    {shell, small, false}, {open, small, false},
               {filled, small, true}, {big, bubble, true},   {shell, bubble, false}};
  for (const auto& test : cases)
  {
    const ClumMat4 pose = placedAt(0.2, 0.1, -0.3);
    EXPECT_EQ(m_toolkit->areTouching(*model(*test.outer), ClumMat4(), *model(*test.inner), pose), test.collides);
    EXPECT_EQ(m_toolkit->exactDistance(*model(*test.inner), pose, *model(*test.outer), ClumMat4()).lower == 0.0,
              test.collides);
  }
  EXPECT_FALSE(shell->isClosed());
  EXPECT_TRUE(filled->isClosed());
  const ClumMemoryCoderShPtr coder = ClumMemoryCoder::create();
  ASSERT_TRUE(coder->encodeObjectShPtr(shell, "object").succeeded());
  const auto copy = boost::dynamic_pointer_cast<ClumMesh>(coder->decodeObject("object"));
  ASSERT_TRUE(copy);
  EXPECT_EQ(copy->solidity(), TSolidity::SURFACE);
  // Shapes that differ in it cannot be told by one model.
  EXPECT_TRUE(m_toolkit->makeJoinedModel({{shell, ClumMat4()}, {bubble, ClumMat4()}}));
  EXPECT_FALSE(m_toolkit->makeJoinedModel({{big, ClumMat4()}, {bubble, ClumMat4()}}));
}

TEST_F(ProximityKernel, AnyOfManyPartsMayLieInside)
{
  // Parts in a row, and a box that has room for one of them or stands between two.
  constexpr unsigned int COUNT = 37;
  std::vector<ClumPlacedLeaf> row;
  for (unsigned int i = 0; i < COUNT; ++i)
    row.push_back({boxMesh(0.5, 0.5, 0.5), placedAt(6.0 * i, 0.1, 0.2)});
  const ClumMeshShPtr parts = joined(row), room = boxMesh(4.0, 4.0, 4.0);
  for (unsigned int i = 0; i + 1 < COUNT; ++i)
    for (const bool isAround : {true, false})
    {
      const ClumMat4 pose = placedAt(6.0 * i + (isAround ? 0.5 : 3.0), 0.0, 0.0);
      EXPECT_EQ(m_toolkit->areTouching(*model(*parts), ClumMat4(), *model(*room), pose), isAround) << i;
      const double lower = m_toolkit->boundedDistance(*model(*room), pose, *model(*parts), ClumMat4(), 0.5, 0.0).lower;
      EXPECT_TRUE(isAround ? lower == 0.0 : lower >= 0.5 - 1e-9 && lower <= 0.75) << i;
    }
}

TEST_F(ProximityKernel, BoxesAndSegmentsBoundLongShapes)
{
  // Long and flat shapes, of which the enclosing balls tell little: small caps are reached by boxes and segments alone.
  const std::vector<ClumLeafGeometryShPtr> shapes = {
    ClumSphere::create(0.3), longBar(30.0, 0.1), wallWithWindow(40.0, 0.2, 1.0, 1.0), ClumCapsule::create(0.2, 7.0)};
  Dice dice(41);
  unsigned int countCapped[4][4] = {};
  for (int n = 0; n < 3000; ++n)
  {
    const unsigned int first = dice.rank(shapes.size()), second = dice.rank(shapes.size());
    const ClumCollisionModel &a = *model(*shapes[first]), &b = *model(*shapes[second]);
    // Some along the same axes: side by side, in one line, or across.
    ClumMat4 pose = dice.pose(6.0), around = dice.pose(6.0);
    if (n % 4 == 0)
    {
      around = ClumMat4();
      pose = placedAt(dice.rank(3) * 20.0, dice.rank(3) * 0.4, dice.rank(2) * 0.7);
      if (n % 8 == 0)
        pose.rotate(ClumVect3(0.0, 0.0, 1.0), 1.5707963267948966);
    }
    const double exact = m_toolkit->exactDistance(a, pose, b, around).lower;
    const double cap = dice(0.0, 1.5) * exact;
    const ClumDistanceResult found = m_toolkit->boundedDistance(a, pose, b, around, cap, 0.0);
    EXPECT_LE(found.lower, exact + 1e-8);
    EXPECT_GE(found.lower, std::min(cap, exact) - 1e-8);
    EXPECT_EQ(m_toolkit->areTouching(a, pose, b, around), exact == 0.0);
    countCapped[first][second] += exact > 0.0 && !found.hasTriangles;
  }
  EXPECT_GT(countCapped[0][1] + countCapped[0][2], 50u); // by boxes
  EXPECT_GT(countCapped[1][1], 50u);                     // by segments
  EXPECT_GT(countCapped[3][1] + countCapped[1][3], 100u);
}

TEST_F(ProximityKernel, ModelsStayWithinTheirMemory)
{
  const ClumMeshShPtr meshes[] = {sphereMesh(1.0, 16), sphereMesh(1.0, 50), torusKnot(2, 3, 1.0, 0.15, 125, 20),
                                  clutter(3, 200, 6.0), longBar(30.0, 0.1)};
  for (const ClumMeshShPtr& mesh : meshes)
  {
    const auto& made = static_cast<const CProximityModel&>(*model(*mesh));
    EXPECT_LE(made.countBytes(), 250 * mesh->triangles().size()) << mesh->triangles().size();
  }
}

TEST_F(ProximityKernel, ShapesThatReachTooFarAreRefused)
{
  const auto triangle = [](double i_reach) {
    return ClumMesh::create({{0, 0, 0}, {i_reach, 0, 0}, {0, i_reach, 0}}, {{0, 1, 2}});
  };
  EXPECT_TRUE(model(*triangle(1e13)));
  EXPECT_FALSE(model(*triangle(1e15)));
  EXPECT_FALSE(model(*ClumSphere::create(1e15)));
}

TEST_F(ProximityPenetration, IsExactForShapesThatAreSimple)
{
  const ClumBoxShPtr box = ClumBox::create(1.0, 1.0, 1.0);
  const ClumSphereShPtr ball = ClumSphere::create(0.5);
  const ClumCapsuleShPtr capsule = ClumCapsule::create(0.25, 2.0);
  Dice dice(31);
  for (int n = 0; n < 12; ++n)
  {
    const ClumMat4 frame = dice.pose(3.0);
    EXPECT_NEAR(wayOut(*box, frame, *box, frame * placedAt(0.9, 0.3, 0.2)), 0.1, 1e-6);
    EXPECT_NEAR(wayOut(*box, frame, *ball, frame * placedAt(0.1, -0.8, 0.2)), 0.2, 1e-6);
    EXPECT_NEAR(wayOut(*ball, frame, *capsule, frame * placedAt(0.6, 0.0, 0.3)), 0.15, 1e-6);
    EXPECT_NEAR(wayOut(*ball, frame, *ball, frame * placedAt(0.0, 0.3, 0.4)), 0.5, 1e-6);
    EXPECT_EQ(wayOut(*box, frame, *ball, frame * placedAt(3.0, 0.0, 0.0)), 0.0);
  }
}

TEST_F(ProximityPenetration, PartsAllKindsOfShapes)
{
  const std::vector<ClumLeafGeometryShPtr> shapes = kernelShapes();
  Dice dice(37);
  unsigned int countContacts = 0;
  for (int n = 0; n < 60; ++n)
  {
    const ClumLeafGeometry& a = *shapes[dice.rank(shapes.size())];
    const ClumLeafGeometry& b = *shapes[dice.rank(shapes.size())];
    const ClumMat4 poseA = dice.pose(1.0), poseB = dice.pose(1.0);
    const double depth = wayOut(a, poseA, b, poseB);
    const bool isTouching = m_toolkit->areTouching(*model(a), poseA, *model(b), poseB);
    EXPECT_EQ(depth > 0.0, isTouching);
    countContacts += isTouching;
    // Never more than out of each other's enclosing balls.
    EXPECT_LE(depth, 2.0 * (model(a)->radius() + model(b)->radius()));
  }
  EXPECT_GT(countContacts, 20u);
}

TEST_F(ProximityPenetration, FindsTheWayThroughAnOpening)
{
  // A small box in the wall beside the window is nearer to the window than to either side of the wall's rim.
  const ClumMeshShPtr wall = wallWithWindow(4.0, 2.0, 1.0, 1.0), box = boxMesh(0.2, 0.2, 0.2);
  EXPECT_NEAR(wayOut(*wall, ClumMat4(), *box, placedAt(0.0, 0.5, 0.0)), 0.1, 1e-3);
  // Wholly inside of the wall.
  EXPECT_NEAR(wayOut(*wall, ClumMat4(), *box, placedAt(0.0, 0.7, 0.0)), 0.3, 1e-3);
}
