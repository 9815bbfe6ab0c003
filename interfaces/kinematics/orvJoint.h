#pragma once

#include "foundation/handles.h"
#include "foundation/lumCodable.h"
#include "foundation/lumMat4.h"
#include "kinematics/handles.h"

#include <vector>

class CorvConfig;

/// A node of the kinematic tree: an effect, child joints, a body, and the space of the whole subtree.
///
/// Frames are world frames of the device. With T the parent's `currentTransform` (the identity for a root), I the
/// `initialPosition` and E the effect's frame, the joint stands at P = T·I·E, and its transform is P·I⁻¹. So I is the
/// frame that the joint has for a zero effect and an unmoved parent. Setting a frame by hand changes I, never a dof.
///
/// The space of the subtree holds, in this order, the custom sub-space, the body's, the effect's and each child's; a
/// flat rank of a dof is its place in that order. `version` counts every change of the subtree but motion,
/// `structuralVersion` those that change what belongs to it.
///
/// A joint owns its effect, body and children; its parent is weak. An edit that fails leaves the tree as it was. A tree
/// is edited and moved by one thread at a time.
class LUM_API CorvJoint : public ClumMutableCodable
{
  LUM_CONCRETE(CorvJoint, ClumMutableCodable);

public:
  static const unsigned int MOBILE_ALREADY_IN_COLLECTION_ERROR;
  static const unsigned int MOBILE_MOBILE_CONFLICT_ERROR;
  static const unsigned int MOBILE_OBSTACLE_CONFLICT_ERROR;
  static const unsigned int MOBILE_BODY_CONFLICT_ERROR;
  static const unsigned int LOCKED_KINEMATICAL_CHAIN_ERROR;
  static const unsigned int NULL_JOINT_ERROR;
  static const unsigned int JOINT_ALREADY_HAS_PARENT_ERROR;
  static const unsigned int INVALID_CHILDREN_RANK_ERROR;
  static const unsigned int REBUILD_CONFIG_SPACE_ERROR;
  static const unsigned int JOINT_ADDING_CHECK_ERROR;
  static const unsigned int KINEMATICAL_LOOP_ATTEMPT_ERROR;
  static const unsigned int MOBILE_OUT_OF_RANGE_ERROR;
  static const unsigned int NULL_GEOMETRY_ERROR;
  static const unsigned int POSITIONER_NOT_ALLOWED_AS_CHILD_ERROR;
  static const unsigned int MOBILE_NOT_IN_COLLECTION_ERROR;
  static const unsigned int MOBILE_ALREADY_CONTROLLED_ERROR;
  static const unsigned int INCOMPATIBLE_KINEMATICAL_EFFECT_ERROR;
  static const unsigned int MOBILE_ALREADY_IN_SCENE_ERROR;
  static const unsigned int COLLISION_TOOLKIT_ERROR;

  ~CorvJoint() override;

  /// @param i_position the initial frame: where the joint stands at the values 0.
  /// @return null for a null effect, or values that are not as many as the effect has dofs.
  static CorvJointShPtr create(const CorvKinematicalEffectShPtr& i_effect, const ClumMat4& i_position);
  static CorvJointShPtr create(const CorvKinematicalEffectShPtr& i_effect, const std::vector<double>& i_values,
                               const ClumMat4& i_position);
  /// Copies the whole subtree; the copy has no parent.
  static CorvJointShPtr createCopy(const CorvJointConstShPtr& i_objectToCopy);
  virtual CorvJointShPtr clone() const;

protected:
  virtual void parentJoint(const CorvJointWkPtr& i_parent);

public:
  // The tree.
  virtual CorvJointShPtr parentJoint() const;
  lmStatus addJoint(const CorvJointShPtr& i_joint);
  /// Fails, in this order of tests: LOCKED_KINEMATICAL_CHAIN_ERROR, NULL_JOINT_ERROR, JOINT_ALREADY_HAS_PARENT_ERROR,
  /// KINEMATICAL_LOOP_ATTEMPT_ERROR, INVALID_CHILDREN_RANK_ERROR, JOINT_ADDING_CHECK_ERROR on top of the device's
  /// status, MOBILE_MOBILE_CONFLICT_ERROR, REBUILD_CONFIG_SPACE_ERROR.
  lmStatus insertJoint(const CorvJointShPtr& i_joint, unsigned int i_rank);
  lmStatus removeJoint(const CorvJointShPtr& i_joint);
  unsigned int countChildJoints() const { return static_cast<unsigned int>(m_childJoints.size()); }
  /// Null for a rank that is too large.
  const CorvJointShPtr& childJoint(unsigned int i_rank) const;
  /// True if this is the joint's parent, or an ancestor of it.
  bool isParentOf(const CorvJointConstShPtr& i_joint) const;
  /// Appends the subtree depth-first, this joint first.
  void fillJointVector(std::vector<CorvJointShPtr>& o_joints) const;
  /// A filter that accepts the joints below this one, as the tree is when it is asked.
  ClumObjectFilterShPtr makeChildFilter() const;
  /// The device whose tree this joint belongs to; null for a free tree.
  CorvDeviceShPtr device() const;
  /// Forbids for good to add and remove joints in this subtree.
  void lockKinematicalChain();
  bool isKinematicalChainLocked() const { return m_isKinematicalChainLocked; }

  /// Joints that count for the sweep without being children. Held weakly. @return -1 for null, this joint, or a joint
  /// that is there already (added) or not there (removed).
  lmStatus addVirtualChild(const CorvJointShPtr& i_joint);
  lmStatus removeVirtualChild(const CorvJointShPtr& i_joint);
  unsigned int countVirtualChildren() const { return static_cast<unsigned int>(m_virtualChildren.size()); }
  CorvJointShPtr virtualChild(unsigned int i_rank) const;

  /// A joint elsewhere that is rigidly linked to this one; null by default.
  CorvJointShPtr linkedJoint() const { return m_linkedJoint.lock(); }
  void linkedJoint(const CorvJointShPtr& i_joint) { m_linkedJoint = i_joint; }
  /// Appends the joints that never move against this one, itself first: over joints without dofs, and linked joints.
  void getRigidlyLinkedJoints(std::vector<CorvJointShPtr>& o_joints) const;
  bool hasLinkedBody() const;
  void getLinkedBodies(std::vector<CorvBodyShPtr>& o_bodies) const;

  // The geometries of the body.
  lmStatus addMobileGeometry(const ClumGeometryShPtr& i_geometry);
  /// Adds a geometry where it stands; makes a `CorvBodyLumScene` if the joint has no body. Fails, in this order of
  /// tests: NULL_GEOMETRY_ERROR, MOBILE_BODY_CONFLICT_ERROR, MOBILE_ALREADY_IN_COLLECTION_ERROR,
  /// MOBILE_MOBILE_CONFLICT_ERROR, MOBILE_OBSTACLE_CONFLICT_ERROR, COLLISION_TOOLKIT_ERROR,
  /// MOBILE_ALREADY_IN_SCENE_ERROR, MOBILE_OUT_OF_RANGE_ERROR, MOBILE_ALREADY_CONTROLLED_ERROR.
  lmStatus insertMobileGeometry(const ClumGeometryShPtr& i_geometry, unsigned int i_rank);
  lmStatus removeMobileGeometry(const ClumGeometryShPtr& i_geometry);
  /// Replaces all geometries; on failure those there were are put back.
  lmStatus mobileGeometries(const std::vector<ClumGeometryShPtr>& i_geometries);
  unsigned int countMobileGeometries() const;
  ClumGeometryShPtr mobileGeometry(unsigned int i_rank) const;
  ClumMat4 mobileGeometryRelativePosition(unsigned int i_rank) const;
  lmStatus mobileGeometryRelativePosition(unsigned int i_rank, const ClumMat4& i_position);
  /// The body's group in the collision scene; null as long as there is none.
  ClumGeometryShPtr mobileGroup() const;
  ClumGeometryShPtr ensureMobileGroup();

  // The body.
  const CorvBodyShPtr& attachedBody() const { return m_attachedBody; }
  lmStatus attachedBody(const CorvBodyShPtr& i_body) { return setAttachedBody(i_body); }
  /// Attaches a body where it stands; null removes the one there is. Fails with -1 for a body of another joint, and as
  /// `insertMobileGeometry` does for each of its geometries.
  lmStatus setAttachedBody(const CorvBodyShPtr& i_body);
  lmStatus setAttachedBody(const CorvBodyShPtr& i_body, const ClumMat4& i_relativePosition);
  lmStatus removeAttachedBody();
  /// The space of the body's own dofs; null without a body.
  CorvConfigSpaceShPtr bodySubspace() const;

  // The motion.
  const CorvKinematicalEffectShPtr& kinematicalEffect() const { return m_kinematicalEffect; }
  lmStatus kinematicalEffect(const CorvKinematicalEffectShPtr& i_effect) { return setKinematicalEffect(i_effect); }
  /// Replaces the effect; values and frame are kept, so the zero moves. -1 for null,
  /// INCOMPATIBLE_KINEMATICAL_EFFECT_ERROR if the number of dofs differs.
  lmStatus setKinematicalEffect(const CorvKinematicalEffectShPtr& i_effect);
  CorvCSCompositeShPtr configSpace() const { return m_configSpace; }
  const CorvConfigSpaceShPtr& customSubspace() const { return m_customSubspace; }
  lmStatus customSubspace(const CorvConfigSpaceShPtr& i_space);
  /// The dofs of the effect.
  unsigned int countDofs() const;
  CorvDofShPtr dof(unsigned int i_rank) const;
  /// The dofs of the whole subtree.
  unsigned int countDofsInTree() const;
  CorvDofShPtr dofInTree(unsigned int i_rank) const;

  /// Moves the subtree. @param i_config a configuration whose current space is this joint's.
  lmStatus setCurrentConfig(const CorvConfig& i_config);
  lmStatus setCurrentConfig(const CorvConfigConstShPtr& i_config);
  /// Writes the values of the subtree into a configuration whose current space is this joint's.
  lmStatus getCurrentConfig(CorvConfig& io_config) const;
  lmStatus getCurrentConfig(CorvConfigShPtr& io_config) const;
  const std::vector<double>& currentEffectDofValues() const { return m_currentEffectDofValues; }

  const ClumMat4& initialPosition() const { return m_initialPosition; }
  const ClumMat4& currentTransform() const { return m_transform; }
  const ClumMat4& currentPosition() const { return m_currentPosition; }
  void currentPosition(const ClumMat4& i_position) { setCurrentPosition(i_position); }
  /// Puts this joint's frame here; no dof changes and the joints beyond keep their frames.
  void setCurrentPosition(const ClumMat4& i_position);
  const ClumMat4& currentRigidPosition() const { return m_currentPosition; }
  void currentRigidPosition(const ClumMat4& i_position) { setCurrentRigidPosition(i_position); }
  /// Puts this joint's frame here and moves the whole subtree with it as one solid; no dof changes.
  void setCurrentRigidPosition(const ClumMat4& i_position);
  /// Moves the frames of the whole subtree by a rigid motion of the world; no dof changes.
  void applyRigidTransformation(const ClumMat4& i_motion);

  /// The effect's frame; the identity, with a log entry, if the effect fails.
  void computeEffect(const std::vector<double>& i_values, ClumMat4& o_effect) const;
  lmStatus computeEffectDerivative(const std::vector<double>& i_values, unsigned int i_rank, ClumMat4& o_mat) const;
  void computePosition(const ClumMat4& i_parentTransform, const ClumMat4& i_effect, ClumMat4& o_position) const;
  void computeTransform(const ClumMat4& i_position, ClumMat4& o_transform) const;

  // Without moving anything, at a configuration whose current space is this joint's.
  lmStatus getJointPosition(const CorvJointConstShPtr& i_joint, const CorvConfig& i_config,
                            const ClumMat4& i_parentTransform, ClumMat4& o_position) const;
  /// Appends the frame of each body, or joint, of the subtree, depth-first.
  lmStatus getBodyMatVector(const CorvConfig& i_config, const ClumMat4& i_parentTransform,
                            std::vector<ClumMat4>& o_positions) const;
  lmStatus getJointMatVector(const CorvConfig& i_config, const ClumMat4& i_parentTransform,
                             std::vector<ClumMat4>& o_positions) const;
  /// The derivative of this joint's frame by one dof of its effect.
  lmStatus getDerivativeAtConfig(const CorvConfig& i_config, const ClumMat4& i_parentTransform, unsigned int i_rank,
                                 ClumMat4& o_derivative) const;
  lmStatus getCurrentPositionDerivative(unsigned int i_rank, ClumMat4& o_derivative) const;
  /// A unit direction for one dof of the effect, in the world, where the joint stands now.
  lmStatus getAxisHint(unsigned int i_rank, ClumVect3& o_axis) const;

  /// Bounds how far a point of the subtree moves per unit of this joint's value.
  double maxSweep() const;
  void maxSweep(double i_sweep);
  double minMaxSweep() const { return m_minMaxSweep; }
  void minMaxSweep(double i_sweep);
  /// Never less than the distance from a world point to the farthest place that a point of this subtree can reach by
  /// the bounded translations beyond; unbounded ones count where they stand.
  double computeMaxSweepFrom(const ClumPoint3& i_point) const;

  /// Sets the scaler of every dof of the effect.
  void userWeightScaler(double i_scaler);
  /// True if every dof of the effect, the custom sub-space and the body's is locked.
  bool isLocked() const;
  void isLocked(bool i_isLocked);
  unsigned int version() const { return m_version; }
  unsigned int structuralVersion() const { return m_structuralVersion; }

  /// The same dofs in order, and equal frames.
  virtual bool operator==(const CorvJoint& i_other) const;
  virtual bool configSpaceIncludesChildJoints() const;
  virtual bool configSpaceIncludesCustomSubspace() const;
  virtual bool configSpaceIncludesBody() const;

  /// Called by a body of this joint, or by the joint itself, after a change that is no motion.
  void didChange();

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;
  void awake() override;

protected:
  CorvJoint();
  CorvJoint(const CorvKinematicalEffectShPtr& i_effect, const ClumMat4& i_position);
  CorvJoint(const CorvKinematicalEffectShPtr& i_effect, const std::vector<double>& i_values,
            const ClumMat4& i_position);
  lmStatus init(const CorvJointWkPtr& i_weakPtr);

  /// A frame at `i_origin` whose base vector points along `i_axis`.
  static ClumMat4 frameOnAxis(ClumMat4::EBaseVector i_baseVector, const ClumVect3& i_axis, const ClumVect3& i_origin);
  void setCurrentBaseVectorAxis(ClumMat4::EBaseVector i_baseVector, const ClumVect3& i_axis);
  void setCurrentCenter(const ClumVect3& i_center);

private:
  friend class CorvDevice;

  const ClumMat4& parentTransform() const;
  CorvBodyLumSceneShPtr lumSceneBody() const;
  bool isBelowItself() const;
  bool isWhole() const;
  lmStatus rebuildConfigSpace();
  template <class RESTORE>
  lmStatus rebuildConfigSpaceOr(RESTORE i_restore);
  void updateCurrentPosition();
  void updateInitialPosition();
  void moveFrames(const ClumMat4& i_motion);
  void updateMaxSweep() const;
  double virtualMaxSweep() const;
  double effectTravel() const;
  double reach(std::vector<const CorvJoint*>& io_visited) const;
  double sweepFrom(const ClumPoint3& i_point, std::vector<const CorvJoint*>& io_visited) const;
  bool willLoopAsChild(const CorvJoint& i_joint) const;
  lmStatus checkInsertion(const CorvJointShPtr& i_joint, unsigned int i_rank) const;
  lmStatus checkMobileGeometry(const ClumGeometryShPtr& i_geometry) const;
  lmStatus checkBody(const CorvBodyShPtr& i_body) const;
  bool isMobileInTree(const ClumGeometryConstShPtr& i_geometry) const;
  const CorvJoint& rootOfTree() const;
  void appendMobileGeometries(std::vector<ClumGeometryShPtr>& io_geometries) const;
  lmStatus replaceBody(const CorvBodyShPtr& i_body);
  void takeBody(const CorvBodyShPtr& i_body);
  void dropBody();
  void removedFromDevice();
  void invalidateCurrentConfig();
  lmStatus writeDofValues(const CorvConfig& i_config);
  lmStatus readDofValues(CorvConfig& io_config) const;
  void currentPositionWillChange() const;
  void currentPositionDidChange() const;
  void didChangeStructure();

  template <class VISITOR>
  lmStatus visitAtConfig(const CorvConfig& i_config, const ClumMat4& i_parentTransform, VISITOR& io_visitor) const;

  CorvJointWkPtr m_parentJoint;
  std::vector<CorvJointWkPtr> m_virtualChildren;
  CorvJointWkPtr m_linkedJoint;
  CorvKinematicalEffectShPtr m_kinematicalEffect;
  CorvBodyShPtr m_attachedBody;
  CorvCSCompositeShPtr m_configSpace;
  std::vector<CorvJointShPtr> m_childJoints;
  CorvConfigSpaceShPtr m_customSubspace;
  std::vector<double> m_currentEffectDofValues;
  ClumMat4 m_effect;
  ClumMat4 m_initialPosition;
  ClumMat4 m_currentPosition;
  ClumMat4 m_transform;
  mutable double m_maxSweep = 0.0;
  mutable bool m_isMaxSweepValid = false;
  mutable unsigned int m_maxSweepSpaceVersion = 0;
  double m_minMaxSweep = 0.0;
  unsigned int m_version = 0;
  unsigned int m_structuralVersion = 0;
  bool m_isKinematicalChainLocked = false;
};
