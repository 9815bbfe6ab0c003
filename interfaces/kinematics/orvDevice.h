#pragma once

#include "foundation/handles.h"
#include "foundation/lumCodable.h"
#include "foundation/lumMat4.h"
#include "kinematics/handles.h"
#include "metrics/handles.h"
#include "paths/handles.h"
#include "validation/handles.h"

#include <memory>
#include <set>
#include <vector>

class CorvConfig;
class CorvDeviceTable;

/// The mechanism that a client plans for: a tree of joints, obstacles around it, extra dofs, a current configuration,
/// and the defaults of planning: metric, steering method and validators.
///
/// The device owns its config space, `internalConfigSpace`: the extra dofs, then the joint tree depth-first. Clients
/// get `configSpace`, a wrapper that lives as long as somebody holds it. `version` counts every change of the device,
/// its joints and bodies, but no motion. Flat caches (joints, bodies, dofs, and one table for forward kinematics and
/// bounded moves) are refilled when the version has moved.
///
/// In the device's collision scene the group of each body's geometries is tested against the group of obstacles; pairs
/// of bodies are tested only where a client adds their test. A device is used by one thread at a time.
class LUM_API CorvDevice : public ClumMutableCodable
{
  LUM_CONCRETE(CorvDevice, ClumMutableCodable);

public:
  using TDofIterator = std::vector<CorvDofShPtr>::const_iterator;

  static const unsigned int NULL_OBSTACLE_ERROR;
  static const unsigned int OBSTACLE_ALREADY_IN_COLLECTION_ERROR;
  static const unsigned int OBSTACLE_MOBILE_CONFLICT_ERROR;
  static const unsigned int DEVICE_MOBILE_MOBILE_CONFLICT_ERROR;
  static const unsigned int DEVICE_MOBILE_OBSTACLE_CONFLICT_ERROR;
  static const unsigned int DEVICE_OBSTACLE_MOBILE_CONFLICT_ERROR;
  static const unsigned int COLLISION_TOOLKIT_ERROR;
  static const unsigned int NULL_ATTACHED_DEVICE_ERROR;
  static const unsigned int NULL_JOINT_ERROR;
  static const unsigned int ATTACHED_DEVICE_ALREADY_HAS_PARENT_ERROR;
  static const unsigned int CONFIG_SPACE_INCLUSION_ERROR;
  static const unsigned int INVALID_JOINT_RANK_ERROR;
  static const unsigned int ATTACHED_DEVICE_NOT_FOUND_ERROR;
  static const unsigned int JOINT_NOT_FOUND_ERROR;
  static const unsigned int OBSTACLE_OUT_OF_RANGE;
  static const unsigned int LOCKED_KINEMATICAL_CHAIN_ERROR;
  static const unsigned int ALREADY_IN_A_KINEMATICAL_CHAIN_ERROR;
  static const unsigned int KINEMATICAL_CHAIN_BREAKING_ERROR;
  static const unsigned int DEVICE_OBSTACLE_OBSTACLE_CONFLICT_ERROR;
  static const unsigned int OBSTACLE_OBSTACLE_CONFLICT_ERROR;
  static const unsigned int MOBILE_ALREADY_IN_SCENE_ERROR;
  static const unsigned int OBSTACLE_ALREADY_IN_SCENE_ERROR;

  ~CorvDevice() override;

  static CorvDeviceShPtr create();
  /// Copies the device with its tree; the geometries are shared with the source.
  static CorvDeviceShPtr createCopy(const CorvDeviceConstShPtr& i_objectToCopy);
  /// The device that `exportToFile` wrote. @return null, with a log entry, if the file cannot be read or holds none.
  static CorvDeviceShPtr createFromFile(const std::string& i_path);
  virtual CorvDeviceShPtr clone() const;
  /// Copies the device with its geometries, for a worker of its own.
  CorvDeviceShPtr cloneWithGeometries() const;

  // The tree.
  const CorvJointShPtr& rootJoint() const { return m_rootJoint; }
  lmStatus rootJoint(const CorvJointShPtr& i_joint) { return setRootJoint(i_joint); }
  /// Replaces the tree; null takes it away. Fails, in this order of tests: LOCKED_KINEMATICAL_CHAIN_ERROR,
  /// ALREADY_IN_A_KINEMATICAL_CHAIN_ERROR, the status of `checkJointCanBeAdded`.
  virtual lmStatus setRootJoint(const CorvJointShPtr& i_joint);
  bool canSetRootJoint(const CorvJointShPtr& i_joint) const;
  void getSetRootJointStatus(const CorvJointShPtr& i_joint, lmStatus& o_status) const;
  /// Whether the geometries of a subtree clash with those of this device: DEVICE_MOBILE_MOBILE_CONFLICT_ERROR,
  /// DEVICE_MOBILE_OBSTACLE_CONFLICT_ERROR or MOBILE_ALREADY_IN_SCENE_ERROR.
  lmStatus checkJointCanBeAdded(const CorvJointConstShPtr& i_joint) const;
  unsigned int countJoints() const;
  /// Null for a rank that is too large, as the other item functions.
  CorvJointShPtr joint(unsigned int i_rank) const;
  const std::vector<CorvJointShPtr>& jointVector() const;
  /// INVALID_JOINT_RANK_ERROR if the joint is not in the tree.
  lmStatus getRankOfJoint(const CorvJointConstShPtr& i_joint, unsigned int& o_rank) const;
  unsigned int countBodies() const;
  CorvBodyShPtr body(unsigned int i_rank) const;
  const std::vector<CorvBodyShPtr>& bodyVector() const;
  lmStatus getRankOfBody(const CorvBodyConstShPtr& i_body, unsigned int& o_rank) const;
  unsigned int countDofs() const;
  CorvDofShPtr dof(unsigned int i_rank) const;
  const std::vector<CorvDofShPtr>& dofVector() const;
  TDofIterator beginDofIterator() const { return dofVector().begin(); }
  TDofIterator endDofIterator() const { return dofVector().end(); }
  lmStatus getRankOfDof(const CorvDofConstShPtr& i_dof, unsigned int& o_rank) const;
  /// Forbids for good to change the tree.
  void lockKinematicalChain();
  bool isKinematicalChainLocked() const { return m_isKinematicalChainLocked; }

  // Dofs outside of all joints. -1 for null, for a dof that has a parent, or one that is not here (removed).
  lmStatus addExtraDof(const CorvDofShPtr& i_dof);
  lmStatus removeExtraDof(const CorvDofShPtr& i_dof);
  unsigned int countExtraDofs() const { return static_cast<unsigned int>(m_extraDofs.size()); }
  CorvDofShPtr extraDof(unsigned int i_rank) const;

  // The hierarchy of devices: a device stands alone.
  CorvDeviceShPtr rootDevice() const { return self(); }
  CorvDeviceShPtr holderDevice() const { return CorvDeviceShPtr(); }

  // The geometries. `i_recursive` asks for the whole hierarchy below this device.
  lmStatus addObstacleGeometry(const ClumGeometryShPtr& i_geometry);
  /// Fails, in this order of tests: NULL_OBSTACLE_ERROR, COLLISION_TOOLKIT_ERROR, OBSTACLE_ALREADY_IN_COLLECTION_ERROR,
  /// OBSTACLE_MOBILE_CONFLICT_ERROR, OBSTACLE_ALREADY_IN_SCENE_ERROR, OBSTACLE_OUT_OF_RANGE.
  lmStatus insertObstacleGeometry(const ClumGeometryShPtr& i_geometry, unsigned int i_rank);
  /// -1 if the geometry is no obstacle.
  lmStatus removeObstacleGeometry(const ClumGeometryShPtr& i_geometry);
  unsigned int countObstacleGeometries() const { return static_cast<unsigned int>(m_obstacleGeometries.size()); }
  ClumGeometryShPtr obstacleGeometry(unsigned int i_rank) const;
  /// The group that stands for the obstacles in the scene.
  const ClumGeometryShPtr& obstacleGroup() const { return m_obstacleGroup; }
  bool isObstacleGeometry(const ClumGeometryConstShPtr& i_geometry) const;
  void getObstacleGeometries(bool i_recursive, std::vector<ClumGeometryShPtr>& o_geometries) const;
  void getObstacleGeometries(bool i_recursive, std::set<ClumGeometryShPtr>& o_geometries) const;
  void getObstacleGroups(bool i_recursive, std::vector<ClumGeometryShPtr>& o_groups) const;
  unsigned int countMobileGeometries() const;
  ClumGeometryShPtr mobileGeometry(unsigned int i_rank) const;
  bool isMobileGeometry(const ClumGeometryConstShPtr& i_geometry) const;
  void getMobileGeometries(bool i_recursive, std::vector<ClumGeometryShPtr>& o_geometries) const;
  void getMobileGeometries(bool i_recursive, std::set<ClumGeometryShPtr>& o_geometries) const;
  void getMobileGroups(bool i_recursive, std::vector<ClumGeometryShPtr>& o_groups) const;
  /// True if one of the geometries is a mobile, or an obstacle, of this device.
  bool containsMobileGeometry(const std::set<ClumGeometryShPtr>& i_geometries) const;
  bool containsObstacleGeometry(const std::set<ClumGeometryShPtr>& i_geometries) const;

  // Spaces and services.
  /// The space that clients use, made on demand.
  CorvConfigSpaceShPtr configSpace() const;
  const CorvCSCompositeShPtr& internalConfigSpace() const { return m_configSpace; }
  virtual CorvSteeringMethodShPtr steeringMethod() const;
  virtual void steeringMethod(const CorvSteeringMethodShPtr& i_method);
  CorvMetricShPtr metric() const;
  void metric(const CorvMetricShPtr& i_metric);
  /// The device's own sets, whatever is pushed on the space's stacks.
  const CorvValidatorSetShPtr& constraints() const { return m_constraints; }
  const CorvValidatorSetShPtr& userConstraints() const { return m_constraints; }
  const CorvValidatorSetShPtr& configValidators() const { return m_configValidators; }
  const CorvValidatorSetShPtr& userConfigValidators() const { return m_configValidators; }
  const CorvValidatorSetShPtr& directPathValidators() const { return m_directPathValidators; }
  const CorvValidatorSetShPtr& userDirectPathValidators() const { return m_directPathValidators; }
  const CorvValidatorSetShPtr& pathValidators() const { return m_pathValidators; }
  const CorvValidatorSetShPtr& userPathValidators() const { return m_pathValidators; }
  unsigned int version() const;

  // Collision.
  bool canCheckCollisions() const;
  /// True if the device collides where it stands.
  virtual bool collisionTest(const ClumParameterMapConstShPtr& i_parameters) const;
  virtual bool collisionTest() const;
  ClumSceneShPtr collisionScene() const;
  const ClumSceneShPtr& innerCollisionScene() const { return m_innerScene; }
  const ClumCollisionToolkitShPtr& collisionToolkit() const { return m_collisionToolkit; }
  /// Null stands for no toolkit: no geometry can then be added to the device.
  void collisionToolkit(const ClumCollisionToolkitShPtr& i_toolkit);
  /// The validator that tests this device for collision: made by the first body that makes one, null before.
  CorvValidatorCfgCollisionBaseShPtr collisionValidator() const;
  /// Replaces it, among the configuration validators too.
  void collisionValidator(const CorvValidatorCfgCollisionBaseShPtr& i_validator);
  /// Called by the device's spaces before they give out a set of configuration validators: the collision validator is
  /// made and appended to the user's set, once the device has a body.
  void willReturnConfigValidators(const CorvValidatorSetShPtr& i_set) const;
  ClumTestParametersConstShPtr defaultTestParameters() const;
  /// The parameters of the tests that are made from now on; null for those of the class.
  void defaultTestParameters(const ClumTestParametersConstShPtr& i_parameters);
  lmStatus getMaximumTolerance(double& o_tolerance) const;
  void notifyCollisionSceneWillChange();
  void notifyCollisionSceneDidChange();
  /// Enters the tests of a body's group that came into the scene after its joint.
  void newMobileGroupAddedToScene(const ClumGeometryShPtr& i_group);

  // Motion.
  /// Moves the device. The configuration is of the device's space, of a wider one that includes it, or of a sub-space,
  /// which leaves the other dofs as they are. @return -1 if it is neither.
  virtual lmStatus setCurrentConfig(const CorvConfigConstShPtr& i_config);
  virtual lmStatus setCurrentConfig(const CorvConfig& i_config);
  lmStatus doSetCurrentConfig(const CorvConfig& i_config);
  /// @param o_config becomes a configuration of `configSpace()`.
  lmStatus getCurrentConfig(CorvConfig& o_config) const;
  lmStatus getCurrentConfig(CorvConfigShPtr& o_config) const;
  void invalidateCurrentConfig() const;
  /// The frame of a joint at a configuration; nothing moves. JOINT_NOT_FOUND_ERROR for a joint of another tree.
  lmStatus getJointPosition(const CorvJointConstShPtr& i_joint, const CorvConfig& i_config, ClumMat4& o_position) const;
  lmStatus getJointAbsolutePosition(const CorvJointConstShPtr& i_joint, const CorvConfig& i_config,
                                    ClumMat4& o_position) const;
  /// The absolute frame of each body, or joint, in their order; nothing moves. -1 if the configuration's space does not
  /// include this device's. Repeated calls allocate nothing.
  lmStatus computeBodyPositions(const CorvConfig& i_config, std::vector<ClumMat4>& o_positions) const;
  lmStatus computeJointPositions(const CorvConfig& i_config, std::vector<ClumMat4>& o_positions) const;
  /// Rows 0 to 2: the velocity of a world point that a joint carries (the last one if none is given), 3 to 5: that of
  /// its rotation, for each dof of the device at rate 1.
  lmStatus computeJacobian(const CorvConfig& i_config, const ClumPoint3& i_point, ClumMat& o_jacobian) const;
  lmStatus computeJacobian(const CorvConfig& i_config, const ClumPoint3& i_point, const CorvJointConstShPtr& i_joint,
                           ClumMat& o_jacobian) const;

  /// How far along a motion one can go before some body has moved more than it may.
  ///
  /// The statement, proved in docs/proof-of-motion.md: on a motion of `i_rest` that starts at `i_from` and on which dof
  /// k changes at a rate of at most `i_derivatives[k]`, no point of body b is farther than `io_maxDistances[b]` from
  /// where it is at `i_from`, anywhere up to `o_advance`. Infinite allowances and bodies without a shape do not limit.
  ///
  /// @param i_from the configuration at hand; its space is the device's or includes it.
  /// @param i_to the other end of the motion, of the same space; it must be of the same space, but is no bound on where
  /// the motion goes, so the advance does not depend on it.
  /// @param i_derivatives one rate per dof of that space, valid on the whole of `i_rest`.
  /// @param io_maxDistances one allowance per body; reduced by the bound of what each body moves in the advance.
  /// @param o_advance in [0, `i_rest`]; @param o_hitsEnd true if it is all of `i_rest`.
  /// @return -1, without effect, if sizes or spaces do not fit, a rate or the rest is negative or not a number, or a
  /// dof is computed by a constraint and not constant: no bound is known then.
  lmStatus boundedMove(const CorvConfig& i_from, const CorvConfig& i_to, double i_rest,
                       const std::vector<double>& i_derivatives, std::vector<double>& io_maxDistances,
                       double& o_advance, bool& o_hitsEnd) const;
  /// How far the points of each body can get from where they are at `i_from` on a whole motion of `i_rest`: the bound
  /// that `boundedMove` holds against the allowances, one entry per body. @return as `boundedMove`.
  lmStatus boundDisplacements(const CorvConfig& i_from, double i_rest, const std::vector<double>& i_derivatives,
                              std::vector<double>& o_moved) const;

  // Tolerances.
  /// Each walks the bodies in order; if one fails, those before it are put back.
  virtual lmStatus pushToleranceModifier(double i_modifier);
  virtual lmStatus popToleranceModifier();
  virtual lmStatus pushToleranceActivation(bool i_activation);
  virtual lmStatus popToleranceActivation();

  /// Writes the device under the key "device", whole or not at all.
  /// @param i_params no option is known so far.
  /// @param o_progress null, or takes how much of it is done, from 0 to 1.
  virtual lmStatus exportToFile(const std::string& i_path, const ClumParameterMapConstShPtr& i_params = nullptr,
                                double* o_progress = nullptr) const;

  static double defaultValidatorPenetration();

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;
  void awake() override;

protected:
  CorvDevice();
  lmStatus init(const CorvDeviceWkPtr& i_weakPtr);

  virtual void currentConfigWillChange();
  virtual void currentConfigDidChange();

private:
  friend class CorvJoint;
  friend class CorvMotionBound;
  struct CCache;

  const CCache& updateCache() const;
  lmStatus rebuildConfigSpace();
  void makeUserSets();
  void subscribeToVersionChanges();
  void unsubscribeFromVersionChanges();
  void rootJointPropertyWillChange(const ShPtr<const ClumNotification>& i_notification);
  void rootJointPropertyDidChange(const ShPtr<const ClumNotification>& i_notification);
  void structureWillChange(bool i_rootChanges);
  void structureDidChange(bool i_rootChanges);
  void jointAdded(const CorvJointShPtr& i_joint);
  void jointRemoved(const CorvJointShPtr& i_joint);
  void rebuildDeviceGroups();
  lmStatus firstRankIn(const CorvConfig& i_config, unsigned int& o_rank) const;
  bool hasUnboundedDof(const CorvConfig& i_config) const;
  lmStatus readMotion(const CorvConfig& i_from, const std::vector<double>& i_rates, bool i_isStraight,
                      const double*& o_values, const double*& o_rates, ShPtr<const CorvDeviceTable>& io_table) const;

  CorvCSCompositeShPtr m_configSpace;
  mutable CorvCSDeviceWrapperWkPtr m_wrapperSpace;
  CorvJointShPtr m_rootJoint;
  std::vector<CorvDofShPtr> m_extraDofs;
  bool m_isKinematicalChainLocked = false;
  unsigned int m_internalVersion = 0;
  mutable CorvValidatorCfgCollisionBaseShPtr m_collisionValidator;
  CorvConfigShPtr m_currentConfig;
  mutable bool m_isCurrentConfigValid = false;
  CorvValidatorSetShPtr m_constraints;
  CorvValidatorSetShPtr m_configValidators;
  CorvValidatorSetShPtr m_directPathValidators;
  CorvValidatorSetShPtr m_pathValidators;
  ClumCollisionToolkitShPtr m_collisionToolkit;
  ClumSceneShPtr m_innerScene;
  std::vector<ClumGeometryShPtr> m_obstacleGeometries;
  ClumGeometryShPtr m_obstacleGroup;
  ClumTestParametersConstShPtr m_defaultTestParameters;

  mutable std::unique_ptr<CCache> m_cache;
};
