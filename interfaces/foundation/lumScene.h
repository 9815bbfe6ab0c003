#pragma once

#include "foundation/lumCodable.h"

#include <cstdint>
#include <map>
#include <set>
#include <utility>
#include <vector>

/// The geometries that are tested against each other, and the pairs to be tested, each with its parameters.
///
/// A scene is a tree: the geometries and tests of its sub-scenes count as its own in every query, after its own. A
/// geometry stands once in a tree of scenes. A test stands in the scene in which it was added, and goes with either of
/// its geometries; a pair has one test, asked in either order, and the order in which it was added decides which side
/// is first.
///
/// `version` is a stamp that moves with the geometries, what they consist of, the tests and their parameters, but not
/// with positions. TEST_LIST_DID_CHANGE is sent, by this scene and those above it, when tests come, go or get other
/// parameters.
class LUM_API ClumScene : public ClumMutableCodable
{
  LUM_CONCRETE(ClumScene, ClumMutableCodable);

public:
  /// What to do where the pair already has a test.
  enum EAddTestBehaviour
  {
    REPLACE_EXISTING_TEST,
    KEEP_EXISTING_TEST,
    REFUSE_EXISTING_TEST
  };

  /// A pair to be tested.
  struct CTestPair
  {
    ClumGeometryShPtr first;
    ClumGeometryShPtr second;
    ClumTestParametersShPtr parameters;
  };
  using TGeometryIterator = std::vector<ClumGeometryShPtr>::const_iterator;

  static const unsigned int TEST_LIST_DID_CHANGE;
  static const unsigned int NULL_GEOMETRY_ERROR;
  static const unsigned int GEOMETRY_ALREADY_IN_SCENE_ERROR;
  static const unsigned int GEOMETRY_NOT_IN_SCENE_ERROR;
  static const unsigned int NULL_SCENE_ERROR;
  static const unsigned int SCENE_ALREADY_HAS_PARENT_ERROR;
  static const unsigned int SCENE_CYCLE_ERROR;
  static const unsigned int SUB_SCENE_NOT_FOUND_ERROR;
  static const unsigned int COLLECTION_NOT_FOUND_ERROR;
  static const unsigned int SAME_GEOMETRY_ERROR;
  static const unsigned int TEST_ALREADY_EXISTS_ERROR;
  static const unsigned int TEST_NOT_FOUND_ERROR;
  static const unsigned int NULL_PARAMETERS_ERROR;
  static const unsigned int GEOMETRY_NOT_EXTRACTABLE_ERROR;

  ~ClumScene() override;
  static ClumSceneShPtr create();

  // Geometries. Those of the sub-scenes follow the scene's own, sub-scene by sub-scene.
  lmStatus addGeometry(const ClumGeometryShPtr& i_geometry);
  /// Removes an own geometry, with its tests in the whole tree.
  lmStatus removeGeometry(const ClumGeometryShPtr& i_geometry);
  void clearOwnGeometries();
  unsigned int countGeometries() const;
  unsigned int countOwnGeometries() const { return static_cast<unsigned int>(m_geometries.size()); }
  /// @return null beyond the last.
  ClumGeometryShPtr geometry(unsigned int i_rank) const;
  ClumGeometryShPtr ownGeometry(unsigned int i_rank) const;
  /// Adds all geometries of the scene; with `i_recursive` their members at every depth too.
  void fillGeometrySet(std::set<ClumGeometryShPtr>& io_set, bool i_recursive = false) const;

  // The tree of scenes. A scene holds its sub-scenes; a sub-scene knows its parent weakly.
  lmStatus addSubScene(const ClumSceneShPtr& i_scene);
  /// The tests of this scene and of those above it that include geometries of the sub-scene go.
  lmStatus removeSubScene(const ClumSceneShPtr& i_scene);
  unsigned int countSubScenes() const { return static_cast<unsigned int>(m_subScenes.size()); }
  ClumSceneShPtr subScene(unsigned int i_rank) const;
  /// True if the scene stands somewhere below this one.
  bool containsSubScene(const ClumSceneShPtr& i_scene) const;
  ClumSceneShPtr parent() const { return m_parent.lock(); }
  /// The top of the tree; this scene if it has no parent.
  ClumSceneShPtr rootScene() const;

  /// Adds a live view on a reflected geometry collection of the object as one geometry.
  /// @param o_geometry the view, a `ClumCollectionAdapterGeometry`.
  /// @param i_framesCollection a reflected collection of the members' frames relative to the view, or an empty text if
  ///                           the members' own positions count.
  lmStatus addObjectGeometryCollection(const ClumObjectShPtr& i_object, const std::string& i_collection,
                                       ClumGeometryShPtr& o_geometry,
                                       const std::string& i_framesCollection = std::string());
  lmStatus removeObjectGeometryCollection(const ClumObjectShPtr& i_object, const std::string& i_collection);

  // Tests. A failed call changes nothing. Null parameters stand for fresh ones of default values.
  lmStatus addTestParameters(const ClumGeometryShPtr& i_first, const ClumGeometryShPtr& i_second,
                             EAddTestBehaviour i_behaviour,
                             const ClumTestParametersShPtr& i_parameters = ClumTestParametersShPtr());
  /// All pairs of one of the first with one of the second.
  lmStatus addTestParameters(const std::vector<ClumGeometryShPtr>& i_first,
                             const std::vector<ClumGeometryShPtr>& i_second, EAddTestBehaviour i_behaviour,
                             const ClumTestParametersShPtr& i_parameters = ClumTestParametersShPtr());
  /// Gives an existing test other parameters.
  lmStatus setTestParameters(const ClumGeometryShPtr& i_first, const ClumGeometryShPtr& i_second,
                             const ClumTestParametersShPtr& i_parameters);
  lmStatus removeTestParameters(const ClumGeometryShPtr& i_first, const ClumGeometryShPtr& i_second);
  /// @return null if the pair has no test here or below.
  ClumTestParametersShPtr testParameters(const ClumGeometryShPtr& i_first, const ClumGeometryShPtr& i_second) const;
  lmStatus removeTestsIncludingGeometry(const ClumGeometryShPtr& i_geometry);
  /// Gives `i_to` the tests that `i_from` has, with the same parameter objects. Existing tests of `i_to` stay.
  lmStatus copyTestFromGeometry(const ClumGeometryShPtr& i_from, const ClumGeometryShPtr& i_to);
  /// True if both have tests with the same others, with parameters of equal values.
  bool haveSameConfiguration(const ClumGeometryShPtr& i_first, const ClumGeometryShPtr& i_second) const;
  unsigned int countTests() const;

  /// The pairs with active parameters, in the order of addition, sub-scenes last. Valid until the version moves.
  const std::vector<CTestPair>& testPairs() const;
  std::uint64_t version() const;

  // Contents.
  bool doesContainGeometry(const ClumGeometryShPtr& i_geometry) const;
  bool doesContainGeometries(const std::vector<ClumGeometryShPtr>& i_geometries) const;
  /// True if the geometry, or a group that it is in, is in the scene.
  bool doesContainGeometryOrParent(const ClumGeometryShPtr& i_geometry) const;
  /// @return the geometry of the scene that is the given one or contains it; null if none does.
  ClumGeometryShPtr getSceneItem(const ClumGeometryShPtr& i_geometry) const;
  TGeometryIterator beginSceneItems() const { return m_geometries.begin(); }
  TGeometryIterator endSceneItems() const { return m_geometries.end(); }

  // A member of a collection adapter can be split out, to be tested alone, and put back.
  /// From now on the adapter is tested without the member; an extractor stands in the scene for it, with the adapter's
  /// tests. @return GEOMETRY_NOT_EXTRACTABLE_ERROR if it is no direct member of an own adapter.
  lmStatus extractGeometry(const ClumGeometryShPtr& i_geometry);
  /// Puts it back in its adapter; the tests of its extractor go.
  lmStatus reintegrateGeometry(const ClumGeometryShPtr& i_geometry);
  /// What stands for the geometry in tests: its extractor, itself, or the group that contains it; null if nothing does.
  ClumGeometryShPtr testableGeometry(const ClumGeometryShPtr& i_geometry) const;
  /// @return null if the geometry is not extracted.
  ClumGeometryShPtr geometryExtractor(const ClumGeometryShPtr& i_geometry) const;
  /// All geometries of this scene and of those below that tests can name.
  void buildTestableGeometryList(std::vector<ClumGeometryShPtr>& o_geometries) const;
  /// The same list, kept until the next call of `beginAllTestableGeometries`.
  TGeometryIterator beginAllTestableGeometries() const;
  TGeometryIterator endAllTestableGeometries() const { return m_testableGeometries.end(); }

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;
  void awake() override;

protected:
  ClumScene();
  ClumScene(const ClumScene&) = delete;
  lmStatus init(const ClumSceneWkPtr& i_weakPtr);

private:
  using TPairKey = std::pair<const ClumGeometry*, const ClumGeometry*>;

  static TPairKey pairKey(const ClumGeometryShPtr& i_first, const ClumGeometryShPtr& i_second);
  lmStatus canTest(const ClumGeometryShPtr& i_first, const ClumGeometryShPtr& i_second,
                   EAddTestBehaviour i_behaviour) const;
  void storeTest(const ClumGeometryShPtr& i_first, const ClumGeometryShPtr& i_second, EAddTestBehaviour i_behaviour,
                 const ClumTestParametersShPtr& i_parameters);
  CTestPair* findTest(const ClumGeometryShPtr& i_first, const ClumGeometryShPtr& i_second, ClumScene*& o_scene);
  const CTestPair* findTest(const ClumGeometryShPtr& i_first, const ClumGeometryShPtr& i_second) const;
  template <class PREDICATE>
  bool removeTestsHere(PREDICATE i_predicate);
  bool removeTestsBelow(const ClumGeometry& i_geometry);
  void appendTestsWith(const ClumGeometryShPtr& i_geometry, std::vector<CTestPair>& io_tests) const;
  void appendActivePairs(std::vector<CTestPair>& io_pairs) const;
  void reindexTests();
  void removeOwn(std::size_t i_rank);
  void contentsDidChange();
  bool isBelowItself() const;
  void testListDidChange();
  template <class FUNCTION>
  void forEachGeometry(FUNCTION i_function) const;

  std::vector<ClumGeometryShPtr> m_geometries;
  std::vector<ClumSceneShPtr> m_subScenes;
  ClumSceneWkPtr m_parent;
  std::vector<CTestPair> m_tests;
  std::map<TPairKey, std::size_t> m_testRanks; ///< for look-up only: its order is that of addresses
  std::uint64_t m_stamp;
  mutable std::uint64_t m_version = 0;
  mutable std::uint64_t m_versionCheck = 0; ///< the latest stamp of all when `m_version` was found
  mutable std::uint64_t m_pairsVersion = 0;
  mutable std::vector<CTestPair> m_pairs;
  mutable std::vector<ClumGeometryShPtr> m_testableGeometries;
};
