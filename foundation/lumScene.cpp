#include "foundation/lumScene.h"

#include "foundation/lumAssert.h"
#include "foundation/lumCoder.h"
#include "foundation/lumCollectionAdapterGeometry.h"
#include "foundation/lumDescribe.h"
#include "foundation/lumSceneExtractorGeometry.h"
#include "foundation/lumStamp.h"
#include "foundation/lumTestParameters.h"

#include <algorithm>

LUM_DESCRIBE(ClumScene)
{
  i_class.creates("()", &Self::create);
  i_class.collection<ClumGeometryShPtr>("geometries", "ClumGeometryShPtr", &Self::countGeometries, &Self::geometry);
  i_class.collection<ClumSceneShPtr>("subScenes", "ClumSceneShPtr", &Self::countSubScenes, &Self::subScene);
  i_class.enumeration("EAddTestBehaviour", "REPLACE_EXISTING_TEST, KEEP_EXISTING_TEST, REFUSE_EXISTING_TEST");
}
LUM_NOTIFICATION(ClumScene, TEST_LIST_DID_CHANGE);
LUM_STATUS_CODE(ClumScene, NULL_GEOMETRY_ERROR, 10200, "The geometry is null.");
LUM_STATUS_CODE(ClumScene, GEOMETRY_ALREADY_IN_SCENE_ERROR, 10201, "The geometry is already in the tree of scenes.");
LUM_STATUS_CODE(ClumScene, GEOMETRY_NOT_IN_SCENE_ERROR, 10202, "The geometry is not in the scene.");
LUM_STATUS_CODE(ClumScene, NULL_SCENE_ERROR, 10203, "The scene is null.");
LUM_STATUS_CODE(ClumScene, SCENE_ALREADY_HAS_PARENT_ERROR, 10204, "The scene is already a sub-scene.");
LUM_STATUS_CODE(ClumScene, SCENE_CYCLE_ERROR, 10205, "The scene would contain itself.");
LUM_STATUS_CODE(ClumScene, SUB_SCENE_NOT_FOUND_ERROR, 10206, "The scene is not a sub-scene of this one.");
LUM_STATUS_CODE(ClumScene, COLLECTION_NOT_FOUND_ERROR, 10207, "The object has no such geometry collection.");
LUM_STATUS_CODE(ClumScene, SAME_GEOMETRY_ERROR, 10208, "A geometry cannot be tested against itself.");
LUM_STATUS_CODE(ClumScene, TEST_ALREADY_EXISTS_ERROR, 10209, "The two geometries already have a test.");
LUM_STATUS_CODE(ClumScene, TEST_NOT_FOUND_ERROR, 10210, "The two geometries have no test.");
LUM_STATUS_CODE(ClumScene, NULL_PARAMETERS_ERROR, 10211, "The test parameters are null.");
LUM_STATUS_CODE(ClumScene, GEOMETRY_NOT_EXTRACTABLE_ERROR, 10212, "The geometry is not in a collection of the scene.");

ClumScene::ClumScene() : m_stamp(lumNextStamp())
{
}

ClumScene::~ClumScene() = default;

ClumSceneShPtr ClumScene::create()
{
  return lumCreate<ClumScene>();
}

lmStatus ClumScene::init(const ClumSceneWkPtr& i_weakPtr)
{
  return ClumMutableCodable::init(i_weakPtr);
}

// Geometries.

template <class FUNCTION>
void ClumScene::forEachGeometry(FUNCTION i_function) const
{
  for (const ClumGeometryShPtr& geometry : m_geometries)
    i_function(geometry);
  for (const ClumSceneShPtr& scene : m_subScenes)
    scene->forEachGeometry(i_function);
}

lmStatus ClumScene::addGeometry(const ClumGeometryShPtr& i_geometry)
{
  if (!i_geometry)
    return NULL_GEOMETRY_ERROR;
  if (rootScene()->doesContainGeometry(i_geometry))
    return GEOMETRY_ALREADY_IN_SCENE_ERROR;
  const int rank = static_cast<int>(m_geometries.size());
  notifyCollectionWillChange("geometries", COLLECTION_INSERTION, rank);
  m_geometries.push_back(i_geometry);
  if (const auto adapter = boost::dynamic_pointer_cast<ClumCollectionAdapterGeometry>(i_geometry))
    adapter->scene(self());
  contentsDidChange();
  notifyCollectionDidChange("geometries", COLLECTION_INSERTION, rank);
  return lmStatus();
}

lmStatus ClumScene::removeGeometry(const ClumGeometryShPtr& i_geometry)
{
  if (!i_geometry)
    return NULL_GEOMETRY_ERROR;
  const auto found = std::find(m_geometries.begin(), m_geometries.end(), i_geometry);
  if (found == m_geometries.end())
    return GEOMETRY_NOT_IN_SCENE_ERROR;
  removeOwn(static_cast<std::size_t>(found - m_geometries.begin()));
  return lmStatus();
}

void ClumScene::removeOwn(std::size_t i_rank)
{
  const ClumGeometryShPtr geometry = m_geometries[i_rank];
  notifyCollectionWillChange("geometries", COLLECTION_REMOVAL, static_cast<int>(i_rank));
  m_geometries.erase(m_geometries.begin() + static_cast<std::ptrdiff_t>(i_rank));
  if (const auto adapter = boost::dynamic_pointer_cast<ClumCollectionAdapterGeometry>(geometry))
    adapter->scene(ClumSceneWkPtr());
  rootScene()->removeTestsBelow(*geometry);
  contentsDidChange();
  notifyCollectionDidChange("geometries", COLLECTION_REMOVAL, static_cast<int>(i_rank));
}

void ClumScene::clearOwnGeometries()
{
  while (!m_geometries.empty())
    removeOwn(m_geometries.size() - 1);
}

unsigned int ClumScene::countGeometries() const
{
  unsigned int count = 0;
  forEachGeometry([&](const ClumGeometryShPtr&) { ++count; });
  return count;
}

ClumGeometryShPtr ClumScene::geometry(unsigned int i_rank) const
{
  unsigned int rank = 0;
  ClumGeometryShPtr found;
  forEachGeometry(
    [&](const ClumGeometryShPtr& geometry)
    {
      if (rank++ == i_rank)
        found = geometry;
    });
  return found;
}

ClumGeometryShPtr ClumScene::ownGeometry(unsigned int i_rank) const
{
  return i_rank < m_geometries.size() ? m_geometries[i_rank] : ClumGeometryShPtr();
}

namespace
{
void fillWithSceneMembers(const ClumGeometryShPtr& i_geometry, std::set<ClumGeometryShPtr>& io_set)
{
  io_set.insert(i_geometry);
  for (unsigned int i = 0; i < i_geometry->countMembers(); ++i)
    fillWithSceneMembers(i_geometry->member(i), io_set);
}
} // namespace

void ClumScene::fillGeometrySet(std::set<ClumGeometryShPtr>& io_set, bool i_recursive) const
{
  forEachGeometry(
    [&](const ClumGeometryShPtr& geometry)
    {
      if (i_recursive)
        fillWithSceneMembers(geometry, io_set);
      else
        io_set.insert(geometry);
    });
}

// The tree of scenes.

lmStatus ClumScene::addSubScene(const ClumSceneShPtr& i_scene)
{
  if (!i_scene)
    return NULL_SCENE_ERROR;
  if (i_scene->parent())
    return SCENE_ALREADY_HAS_PARENT_ERROR;
  const ClumSceneShPtr root = rootScene();
  if (i_scene == root)
    return SCENE_CYCLE_ERROR;
  bool isShared = false;
  i_scene->forEachGeometry([&](const ClumGeometryShPtr& geometry)
                           { isShared = isShared || root->doesContainGeometry(geometry); });
  if (isShared)
    return GEOMETRY_ALREADY_IN_SCENE_ERROR;
  const int rank = static_cast<int>(m_subScenes.size());
  notifyCollectionWillChange("subScenes", COLLECTION_INSERTION, rank);
  m_subScenes.push_back(i_scene);
  i_scene->m_parent = self();
  contentsDidChange();
  notifyCollectionDidChange("subScenes", COLLECTION_INSERTION, rank);
  testListDidChange();
  return lmStatus();
}

lmStatus ClumScene::removeSubScene(const ClumSceneShPtr& i_scene)
{
  if (!i_scene)
    return NULL_SCENE_ERROR;
  const auto found = std::find(m_subScenes.begin(), m_subScenes.end(), i_scene);
  if (found == m_subScenes.end())
    return SUB_SCENE_NOT_FOUND_ERROR;
  const ClumSceneShPtr removed = *found;
  const int rank = static_cast<int>(found - m_subScenes.begin());
  notifyCollectionWillChange("subScenes", COLLECTION_REMOVAL, rank);
  m_subScenes.erase(found);
  removed->m_parent.reset();
  const ClumSceneShPtr root = rootScene();
  removed->forEachGeometry([&](const ClumGeometryShPtr& geometry) { root->removeTestsBelow(*geometry); });
  contentsDidChange();
  notifyCollectionDidChange("subScenes", COLLECTION_REMOVAL, rank);
  testListDidChange();
  return lmStatus();
}

ClumSceneShPtr ClumScene::subScene(unsigned int i_rank) const
{
  return i_rank < m_subScenes.size() ? m_subScenes[i_rank] : ClumSceneShPtr();
}

bool ClumScene::containsSubScene(const ClumSceneShPtr& i_scene) const
{
  return std::any_of(m_subScenes.begin(), m_subScenes.end(),
                     [&](const ClumSceneShPtr& scene) { return scene == i_scene || scene->containsSubScene(i_scene); });
}

ClumSceneShPtr ClumScene::rootScene() const
{
  ClumSceneShPtr root = self();
  while (const ClumSceneShPtr above = root->parent())
    root = above;
  return root;
}

lmStatus ClumScene::addObjectGeometryCollection(const ClumObjectShPtr& i_object, const std::string& i_collection,
                                                ClumGeometryShPtr& o_geometry, const std::string& i_framesCollection)
{
  const ClumCollectionAdapterGeometryShPtr adapter =
    ClumCollectionAdapterGeometry::create(i_object, i_collection, i_framesCollection);
  if (!adapter)
    return COLLECTION_NOT_FOUND_ERROR;
  const lmStatus status = addGeometry(adapter);
  if (status.succeeded())
    o_geometry = adapter;
  return status;
}

lmStatus ClumScene::removeObjectGeometryCollection(const ClumObjectShPtr& i_object, const std::string& i_collection)
{
  for (const ClumGeometryShPtr& geometry : m_geometries)
  {
    const auto adapter = boost::dynamic_pointer_cast<ClumCollectionAdapterGeometry>(geometry);
    if (adapter && adapter->object() == i_object && adapter->collectionName() == i_collection)
      return removeGeometry(adapter);
  }
  return COLLECTION_NOT_FOUND_ERROR;
}

// Tests.

ClumScene::TPairKey ClumScene::pairKey(const ClumGeometryShPtr& i_first, const ClumGeometryShPtr& i_second)
{
  return std::minmax(i_first.get(), i_second.get(), std::less<const ClumGeometry*>());
}

ClumScene::CTestPair* ClumScene::findTest(const ClumGeometryShPtr& i_first, const ClumGeometryShPtr& i_second,
                                          ClumScene*& o_scene)
{
  const auto found = m_testRanks.find(pairKey(i_first, i_second));
  if (found != m_testRanks.end())
  {
    o_scene = this;
    return &m_tests[found->second];
  }
  for (const ClumSceneShPtr& scene : m_subScenes)
    if (CTestPair* test = scene->findTest(i_first, i_second, o_scene))
      return test;
  return nullptr;
}

const ClumScene::CTestPair* ClumScene::findTest(const ClumGeometryShPtr& i_first,
                                                const ClumGeometryShPtr& i_second) const
{
  ClumScene* owner = nullptr;
  return const_cast<ClumScene*>(this)->findTest(i_first, i_second, owner);
}

lmStatus ClumScene::canTest(const ClumGeometryShPtr& i_first, const ClumGeometryShPtr& i_second,
                            EAddTestBehaviour i_behaviour) const
{
  if (!i_first || !i_second)
    return NULL_GEOMETRY_ERROR;
  if (i_first == i_second)
    return SAME_GEOMETRY_ERROR;
  if (!doesContainGeometry(i_first) || !doesContainGeometry(i_second))
    return GEOMETRY_NOT_IN_SCENE_ERROR;
  if (i_behaviour == REFUSE_EXISTING_TEST && findTest(i_first, i_second))
    return TEST_ALREADY_EXISTS_ERROR;
  return lmStatus();
}

void ClumScene::storeTest(const ClumGeometryShPtr& i_first, const ClumGeometryShPtr& i_second,
                          EAddTestBehaviour i_behaviour, const ClumTestParametersShPtr& i_parameters)
{
  ClumScene* owner = nullptr;
  CTestPair* existing = findTest(i_first, i_second, owner);
  if (existing)
  {
    if (i_behaviour == REPLACE_EXISTING_TEST)
      existing->parameters = i_parameters;
    owner->m_stamp = lumNextStamp();
    return;
  }
  m_testRanks[pairKey(i_first, i_second)] = m_tests.size();
  m_tests.push_back({i_first, i_second, i_parameters});
}

lmStatus ClumScene::addTestParameters(const ClumGeometryShPtr& i_first, const ClumGeometryShPtr& i_second,
                                      EAddTestBehaviour i_behaviour, const ClumTestParametersShPtr& i_parameters)
{
  return addTestParameters(std::vector<ClumGeometryShPtr>{i_first}, std::vector<ClumGeometryShPtr>{i_second},
                           i_behaviour, i_parameters);
}

lmStatus ClumScene::addTestParameters(const std::vector<ClumGeometryShPtr>& i_first,
                                      const std::vector<ClumGeometryShPtr>& i_second, EAddTestBehaviour i_behaviour,
                                      const ClumTestParametersShPtr& i_parameters)
{
  for (const ClumGeometryShPtr& first : i_first)
    for (const ClumGeometryShPtr& second : i_second)
    {
      const lmStatus status = canTest(first, second, i_behaviour);
      if (status.failed())
        return status;
    }
  if (i_first.empty() || i_second.empty())
    return lmStatus();
  const ClumTestParametersShPtr parameters = i_parameters ? i_parameters : ClumTestParameters::create();
  for (const ClumGeometryShPtr& first : i_first)
    for (const ClumGeometryShPtr& second : i_second)
      storeTest(first, second, i_behaviour, parameters);
  testListDidChange();
  return lmStatus();
}

lmStatus ClumScene::setTestParameters(const ClumGeometryShPtr& i_first, const ClumGeometryShPtr& i_second,
                                      const ClumTestParametersShPtr& i_parameters)
{
  if (!i_parameters)
    return NULL_PARAMETERS_ERROR;
  ClumScene* owner = nullptr;
  CTestPair* test = findTest(i_first, i_second, owner);
  if (!test)
    return TEST_NOT_FOUND_ERROR;
  if (test->parameters == i_parameters)
    return lmStatus();
  test->parameters = i_parameters;
  owner->testListDidChange();
  return lmStatus();
}

template <class PREDICATE>
bool ClumScene::removeTestsHere(PREDICATE i_predicate)
{
  const auto end = std::remove_if(m_tests.begin(), m_tests.end(), i_predicate);
  if (end == m_tests.end())
    return false;
  m_tests.erase(end, m_tests.end());
  reindexTests();
  testListDidChange();
  return true;
}

void ClumScene::reindexTests()
{
  m_testRanks.clear();
  for (std::size_t i = 0; i < m_tests.size(); ++i)
    m_testRanks[pairKey(m_tests[i].first, m_tests[i].second)] = i;
}

lmStatus ClumScene::removeTestParameters(const ClumGeometryShPtr& i_first, const ClumGeometryShPtr& i_second)
{
  ClumScene* owner = nullptr;
  if (!findTest(i_first, i_second, owner))
    return TEST_NOT_FOUND_ERROR;
  const TPairKey key = pairKey(i_first, i_second);
  owner->removeTestsHere([&](const CTestPair& test) { return pairKey(test.first, test.second) == key; });
  return lmStatus();
}

ClumTestParametersShPtr ClumScene::testParameters(const ClumGeometryShPtr& i_first,
                                                  const ClumGeometryShPtr& i_second) const
{
  const CTestPair* test = findTest(i_first, i_second);
  return test ? test->parameters : ClumTestParametersShPtr();
}

bool ClumScene::removeTestsBelow(const ClumGeometry& i_geometry)
{
  bool isAny = removeTestsHere([&](const CTestPair& test)
                               { return test.first.get() == &i_geometry || test.second.get() == &i_geometry; });
  for (const ClumSceneShPtr& scene : m_subScenes)
    isAny = scene->removeTestsBelow(i_geometry) || isAny;
  return isAny;
}

lmStatus ClumScene::removeTestsIncludingGeometry(const ClumGeometryShPtr& i_geometry)
{
  if (!i_geometry)
    return NULL_GEOMETRY_ERROR;
  if (!doesContainGeometry(i_geometry))
    return GEOMETRY_NOT_IN_SCENE_ERROR;
  removeTestsBelow(*i_geometry);
  return lmStatus();
}

void ClumScene::appendTestsWith(const ClumGeometryShPtr& i_geometry, std::vector<CTestPair>& io_tests) const
{
  for (const CTestPair& test : m_tests)
    if (test.first == i_geometry || test.second == i_geometry)
      io_tests.push_back(test);
  for (const ClumSceneShPtr& scene : m_subScenes)
    scene->appendTestsWith(i_geometry, io_tests);
}

lmStatus ClumScene::copyTestFromGeometry(const ClumGeometryShPtr& i_from, const ClumGeometryShPtr& i_to)
{
  if (!i_from || !i_to)
    return NULL_GEOMETRY_ERROR;
  if (!doesContainGeometry(i_from) || !doesContainGeometry(i_to))
    return GEOMETRY_NOT_IN_SCENE_ERROR;
  std::vector<CTestPair> tests;
  appendTestsWith(i_from, tests);
  bool isAny = false;
  for (const CTestPair& test : tests)
  {
    const ClumGeometryShPtr first = test.first == i_from ? i_to : test.first;
    const ClumGeometryShPtr second = test.second == i_from ? i_to : test.second;
    if (first == second || findTest(first, second))
      continue;
    storeTest(first, second, KEEP_EXISTING_TEST, test.parameters);
    isAny = true;
  }
  if (isAny)
    testListDidChange();
  return lmStatus();
}

bool ClumScene::haveSameConfiguration(const ClumGeometryShPtr& i_first, const ClumGeometryShPtr& i_second) const
{
  std::vector<CTestPair> ofFirst, ofSecond;
  appendTestsWith(i_first, ofFirst);
  appendTestsWith(i_second, ofSecond);
  const auto hasPartnersOf =
    [&](const std::vector<CTestPair>& tests, const ClumGeometryShPtr& self, const ClumGeometryShPtr& other)
  {
    return std::all_of(tests.begin(), tests.end(),
                       [&](const CTestPair& test)
                       {
                         const ClumGeometryShPtr& partner = test.first == self ? test.second : test.first;
                         if (partner == other)
                           return true;
                         const CTestPair* same = findTest(other, partner);
                         return same && same->parameters->hasSameValues(*test.parameters);
                       });
  };
  return hasPartnersOf(ofFirst, i_first, i_second) && hasPartnersOf(ofSecond, i_second, i_first);
}

unsigned int ClumScene::countTests() const
{
  std::size_t count = m_tests.size();
  for (const ClumSceneShPtr& scene : m_subScenes)
    count += scene->countTests();
  return static_cast<unsigned int>(count);
}

void ClumScene::appendActivePairs(std::vector<CTestPair>& io_pairs) const
{
  for (const CTestPair& test : m_tests)
    if (test.parameters->activation())
      io_pairs.push_back(test);
  for (const ClumSceneShPtr& scene : m_subScenes)
    scene->appendActivePairs(io_pairs);
}

const std::vector<ClumScene::CTestPair>& ClumScene::testPairs() const
{
  const std::uint64_t current = version();
  if (current != m_pairsVersion)
  {
    m_pairs.clear();
    appendActivePairs(m_pairs);
    m_pairsVersion = current;
  }
  return m_pairs;
}

std::uint64_t ClumScene::version() const
{
  // Whatever counts has a stamp: as long as none was given, the sum of it all stands.
  const std::uint64_t now = lumLatestStamp();
  if (now == m_versionCheck)
    return m_version;
  std::uint64_t latest = m_stamp;
  for (const ClumGeometryShPtr& geometry : m_geometries)
    latest = std::max(latest, geometry->stamp());
  for (const CTestPair& test : m_tests)
    latest = std::max(latest, test.parameters->stamp());
  for (const ClumSceneShPtr& scene : m_subScenes)
    latest = std::max(latest, scene->version());
  m_version = latest;
  m_versionCheck = now;
  return latest;
}

void ClumScene::contentsDidChange()
{
  m_stamp = lumNextStamp();
}

void ClumScene::testListDidChange()
{
  m_stamp = lumNextStamp();
  notify(TEST_LIST_DID_CHANGE);
  if (const ClumSceneShPtr above = parent())
    above->testListDidChange();
}

// Contents.

bool ClumScene::doesContainGeometry(const ClumGeometryShPtr& i_geometry) const
{
  bool isFound = false;
  forEachGeometry([&](const ClumGeometryShPtr& geometry) { isFound = isFound || geometry == i_geometry; });
  return isFound;
}

bool ClumScene::doesContainGeometries(const std::vector<ClumGeometryShPtr>& i_geometries) const
{
  return std::all_of(i_geometries.begin(), i_geometries.end(),
                     [&](const ClumGeometryShPtr& geometry) { return doesContainGeometry(geometry); });
}

bool ClumScene::doesContainGeometryOrParent(const ClumGeometryShPtr& i_geometry) const
{
  return static_cast<bool>(getSceneItem(i_geometry));
}

ClumGeometryShPtr ClumScene::getSceneItem(const ClumGeometryShPtr& i_geometry) const
{
  ClumGeometryShPtr found;
  if (!i_geometry)
    return found;
  if (doesContainGeometry(i_geometry))
    return i_geometry;
  forEachGeometry(
    [&](const ClumGeometryShPtr& geometry)
    {
      if (!found && geometry->contains(*i_geometry))
        found = geometry;
    });
  return found;
}

// Extraction.

lmStatus ClumScene::extractGeometry(const ClumGeometryShPtr& i_geometry)
{
  if (!i_geometry)
    return NULL_GEOMETRY_ERROR;
  for (const ClumGeometryShPtr& geometry : m_geometries)
  {
    const auto adapter = boost::dynamic_pointer_cast<ClumCollectionAdapterGeometry>(geometry);
    if (!adapter || !adapter->extract(i_geometry))
      continue;
    const ClumGeometryShPtr extractor = ClumSceneExtractorGeometry::create(i_geometry, adapter);
    LUM_ASSERT_SUCCESS(addGeometry(extractor));
    return rootScene()->copyTestFromGeometry(adapter, extractor);
  }
  return GEOMETRY_NOT_EXTRACTABLE_ERROR;
}

lmStatus ClumScene::reintegrateGeometry(const ClumGeometryShPtr& i_geometry)
{
  const ClumGeometryShPtr extractor = geometryExtractor(i_geometry);
  if (!extractor)
    return GEOMETRY_NOT_EXTRACTABLE_ERROR;
  const lmStatus status = removeGeometry(extractor);
  if (status.failed())
    return status;
  const auto adapter = boost::static_pointer_cast<ClumSceneExtractorGeometry>(extractor)->adapter();
  if (adapter)
    adapter->reintegrate(i_geometry);
  return status;
}

ClumGeometryShPtr ClumScene::geometryExtractor(const ClumGeometryShPtr& i_geometry) const
{
  ClumGeometryShPtr found;
  forEachGeometry(
    [&](const ClumGeometryShPtr& geometry)
    {
      const auto extractor = boost::dynamic_pointer_cast<ClumSceneExtractorGeometry>(geometry);
      if (i_geometry && extractor && extractor->extracted() == i_geometry)
        found = geometry;
    });
  return found;
}

ClumGeometryShPtr ClumScene::testableGeometry(const ClumGeometryShPtr& i_geometry) const
{
  const ClumGeometryShPtr extractor = geometryExtractor(i_geometry);
  return extractor ? extractor : getSceneItem(i_geometry);
}

void ClumScene::buildTestableGeometryList(std::vector<ClumGeometryShPtr>& o_geometries) const
{
  o_geometries.clear();
  forEachGeometry([&](const ClumGeometryShPtr& geometry) { o_geometries.push_back(geometry); });
}

ClumScene::TGeometryIterator ClumScene::beginAllTestableGeometries() const
{
  buildTestableGeometryList(m_testableGeometries);
  return m_testableGeometries.begin();
}

// Coding.

void ClumScene::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  ClumMutableCodable::encodeWithCoder(i_coder);
  i_coder->encodeObjects(m_geometries, "geometries");
  i_coder->encodeObjects(m_subScenes, "subScenes");
  i_coder->encodeWeakObjectWkPtr(m_parent, "parent");
  i_coder->beginVectorEncoding("tests");
  for (const CTestPair& test : m_tests)
  {
    i_coder->encodeObjectShPtr(test.first, "first");
    i_coder->encodeObjectShPtr(test.second, "second");
    i_coder->encodeObjectShPtr(test.parameters, "parameters");
  }
  i_coder->endVectorEncoding();
}

lmStatus ClumScene::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = ClumMutableCodable::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  i_coder->decodeObjects("geometries", m_geometries);
  i_coder->decodeParts("subScenes", m_subScenes);
  m_parent = i_coder->decodeWeak<ClumScene>("parent");
  if (isBelowItself())
  {
    m_parent.reset();
    return SCENE_CYCLE_ERROR;
  }
  i_coder->beginVectorDecoding("tests");
  while (i_coder->canContinueVectorDecoding())
  {
    CTestPair test;
    test.first = i_coder->decode<ClumGeometry>("first");
    test.second = i_coder->decode<ClumGeometry>("second");
    test.parameters = i_coder->decode<ClumTestParameters>("parameters");
    if (test.first && test.second && test.parameters)
      m_tests.push_back(test);
  }
  i_coder->endVectorDecoding();
  const auto dropNull = [](auto& list) { list.erase(std::remove(list.begin(), list.end(), nullptr), list.end()); };
  dropNull(m_geometries);
  dropNull(m_subScenes);
  reindexTests();
  return status;
}

bool ClumScene::isBelowItself() const
{
  ClumSceneShPtr above = m_parent.lock();
  while (above && above.get() != this)
    above = above->m_parent.lock();
  return static_cast<bool>(above);
}

void ClumScene::awake()
{
  ClumMutableCodable::awake();
  contentsDidChange();
}
