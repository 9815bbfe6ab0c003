#pragma once

#include "constraints/handles.h"
#include "foundation/lumCodable.h"
#include "kinematics/handles.h"
#include "metrics/handles.h"
#include "paths/handles.h"
#include "validation/handles.h"

#include <deque>
#include <map>
#include <string>
#include <unordered_map>
#include <vector>

/// A tree of sub-spaces whose leaves are degrees of freedom (`CorvDof`).
///
/// The spaces of joints and devices, the composites that a client puts together and the void space are all of this
/// family. A space owns what planning needs on it: a metric, a steering method and four stacks of validator sets, the
/// top of each being the one in force. It shows its leaves as one flat list, in depth-first order; a dof's place in
/// that list is its rank.
///
/// Every change in the tree or in what judges it raises `version()` here and in every enclosing space. A space
/// remembers the dofs of each version that was ever read, so that a configuration of an old version can convert
/// itself. All caches are lazy and filled by const calls: bring a space up to date (`version()`, `size()`) before
/// several threads read it.
///
/// A device has an internal space and, for its clients, a wrapper around it. Both stand for the same dofs:
/// `unwrapped()` leads from the wrapper to the internal space, and inclusion and ranks do not tell the two apart.
class LUM_API CorvConfigSpace : public ClumMutableCodable
{
  LUM_CONCRETE(CorvConfigSpace, ClumMutableCodable);

public:
  using TSpaces = std::vector<CorvConfigSpaceShPtr>;

  ~CorvConfigSpace() override;
  /// A deep copy by coding, with the sub-spaces that this space owns.
  static CorvConfigSpaceShPtr createCopy(const CorvConfigSpaceConstShPtr& i_objectToCopy);
  CorvConfigSpaceShPtr clone() const;

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

  /// The number of dofs.
  virtual unsigned int size() const;
  /// @return null, with a log entry, for a rank out of range.
  virtual CorvDofShPtr dof(unsigned int i_rank) const;
  virtual lmStatus getDofs(std::vector<CorvDofShPtr>& o_dofs) const;

  virtual lmStatus insertSubspace(const CorvConfigSpaceShPtr& i_subspace, unsigned int i_rank);
  /// @return null for a rank out of range.
  virtual CorvConfigSpaceShPtr subspace(unsigned int i_rank) const;
  /// The number of direct sub-spaces.
  virtual unsigned int countSubspaces() const;
  virtual lmStatus removeSubspace(unsigned int i_rank);

  virtual void steeringMethod(const CorvSteeringMethodShPtr& i_steeringMethod);
  virtual const CorvSteeringMethodShPtr& steeringMethod() const;

  /// Same type, equal metrics and steering methods, equal validator sets in force. Sub-spaces are not compared.
  virtual bool operator==(const CorvConfigSpace& i_other) const;
  bool operator!=(const CorvConfigSpace& i_other) const { return !(*this == i_other); }

protected:
  virtual const CorvValidatorSetShPtr& spaceConstraints() const;
  virtual const CorvValidatorSetShPtr& spaceConfigValidators() const;
  virtual const CorvValidatorSetShPtr& spaceDirectPathValidators() const;
  virtual const CorvValidatorSetShPtr& spacePathValidators() const;
  virtual const CorvMetricShPtr& spaceMetric() const;
  virtual void spaceMetric(const CorvMetricShPtr& i_metric);
  /// Called before the configuration validators are given out or flattened: the place to add a validator on demand.
  virtual void willReturnConfigValidators(const CorvValidatorSetShPtr& i_set) const;

public:
  /// A new empty set for one of the stacks.
  virtual CorvValidatorSetShPtr makeValidatorSet() const;
  /// Raises the version and drops the caches, here and in every enclosing space and group.
  virtual void invalidateCache();

  const std::string& type() const { return m_type; }

  /// The space for which this one stands: a device's internal space for its wrapper, otherwise this very space.
  const CorvConfigSpace& unwrapped() const { return m_wrapped ? *m_wrapped : *this; }

  const CorvMetricShPtr& metric() const { return spaceMetric(); }
  void metric(const CorvMetricShPtr& i_metric) { spaceMetric(i_metric); }

  /// The sets in force: the tops of the four stacks. The reference holds until the stack is popped.
  const CorvValidatorSetShPtr& constraints() const { return spaceConstraints(); }
  const CorvValidatorSetShPtr& configValidators() const;
  const CorvValidatorSetShPtr& directPathValidators() const { return spaceDirectPathValidators(); }
  const CorvValidatorSetShPtr& pathValidators() const { return spacePathValidators(); }

  /// Puts a set with the members of the top one on the stack; the members are shared.
  lmStatus pushConstraints();
  lmStatus pushConfigValidators();
  lmStatus pushDirectPathValidators();
  lmStatus pushPathValidators();
  /// Puts the given set on the stack. @return -1 for null.
  lmStatus pushConstraints(const CorvValidatorSetShPtr& i_set);
  lmStatus pushConfigValidators(const CorvValidatorSetShPtr& i_set);
  lmStatus pushDirectPathValidators(const CorvValidatorSetShPtr& i_set);
  lmStatus pushPathValidators(const CorvValidatorSetShPtr& i_set);
  /// @return -1 if only one set is left, which then stays.
  lmStatus popConstraints();
  lmStatus popConfigValidators();
  lmStatus popDirectPathValidators();
  lmStatus popPathValidators();

  /// The number of the present state of the tree. Reading it records the dofs of that state.
  unsigned int version() const { return m_isVersionRecorded ? m_version : recordVersion(); }
  /// @return -1 if that version was never read.
  lmStatus getDofsAtVersion(unsigned int i_version, std::vector<CorvDofWkPtr>& o_dofs) const;
  /// True if both versions were read and had the same dofs in the same order.
  bool hasSameDofsAtVersions(unsigned int i_a, unsigned int i_b) const;

  CorvConfigSpaceShPtr parent() const { return m_parent.lock(); }
  void parent(const CorvConfigSpaceShPtr& i_parent);
  /// The topmost enclosing space, or this one.
  CorvConfigSpaceShPtr root() const;
  CorvDeviceShPtr device() const { return m_device.lock(); }
  void device(const CorvDeviceShPtr& i_device);
  CorvJointShPtr joint() const { return m_joint.lock(); }
  void joint(const CorvJointShPtr& i_joint);

  lmStatus appendSubspace(const CorvConfigSpaceShPtr& i_subspace);
  lmStatus removeSubspace(const CorvConfigSpaceShPtr& i_subspace);
  /// Removes all sub-spaces, stopping at the first that cannot be removed.
  lmStatus clear();

  /// True for this very space and for what lies in it, however deep. Identity, not equality.
  bool includes(const CorvConfigSpace& i_space) const;
  bool includes(const CorvConfigSpaceConstShPtr& i_space) const;

  /// The rank among the direct sub-spaces. @return -1 if it is none of them.
  lmStatus getRankOfSubspace(const CorvConfigSpaceConstShPtr& i_subspace, unsigned int& o_rank) const;
  /// The rank of the first dof of a space that lies in this one, however deep, or is this one (0). @return -1 if
  /// absent.
  lmStatus getFirstDofRankOfSubspace(const CorvConfigSpace& i_subspace, unsigned int& o_rank) const;
  lmStatus getFirstDofRankOfSubspace(const CorvConfigSpaceConstShPtr& i_subspace, unsigned int& o_rank) const;
  lmStatus getFirstDofRankOfSubspace(unsigned int i_subspaceRank, unsigned int& o_rank) const;

  /// A position is the list of child ranks from this space down to a space in it; empty for this space.
  lmStatus getPositionOfSubspace(const CorvConfigSpaceConstShPtr& i_subspace,
                                 std::vector<unsigned int>& o_position) const;
  /// Appends the position. @return -1 if absent, the list as it was.
  lmStatus fillPositionOfSubspace(const CorvConfigSpace& i_subspace, std::vector<unsigned int>& io_position) const;
  /// @return null if the position leads nowhere.
  CorvConfigSpaceShPtr getSubspaceAtPosition(const std::vector<unsigned int>& i_position) const;

  /// A dof is computed if a constraint in force writes it, passive if that constraint does not read it too, active if
  /// it is not passive, free if it is neither passive nor computed.
  bool isDofPassive(unsigned int i_rank) const { return hasDofFlag(i_rank, PASSIVE); }
  bool isDofComputed(unsigned int i_rank) const { return hasDofFlag(i_rank, COMPUTED); }
  bool isDofActive(unsigned int i_rank) const { return i_rank < size() && !isDofPassive(i_rank); }
  bool isDofFree(unsigned int i_rank) const { return isDofActive(i_rank) && !isDofComputed(i_rank); }
  /// True for a revolute dof without bounds, whose values are equal modulo a full turn.
  bool isDofCircular(unsigned int i_rank) const { return hasDofFlag(i_rank, CIRCULAR); }
  bool hasPassiveDofs() const { return (allDofFlags() & PASSIVE) != 0; }
  bool hasComputedDofs() const { return (allDofFlags() & COMPUTED) != 0; }
  unsigned int countActiveDofs() const;
  unsigned int countPassiveDofs() const;
  unsigned int countComputedDofs() const;
  unsigned int countFreeDofs() const;
  void getPassiveDofs(std::vector<bool>& o_passive) const;
  /// True if every dof is passive, or locked.
  bool isFullyPassive() const;
  bool isFullyLocked() const;
  /// The same for the dofs of a space that lies in this one; false if it does not.
  bool isSubspaceFullyPassive(const CorvConfigSpaceConstShPtr& i_subspace) const;
  /// True if all dofs of the sub-space are locked, or computed from locked dofs alone.
  bool isSubspaceTransitivelyLocked(const CorvConfigSpaceConstShPtr& i_subspace) const;
  /// The dofs that are locked or computed from locked dofs alone, and the constraints that do so.
  void getTransitivelyLockedSubspaces(TSpaces& o_subspaces) const;
  void getTransitivelyLockedSubspacesAndAssociatedConstraints(TSpaces& o_subspaces,
                                                              std::vector<CorvConstraintShPtr>& o_constraints) const;

  /// Algebra on lists of spaces, each taken for the set of its dofs. A space whose dofs are needed only in part is
  /// replaced by those of its sub-spaces that make up the part.
  static void merge(TSpaces& io_spaces, const CorvConfigSpaceShPtr& i_space);
  static void merge(TSpaces& io_spaces, const TSpaces& i_others);
  static void intersect(const TSpaces& i_a, const TSpaces& i_b, TSpaces& o_common);
  static bool intersect(const TSpaces& i_a, const TSpaces& i_b);
  static void subtract(TSpaces& io_spaces, const TSpaces& i_removed);
  /// The same; what is taken away is merged into `io_cumulated`.
  static void subtractAndCumulate(TSpaces& io_spaces, const TSpaces& i_removed, TSpaces& io_cumulated);
  bool intersects(const TSpaces& i_spaces) const;
  bool isFullyIncludedIn(const TSpaces& i_spaces) const;

  /// The spaces whose values decide those of this space: what its constraints do not compute, and what they read.
  void getControllingSpaces(TSpaces& o_spaces) const;
  void getControllingSpacesOfSubspaces(const TSpaces& i_subspaces, TSpaces& o_spaces) const;

  /// True if each dof is locked, bounded or revolute.
  bool hasFiniteSize() const;
  bool isSteeringConservative() const;
  bool isSteeringOriented() const;

  /// The constraints in force, composites taken apart, in an order in which each comes after those it depends on.
  lmStatus getSortedFlatConstraints(std::vector<CorvConstraintShPtr>& o_constraints) const;
  /// True if the constraint belongs to this space and leaves the dependencies free of cycles.
  bool canAddActiveConstraint(const CorvConstraintShPtr& i_constraint) const;
  /// Adds a constraint to one of this space's sets, changing variants of constraints of the root if need be.
  /// On failure all variants are as before, and the reason is logged.
  lmStatus addConstraintByAdjustingVariants(const CorvConstraintShPtr& i_constraint,
                                            const CorvValidatorSetShPtr& i_set);
  /// Chooses variants with which no constraint writes the dof, so that it can be locked.
  lmStatus setConstraintVariantsForWriting(const CorvDofShPtr& i_dof);
  /// Locks every dof that only ever takes one value because locked dofs decide it; constraints that have nothing left
  /// to compute are removed. @return -1, with nothing changed, if the constraints cannot be satisfied.
  lmStatus lockConstantDofs();

  /// Brings clones of the constraints and configuration validators in force in another space, and its bounds, into the
  /// sets of this tree. The dofs of the two are matched by rank; a judge goes to the space here that stands at the same
  /// place in the tree, or has the same dofs.
  /// @return -1, with a log entry, at the first conflict that cannot be solved; what was brought until then stays.
  lmStatus mergeClonedValidatorsAndConstraintsFrom(const CorvConfigSpaceConstShPtr& i_source);

  /// Runs the constraints in force in their order. @return false at the first that fails.
  bool applyConstraintsOn(CorvConfig& io_cfg, const ClumParameterMapConstShPtr& i_params) const;
  /// Runs the configuration validators in force in their order. @return false at the first that refuses.
  bool applyValidatorsOn(const CorvConfig& i_cfg, const ClumParameterMapConstShPtr& i_params) const;

  /// The coded form under the key "configSpace", as the text of a file.
  std::string textualDump() const;

protected:
  CorvConfigSpace();
  explicit CorvConfigSpace(const std::string& i_type);
  lmStatus init(const CorvConfigSpaceWkPtr& i_weakPtr);

  /// The space that this one wraps; null for none. Not owned.
  void wrappedSpace(const CorvConfigSpace* i_space) { m_wrapped = i_space; }
  /// Sets the metric without a change of version.
  void initialMetric(const CorvMetricShPtr& i_metric) { m_metric = i_metric; }
  void initialSteeringMethod(const CorvSteeringMethodShPtr& i_steeringMethod) { m_steeringMethod = i_steeringMethod; }

  /// A group that holds this space is told when this space changes.
  void addGroup(const CorvConfigSpaceWkPtr& i_group);
  void removeGroup(const CorvConfigSpace& i_group);

private:
  friend class CorvCSDeviceWrapper;
  friend class CorvCSGroup;
  friend class CorvConfig;

  enum EDofFlag
  {
    PASSIVE = 1,
    COMPUTED = 2,
    CIRCULAR = 4 ///< revolute and unbounded
  };
  using TDofList = ShPtr<const std::vector<CorvDofWkPtr>>;
  using TStack = std::deque<CorvValidatorSetShPtr>;
  struct CConstraintCache;
  struct CValidatorCache;
  struct CMerge;

  /// Beyond it lies the bit with which a configuration marks a version as unchecked.
  static constexpr unsigned int MAX_VERSION = 0x7fffffffu;

  bool isInsideItself() const;
  unsigned int recordVersion() const;
  void keepDofs(unsigned int i_version, const TDofList& i_dofs) const;
  void updateCache() const;
  void fillCache(const CorvConfigSpace& i_space) const;
  void updatePassiveSpaceDataInCache() const;
  const ShPtr<const CConstraintCache>& constraintCache() const;
  const ShPtr<const CValidatorCache>& validatorCache() const;
  bool runValidator(const CorvValidator& i_validator, unsigned int i_rank, const CorvConfig& i_cfg,
                    const ClumParameterMapConstShPtr& i_params) const;

  unsigned int allDofFlags() const
  {
    if (!m_isPassiveDataValid)
      updatePassiveSpaceDataInCache();
    return m_allDofFlags;
  }
  bool hasDofFlag(unsigned int i_rank, EDofFlag i_flag) const
  {
    return (allDofFlags() & i_flag) != 0 && i_rank < m_dofFlags.size() && (m_dofFlags[i_rank] & i_flag) != 0;
  }
  unsigned int countDofsWith(unsigned int i_mask, unsigned int i_flags) const;

  using TStackMember = TStack CorvConfigSpace::*;
  lmStatus pushSet(TStackMember i_stack, const CorvValidatorSetShPtr& i_set);
  lmStatus pushCopyOfTop(TStackMember i_stack);
  lmStatus popSet(TStackMember i_stack);
  bool hasSameDofsAs(const CorvConfigSpace& i_other) const;
  void markTransitivelyLocked(std::vector<bool>& o_isLocked, std::vector<CorvConstraintShPtr>& o_constraints) const;
  lmStatus applyVariantsAndAdd(const std::vector<CorvConstraintShPtr>& i_constraints,
                               const std::vector<unsigned int>& i_variants, const CorvConstraintShPtr& i_constraint,
                               const CorvValidatorSetShPtr& i_set);

  std::string m_type;
  CorvConfigSpaceWkPtr m_parent;
  CorvDeviceWkPtr m_device;
  CorvJointWkPtr m_joint;
  CorvSteeringMethodShPtr m_steeringMethod;
  CorvMetricShPtr m_metric;
  TStack m_constraints;
  TStack m_configValidators;
  TStack m_directPathValidators;
  TStack m_pathValidators;
  unsigned int m_version = 1;
  mutable bool m_isVersionRecorded = false;
  mutable bool m_isCacheValid = false;
  mutable bool m_isPassiveDataValid = false;
  mutable unsigned int m_allDofFlags = 0; ///< what some dof has
  const CorvConfigSpace* m_wrapped = nullptr;
  std::vector<CorvConfigSpaceWkPtr> m_groups;

  mutable std::vector<CorvDofShPtr> m_dofs; ///< empty in a dof, which would hold itself
  mutable std::unordered_map<const CorvConfigSpace*, unsigned int> m_firstDofRanks;
  mutable std::vector<unsigned char> m_dofFlags;
  mutable std::map<unsigned int, TDofList> m_dofsOfThisVersion;
  mutable ShPtr<const CConstraintCache> m_constraintCache; ///< null when out of date, as the next
  mutable ShPtr<const CValidatorCache> m_validatorCache;
  mutable ClumParameterMapShPtr m_validationParams; ///< scratch, taken out while in use
};
