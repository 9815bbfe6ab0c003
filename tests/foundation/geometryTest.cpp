#include "foundation/lumBox.h"
#include "foundation/lumCapsule.h"
#include "foundation/lumCollectionAdapterGeometry.h"
#include "foundation/lumCone.h"
#include "foundation/lumConvex.h"
#include "foundation/lumCylinder.h"
#include "foundation/lumDescribe.h"
#include "foundation/lumGeometryCollection.h"
#include "foundation/lumInstance.h"
#include "foundation/lumMemoryCoder.h"
#include "foundation/lumNotificator.h"
#include "foundation/lumScene.h"
#include "foundation/lumSphere.h"
#include "foundation/lumTestParameters.h"
#include "support/meshes.h"
#include "support/triangleOracle.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>

LUM_HANDLES(GeometryKeeper)

/// An object with a reflected collection of geometries, as devices have.
class GeometryKeeper : public ClumMutableCodable
{
  LUM_CONCRETE(GeometryKeeper, ClumMutableCodable);

public:
  static GeometryKeeperShPtr create() { return lumCreate<GeometryKeeper>(); }
  unsigned int countGeometries() const { return static_cast<unsigned int>(m_geometries.size()); }
  ClumGeometryShPtr geometry(unsigned int i_rank) const { return m_geometries[i_rank]; }
  ClumMat4 frame(unsigned int i_rank) const { return m_frames[i_rank]; }

  void add(const ClumGeometryShPtr& i_geometry, const ClumMat4& i_frame = ClumMat4())
  {
    m_geometries.push_back(i_geometry);
    m_frames.push_back(i_frame);
    notifyCollectionDidChange("geometries", COLLECTION_INSERTION, static_cast<int>(m_geometries.size()) - 1);
  }
  void removeLast()
  {
    m_geometries.pop_back();
    m_frames.pop_back();
    notifyCollectionDidChange("geometries", COLLECTION_REMOVAL, static_cast<int>(m_geometries.size()));
  }
  void moveFirst(const ClumMat4& i_frame)
  {
    m_frames[0] = i_frame;
    notifyPropertyDidChange("version");
  }

protected:
  lmStatus init(const GeometryKeeperWkPtr& i_weakPtr) { return ClumMutableCodable::init(i_weakPtr); }

private:
  std::vector<ClumGeometryShPtr> m_geometries;
  std::vector<ClumMat4> m_frames;
};

LUM_DESCRIBE(GeometryKeeper)
{
  i_class.collection<ClumGeometryShPtr>("geometries", "ClumGeometryShPtr", &Self::countGeometries, &Self::geometry);
  i_class.collection<ClumMat4>("frames", "ClumMat4", &Self::countGeometries, &Self::frame);
}

namespace
{
ClumMat4 at(double i_x, double i_y = 0.0, double i_z = 0.0)
{
  ClumMat4 frame;
  frame.translate(i_x, i_y, i_z);
  return frame;
}

double leafX(const ClumGeometry& i_geometry, std::size_t i_rank)
{
  std::vector<ClumPlacedLeaf> leaves;
  i_geometry.getLeaves(leaves);
  return i_rank < leaves.size() ? leaves[i_rank].frame.translation().x() : std::nan("");
}

std::size_t countLeaves(const ClumGeometry& i_geometry)
{
  std::vector<ClumPlacedLeaf> leaves;
  i_geometry.getLeaves(leaves);
  return leaves.size();
}

class Geometry : public testing::Test
{
protected:
  static void SetUpTestSuite() { lumRegister_GeometryKeeper(); }
};
using Scene = Geometry;
} // namespace

TEST_F(Geometry, ShapesRefuseSizesThatMakeNoSolid)
{
  const double nan = std::nan(""), inf = std::numeric_limits<double>::infinity();
  for (const double bad : {0.0, -1.0, nan, inf})
  {
    EXPECT_FALSE(ClumBox::create(1.0, bad, 1.0));
    EXPECT_FALSE(ClumSphere::create(bad));
    EXPECT_FALSE(ClumCapsule::create(bad, 1.0));
    EXPECT_FALSE(ClumCylinder::create(1.0, bad));
    EXPECT_FALSE(ClumCone::create(1.0, bad));
  }
  EXPECT_TRUE(ClumCapsule::create(1.0, 0.0));
  EXPECT_FALSE(ClumConvex::create({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1, 1, 0}, {0.3, 0.3, 0}}));
  EXPECT_FALSE(ClumConvex::create({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, nan}}));
  EXPECT_FALSE(ClumMesh::create({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, {{0, 1, 3}}));
  EXPECT_FALSE(ClumMesh::create({{0, 0, 0}, {1, 0, 0}, {0, nan, 0}}, {{0, 1, 2}}));
  EXPECT_FALSE(ClumMesh::create({{0, 0, 0}, {1, 0, 0}, {2, 0, 0}}, {{0, 1, 2}}));
  EXPECT_FALSE(ClumMesh::create({}, {}));
}

TEST_F(Geometry, MeshDropsTrianglesThatSayNothing)
{
  const ClumMeshShPtr box = boxMesh(1.0, 2.0, 3.0);
  std::vector<ClumPoint3> vertices = box->vertices();
  std::vector<ClumMesh::TTriangle> triangles = box->triangles();
  const auto first = triangles[0];
  triangles.push_back({first[1], first[2], first[0]});
  triangles.push_back({first[2], first[1], first[0]});
  triangles.push_back({first[0], first[0], first[1]});
  const ClumMeshShPtr mesh = ClumMesh::create(vertices, triangles);
  EXPECT_EQ(mesh->triangles(), box->triangles());
  EXPECT_EQ(mesh->dropped().duplicates, 2u);
  EXPECT_EQ(mesh->dropped().zeroArea, 1u);
  EXPECT_TRUE(mesh->isClosed());

  // An edge that is cut in two on one side only stays closed by the triangle without area that lies in it.
  vertices.push_back(ClumPoint3((vertices[first[0]].toVect3() + vertices[first[1]].toVect3()) * 0.5));
  triangles = box->triangles();
  triangles[0] = {first[0], 8, first[2]};
  triangles.push_back({8, first[1], first[2]});
  EXPECT_FALSE(ClumMesh::create(vertices, triangles)->isClosed());
  triangles.push_back({first[0], first[1], 8});
  EXPECT_TRUE(ClumMesh::create(vertices, triangles)->isClosed());
}

TEST_F(Geometry, MadeMeshesAreClosedAndTurnOutward)
{
  const ClumMeshShPtr meshes[] = {boxMesh(1, 2, 3),
                                  sphereMesh(1.0, 7),
                                  cylinderMesh(1.0, 2.0, 9),
                                  lPart(2.0, 1.0, 0.2),
                                  torusKnot(2, 3, 1.0, 0.2, 40, 6),
                                  longBar(3.0, 0.2),
                                  wallWithWindow(4, 0.5, 1, 2),
                                  clutter(1, 4, 2.0)};
  for (const ClumMeshShPtr& mesh : meshes)
  {
    ASSERT_TRUE(mesh);
    EXPECT_TRUE(mesh->isClosed());
    double volume = 0.0;
    for (const auto& t : mesh->triangles())
      volume += mesh->vertices()[t[0]].toVect3().scalarProduct(mesh->vertices()[t[1]].toVect3() *
                                                               mesh->vertices()[t[2]].toVect3());
    EXPECT_GT(volume, 0.0);
  }
}

TEST_F(Geometry, EnclosureHoldsTheShapeAndIsTight)
{
  std::vector<ClumPoint3> flat;
  for (int i = 0; i < 50; ++i)
    flat.emplace_back(std::cos(0.7 * i), std::sin(0.7 * i), 0.0);
  flat.emplace_back(0.0, 0.0, 1e-3);
  const ClumLeafGeometryShPtr leaves[] = {torusKnot(2, 3, 1.0, 0.2, 60, 8), clutter(1, 20, 2.0),
                                          ClumConvex::create(flat),         ClumBox::create(1, 2, 3),
                                          ClumSphere::create(2.0),          ClumCapsule::create(0.5, 2.0),
                                          ClumCylinder::create(1.0, 3.0),   ClumCone::create(1.0, 2.0)};
  std::mt19937 engine(4);
  for (const ClumLeafGeometryShPtr& leaf : leaves)
  {
    ASSERT_TRUE(leaf);
    EXPECT_LE(leaf->enclosingPoints().size(), 64u);
    ClumSweptTriangles shape;
    leaf->getSweptTriangles(shape);
    double sumReach = 0.0, sumEnclosed = 0.0;
    for (int n = 0; n < 200; ++n)
    {
      const auto draw = [&] { return engine() / 2147483648.0 - 1.0; };
      const double x = draw(), y = draw();
      const ClumVect3 direction = ClumVect3(x, y, draw()).normalized();
      double reach = -1e9, enclosed = -1e9;
      for (const auto& t : shape.triangles)
        for (const unsigned int v : t)
          reach = std::max(reach, direction.scalarProduct(shape.vertices[v].toVect3()));
      for (const ClumPoint3& point : leaf->enclosingPoints())
        enclosed = std::max(enclosed, direction.scalarProduct(point.toVect3()));
      enclosed += leaf->enclosingRadius();
      EXPECT_GE(enclosed, reach + shape.radius - shape.excess);
      sumReach += reach + shape.radius;
      sumEnclosed += enclosed;
    }
    EXPECT_LE(sumEnclosed, 1.1 * sumReach);
  }
}

TEST_F(Geometry, GroupMovesItsMembersAsOne)
{
  const ClumBoxShPtr box = ClumBox::create(1, 1, 1), other = ClumBox::create(1, 1, 1);
  const ClumGeometryCollectionShPtr inner = ClumGeometryCollection::create(), outer = ClumGeometryCollection::create();
  box->position(at(1.0));
  EXPECT_TRUE(inner->addMember(box).succeeded());
  EXPECT_TRUE(inner->addMember(other, at(5.0)).succeeded());
  EXPECT_TRUE(outer->addMember(inner, at(10.0)).succeeded());
  EXPECT_EQ(box->position().translation().x(), 11.0);
  EXPECT_EQ(inner->addMember(box), ClumGeometry::ALREADY_MEMBER_ERROR);
  EXPECT_EQ(inner->addMember(outer), ClumGeometry::MEMBER_CYCLE_ERROR);
  EXPECT_EQ(inner->addMember(ClumGeometryShPtr()), ClumGeometry::NULL_MEMBER_ERROR);
  EXPECT_EQ(outer->removeMember(box), ClumGeometry::NOT_MEMBER_ERROR);

  const std::uint64_t stamp = outer->stamp(), pose = box->poseStamp();
  outer->position(at(100.0));
  EXPECT_EQ(box->position().translation().x(), 11.0);
  outer->applyPositionToMembers();
  EXPECT_EQ(box->position().translation().x(), 111.0);
  EXPECT_EQ(other->position().translation().x(), 115.0);
  EXPECT_EQ(outer->stamp(), stamp);
  EXPECT_NE(box->poseStamp(), pose);
  EXPECT_EQ(leafX(*outer, 0), 11.0);
  EXPECT_EQ(leafX(*outer, 1), 15.0);
  EXPECT_TRUE(inner->memberFrame(1, at(7.0)).succeeded());
  EXPECT_NE(outer->stamp(), stamp);
  EXPECT_EQ(leafX(*outer, 1), 17.0);

  const ClumGeometryShPtr copy = outer->clone();
  copy->position(at(0.0));
  copy->applyPositionToMembers();
  EXPECT_EQ(box->position().translation().x(), 111.0);
  EXPECT_EQ(leafX(*copy, 1), 17.0);
  const ClumInstanceShPtr instance = ClumInstance::create(outer);
  EXPECT_EQ(countLeaves(*instance), 2u);
  EXPECT_TRUE(instance->contains(*box));
}

TEST_F(Geometry, OneOwnerAloneControlsThePosition)
{
  const ClumBoxShPtr box = ClumBox::create(1, 1, 1);
  ClumObjectShPtr first = GeometryKeeper::create();
  const ClumObjectShPtr second = GeometryKeeper::create();
  EXPECT_TRUE(box->takeExclusivePositionControl(first).succeeded());
  EXPECT_TRUE(box->takeExclusivePositionControl(first).succeeded());
  EXPECT_FALSE(box->canTakeExclusivePositionControl());
  EXPECT_EQ(box->takeExclusivePositionControl(second), ClumGeometry::ALREADY_CONTROLLED_ERROR);
  EXPECT_TRUE(box->clone()->canTakeExclusivePositionControl());
  first.reset();
  EXPECT_TRUE(box->takeExclusivePositionControl(second).succeeded());
  EXPECT_TRUE(box->releaseExclusivePositionControl().succeeded());
  EXPECT_TRUE(box->releaseExclusivePositionControl().failed());
}

TEST_F(Geometry, AdapterFollowsTheCollectionOfItsObject)
{
  GeometryKeeperShPtr keeper = GeometryKeeper::create();
  keeper->add(ClumBox::create(1, 1, 1), at(1.0));
  EXPECT_FALSE(ClumCollectionAdapterGeometry::create(keeper, "nothing"));
  EXPECT_FALSE(ClumCollectionAdapterGeometry::create(ClumObjectShPtr(), "geometries"));
  const auto framed = ClumCollectionAdapterGeometry::create(keeper, "geometries", "frames");
  const auto free = ClumCollectionAdapterGeometry::create(keeper, "geometries");
  EXPECT_EQ(leafX(*framed, 0), 1.0);
  EXPECT_EQ(leafX(*free, 0), 0.0);

  const std::uint64_t framedStamp = framed->stamp(), freeStamp = free->stamp();
  keeper->geometry(0)->position(at(3.0));
  EXPECT_EQ(framed->stamp(), framedStamp);
  EXPECT_NE(free->stamp(), freeStamp);
  EXPECT_EQ(leafX(*free, 0), 3.0);
  keeper->moveFirst(at(2.0));
  EXPECT_NE(framed->stamp(), framedStamp);
  EXPECT_EQ(leafX(*framed, 0), 2.0);
  framed->position(at(10.0));
  framed->applyPositionToMembers();
  EXPECT_EQ(keeper->geometry(0)->position().translation().x(), 12.0);
  free->position(at(100.0));
  EXPECT_EQ(leafX(*free, 0), 12.0);
  free->applyPositionToMembers();
  EXPECT_EQ(keeper->geometry(0)->position().translation().x(), 112.0);
  EXPECT_EQ(leafX(*free, 0), 12.0);

  keeper->add(ClumSphere::create(1.0), at(4.0));
  EXPECT_EQ(framed->countMembers(), 2u);
  keeper->removeLast();
  EXPECT_EQ(framed->countMembers(), 1u);
  keeper.reset();
  EXPECT_EQ(free->object(), ClumObjectShPtr());
}

TEST_F(Scene, KeepsGeometriesAndTestsOfATree)
{
  const ClumSceneShPtr scene = ClumScene::create(), below = ClumScene::create();
  const ClumGeometryShPtr a = ClumBox::create(1, 1, 1), b = ClumBox::create(1, 1, 1), c = ClumBox::create(1, 1, 1);
  EXPECT_TRUE(scene->addGeometry(a).succeeded());
  EXPECT_TRUE(below->addGeometry(b).succeeded());
  EXPECT_EQ(scene->addTestParameters(a, b, ClumScene::KEEP_EXISTING_TEST), ClumScene::GEOMETRY_NOT_IN_SCENE_ERROR);
  EXPECT_TRUE(scene->addSubScene(below).succeeded());
  EXPECT_EQ(scene->addSubScene(below), ClumScene::SCENE_ALREADY_HAS_PARENT_ERROR);
  EXPECT_EQ(below->addSubScene(scene), ClumScene::SCENE_CYCLE_ERROR);
  EXPECT_EQ(below->addGeometry(a), ClumScene::GEOMETRY_ALREADY_IN_SCENE_ERROR);
  EXPECT_TRUE(below->addGeometry(c).succeeded());
  EXPECT_EQ(scene->countGeometries(), 3u);
  EXPECT_EQ(scene->countOwnGeometries(), 1u);
  EXPECT_EQ(scene->geometry(2), c);
  EXPECT_EQ(below->rootScene(), scene);

  const ClumTestParametersShPtr parameters = ClumTestParameters::create();
  EXPECT_TRUE(scene->addTestParameters(a, b, ClumScene::REFUSE_EXISTING_TEST, parameters).succeeded());
  EXPECT_TRUE(below->addTestParameters(c, b, ClumScene::REFUSE_EXISTING_TEST, parameters).succeeded());
  EXPECT_EQ(scene->testParameters(b, a), parameters);
  EXPECT_EQ(scene->testParameters(b, c), parameters);
  EXPECT_FALSE(below->testParameters(a, b));
  // A list is added as a whole or not at all.
  EXPECT_EQ(scene->addTestParameters({a}, {c, b}, ClumScene::REFUSE_EXISTING_TEST),
            ClumScene::TEST_ALREADY_EXISTS_ERROR);
  EXPECT_EQ(scene->addTestParameters({a}, {c, a}, ClumScene::KEEP_EXISTING_TEST), ClumScene::SAME_GEOMETRY_ERROR);
  EXPECT_EQ(scene->countTests(), 2u);
  EXPECT_TRUE(scene->addTestParameters({a}, {c, b}, ClumScene::KEEP_EXISTING_TEST).succeeded());
  EXPECT_EQ(scene->testParameters(a, b), parameters);
  EXPECT_TRUE(scene->addTestParameters(b, a, ClumScene::REPLACE_EXISTING_TEST).succeeded());
  EXPECT_NE(scene->testParameters(a, b), parameters);
  EXPECT_EQ(scene->countTests(), 3u);
  ASSERT_EQ(scene->testPairs().size(), 3u);
  EXPECT_EQ(scene->testPairs()[0].first, a);

  EXPECT_TRUE(scene->removeTestParameters(b, a).succeeded());
  EXPECT_EQ(scene->removeTestParameters(b, a), ClumScene::TEST_NOT_FOUND_ERROR);
  EXPECT_EQ(scene->setTestParameters(a, c, ClumTestParametersShPtr()), ClumScene::NULL_PARAMETERS_ERROR);
  // With the sub-scene go the tests that reach into it, not its own.
  EXPECT_TRUE(scene->removeSubScene(below).succeeded());
  EXPECT_EQ(scene->countTests(), 0u);
  EXPECT_EQ(below->countTests(), 1u);
  EXPECT_TRUE(below->removeGeometry(c).succeeded());
  EXPECT_EQ(below->countTests(), 0u);
  EXPECT_EQ(below->removeGeometry(c), ClumScene::GEOMETRY_NOT_IN_SCENE_ERROR);
}

TEST_F(Scene, VersionAndPairsFollowTestsAndParametersButNotPositions)
{
  struct Counter
  {
    unsigned int count = 0;
    void hear(const ShPtr<const ClumNotification>&) { ++count; }
  };
  const ClumSceneShPtr scene = ClumScene::create(), below = ClumScene::create();
  const ClumGeometryShPtr a = ClumBox::create(1, 1, 1), b = ClumBox::create(1, 1, 1), c = ClumBox::create(1, 1, 1);
  const ClumTestParametersShPtr parameters = ClumTestParameters::create();
  for (const ClumGeometryShPtr& geometry : {a, b, c})
    EXPECT_TRUE(below->addGeometry(geometry).succeeded());
  EXPECT_TRUE(scene->addSubScene(below).succeeded());
  const ShPtr<Counter> counter(new Counter);
  ASSERT_TRUE(scene->objectNotificator()
                ->subscribe(ClumScene::TEST_LIST_DID_CHANGE, counter, counter.get(), &Counter::hear)
                .succeeded());
  EXPECT_TRUE(below->addTestParameters(a, b, ClumScene::KEEP_EXISTING_TEST, parameters).succeeded());
  EXPECT_EQ(counter->count, 1u);

  std::uint64_t version = scene->version();
  const auto hasMoved = [&]
  {
    const bool moved = scene->version() != version;
    version = scene->version();
    return moved;
  };
  EXPECT_EQ(scene->testPairs().size(), 1u);
  a->position(at(4.0));
  EXPECT_FALSE(hasMoved());
  parameters->activation(false);
  EXPECT_TRUE(hasMoved());
  EXPECT_EQ(scene->testPairs().size(), 0u);
  parameters->activation(true);
  EXPECT_TRUE(hasMoved());
  EXPECT_EQ(scene->testPairs().size(), 1u);
  EXPECT_TRUE(scene->copyTestFromGeometry(a, c).succeeded());
  EXPECT_TRUE(hasMoved());
  EXPECT_EQ(scene->testParameters(c, b), parameters);
  EXPECT_TRUE(scene->haveSameConfiguration(a, c));
  EXPECT_TRUE(scene->setTestParameters(c, b, ClumTestParameters::createCopy(parameters)).succeeded());
  EXPECT_TRUE(scene->haveSameConfiguration(a, c));
  scene->testParameters(c, b)->tolerance(0.5);
  EXPECT_FALSE(scene->haveSameConfiguration(a, c));
  EXPECT_TRUE(scene->removeTestsIncludingGeometry(b).succeeded());
  EXPECT_TRUE(hasMoved());
  EXPECT_TRUE(scene->testPairs().empty());
  // Once for each list that changed: the last removal was in two scenes.
  EXPECT_EQ(counter->count, 5u);
}

TEST_F(Scene, MemberOfACollectionIsSplitOutAndPutBack)
{
  const GeometryKeeperShPtr keeper = GeometryKeeper::create();
  const ClumGeometryShPtr first = ClumBox::create(1, 1, 1), second = ClumBox::create(1, 1, 1);
  keeper->add(first);
  keeper->add(second);
  const ClumSceneShPtr scene = ClumScene::create();
  const ClumGeometryShPtr part = ClumSphere::create(1.0);
  ClumGeometryShPtr group;
  EXPECT_EQ(scene->addObjectGeometryCollection(keeper, "none", group), ClumScene::COLLECTION_NOT_FOUND_ERROR);
  ASSERT_TRUE(scene->addObjectGeometryCollection(keeper, "geometries", group).succeeded());
  EXPECT_TRUE(scene->addGeometry(part).succeeded());
  EXPECT_TRUE(scene->addTestParameters(part, group, ClumScene::KEEP_EXISTING_TEST).succeeded());
  EXPECT_EQ(boost::dynamic_pointer_cast<ClumCollectionAdapterGeometry>(group)->scene(), scene);
  EXPECT_EQ(scene->getSceneItem(second), group);
  EXPECT_EQ(scene->testableGeometry(second), group);
  EXPECT_EQ(scene->extractGeometry(part), ClumScene::GEOMETRY_NOT_EXTRACTABLE_ERROR);

  ASSERT_TRUE(scene->extractGeometry(second).succeeded());
  EXPECT_EQ(countLeaves(*group), 1u);
  const ClumGeometryShPtr extractor = scene->testableGeometry(second);
  ASSERT_TRUE(extractor);
  EXPECT_NE(extractor, group);
  EXPECT_EQ(scene->testParameters(extractor, part), scene->testParameters(group, part));
  EXPECT_EQ(scene->extractGeometry(second), ClumScene::GEOMETRY_NOT_EXTRACTABLE_ERROR);
  const auto begin = scene->beginAllTestableGeometries();
  EXPECT_EQ(scene->endAllTestableGeometries() - begin, 3);

  ASSERT_TRUE(scene->reintegrateGeometry(second).succeeded());
  EXPECT_EQ(countLeaves(*group), 2u);
  EXPECT_EQ(scene->countTests(), 1u);
  EXPECT_EQ(scene->testableGeometry(second), group);
  EXPECT_TRUE(scene->removeObjectGeometryCollection(keeper, "geometries").succeeded());
  EXPECT_EQ(scene->countTests(), 0u);
  EXPECT_FALSE(scene->doesContainGeometryOrParent(first));
}

TEST_F(Scene, SurvivesCodingWithItsShapesTestsAndParent)
{
  const ClumSceneShPtr scene = ClumScene::create(), below = ClumScene::create();
  const ClumGeometryCollectionShPtr group = ClumGeometryCollection::create();
  const ClumGeometryShPtr shapes[] = {lPart(1.0, 2.0, 0.1),
                                      ClumBox::create(1, 2, 3),
                                      ClumSphere::create(1.5),
                                      ClumCapsule::create(1, 2),
                                      ClumCylinder::create(1, 2),
                                      ClumCone::create(1, 2),
                                      ClumConvex::create(boxMesh(1, 1, 1)->vertices())};
  for (unsigned int i = 0; i < std::size(shapes); ++i)
    EXPECT_TRUE(group->addMember(shapes[i], at(i)).succeeded());
  const ClumGeometryShPtr part = ClumSphere::create(0.5);
  EXPECT_TRUE(scene->addGeometry(part).succeeded() && below->addGeometry(group).succeeded());
  EXPECT_TRUE(scene->addSubScene(below).succeeded());
  const ClumTestParametersShPtr parameters = ClumTestParameters::create();
  parameters->tolerance(0.25);
  EXPECT_TRUE(scene->addTestParameters(part, group, ClumScene::KEEP_EXISTING_TEST, parameters).succeeded());

  const ClumMemoryCoderShPtr coder = ClumMemoryCoder::create();
  ASSERT_TRUE(coder->encodeObjectShPtr(scene, "object").succeeded());
  const auto copy = boost::dynamic_pointer_cast<ClumScene>(coder->decodeObject("object"));
  ASSERT_TRUE(copy);
  ASSERT_EQ(copy->testPairs().size(), 1u);
  EXPECT_EQ(copy->testPairs()[0].parameters->tolerance(), 0.25);
  EXPECT_EQ(copy->subScene(0)->parent(), copy);
  EXPECT_EQ(copy->testParameters(copy->geometry(1), copy->geometry(0)), copy->testPairs()[0].parameters);
  std::vector<ClumPlacedLeaf> before, after;
  group->getLeaves(before);
  copy->geometry(1)->getLeaves(after);
  ASSERT_EQ(before.size(), after.size());
  for (std::size_t i = 0; i < before.size(); ++i)
  {
    EXPECT_NE(before[i].leaf, after[i].leaf);
    EXPECT_EQ(before[i].frame, after[i].frame);
    ClumSweptTriangles old, restored;
    before[i].leaf->getSweptTriangles(old);
    after[i].leaf->getSweptTriangles(restored);
    EXPECT_EQ(old.vertices, restored.vertices);
    EXPECT_EQ(old.triangles, restored.triangles);
    EXPECT_EQ(old.radius, restored.radius);
  }
}

TEST_F(Geometry, HullIsConvexAndHoldsAllPoints)
{
  std::mt19937 engine(9);
  const auto draw = [&] { return engine() / 2147483648.0 - 1.0; };
  for (int n = 0; n < 40; ++n)
  {
    // Clouds, points on a ball, lattices with many coplanar points, and flat pancakes.
    std::vector<ClumPoint3> points;
    for (int i = 0; i < 60; ++i)
    {
      ClumVect3 point(draw(), draw(), draw());
      if (n % 4 == 1)
        point.normalize();
      if (n % 4 == 2)
        point.setValue(std::round(point.x() * 2), std::round(point.y() * 2), std::round(point.z() * 2));
      if (n % 4 == 3)
        point.setValue(point.x(), point.y(), point.z() * 1e-5);
      points.emplace_back(point);
    }
    const ClumConvexShPtr hull = ClumConvex::create(points);
    ASSERT_TRUE(hull) << n;
    EXPECT_TRUE(ClumMesh::create(hull->vertices(), hull->triangles())->isClosed()) << n;
    for (const auto& face : hull->triangles())
    {
      const ClumPoint3& a = hull->vertices()[face[0]];
      const ClumVect3 normal = ((hull->vertices()[face[1]] - a) * (hull->vertices()[face[2]] - a)).normalized();
      for (const ClumPoint3& point : points)
        EXPECT_LE(normal.scalarProduct(point - a), 1e-9) << n;
    }
  }
}
