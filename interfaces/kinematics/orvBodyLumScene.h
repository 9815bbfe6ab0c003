#pragma once

#include "kinematics/orvBody.h"

/// A body made of geometries, tested in its device's collision scene.
///
/// Each geometry has a frame in the body's frame and moves with it; the joint of the body has exclusive control of the
/// geometry's position. In a device the geometries form one group of the scene, an adapter geometry that views the joint's
/// "mobileGeometries"; its position is the body's absolute frame. The group is made when the body has both a geometry
/// and a scene, and its tests are entered by the device.
///
/// Geometries are owned, and shared with whoever holds them too.
class LUM_API CorvBodyLumScene : public CorvBody
{
  LUM_CONCRETE(CorvBodyLumScene, CorvBody);

public:
  ~CorvBodyLumScene() override;

  static CorvBodyLumSceneShPtr create();
  /// @return null for a null geometry, one named twice, or lists of different lengths.
  static CorvBodyLumSceneShPtr create(const ClumGeometryShPtr& i_geometry, const ClumMat4& i_relativePosition);
  static CorvBodyLumSceneShPtr create(const std::vector<ClumGeometryShPtr>& i_geometries,
                                      const std::vector<ClumMat4>& i_relativePositions);
  static CorvBodyLumSceneShPtr createCopy(const CorvBodyLumSceneConstShPtr& i_objectToCopy);
  CorvBodyShPtr clone() const override;

  /// Adds a geometry where it stands: its frame in the body follows from its present position. On a joint's body the
  /// joint's checks run (`CorvJoint::insertMobileGeometry`) and give the codes.
  lmStatus addMobileGeometry(const ClumGeometryShPtr& i_geometry);
  lmStatus insertMobileGeometry(const ClumGeometryShPtr& i_geometry, unsigned int i_rank);
  lmStatus removeMobileGeometry(const ClumGeometryShPtr& i_geometry);
  unsigned int countMobileGeometries() const { return static_cast<unsigned int>(m_mobileGeometries.size()); }
  /// Null for a rank that is too large.
  ClumGeometryShPtr mobileGeometry(unsigned int i_rank) const;
  const std::vector<ClumGeometryShPtr>& mobileGeometries() const { return m_mobileGeometries; }
  bool isMobileGeometry(const ClumGeometryConstShPtr& i_geometry) const;

  ClumMat4 mobileObjectRelativePosition(unsigned int i_rank) const;
  lmStatus mobileObjectRelativePosition(unsigned int i_rank, const ClumMat4& i_position);
  const std::vector<ClumMat4>& mobileObjectRelativePositions() const { return m_relativePositions; }
  lmStatus mobileObjectRelativePositions(const std::vector<ClumMat4>& i_positions);

  /// The collision scene of the joint's device; null for a free body.
  ClumSceneShPtr scene() const;
  /// The group of the geometries in the scene; null as long as there is none.
  const ClumGeometryShPtr& mobileGroup() const { return m_mobileGroup; }
  bool hasMobileGroup() const { return static_cast<bool>(m_mobileGroup); }
  /// Makes the group if the body has a geometry and a scene. @return the group or null.
  const ClumGeometryShPtr& ensureMobileGroup();
  /// Takes the group, with its tests, out of the scene. Called when the joint leaves its device.
  void removedFromDevice();

  /// The tolerance of a test: 0 unless the test and both objects have theirs active; otherwise the larger of the two
  /// objects' modifiers, plus the test's, plus `i_extra`. A null body stands for an obstacle: active, modifier 0.
  static double testTolerance(const CorvBodyLumScene* i_first, const CorvBodyLumScene* i_second,
                              const ClumTestParameters& i_test, double i_extra);

  /// Radius of a sphere about a point of the body frame that holds the whole shape.
  double getBoundingSphereRadius(const ClumPoint3& i_point) const;

  lmStatus getMaximumTolerance(double& o_tolerance) const override;
  lmStatus getToleranceActivation(bool& o_activation) const override;
  lmStatus setToleranceActivation(bool i_activation) override;
  lmStatus getToleranceModifier(double& o_modifier) const override;
  lmStatus setToleranceModifier(double i_modifier) override;
  bool canCheckCollisions() const override;
  bool isColliding(const CCollisionAnalysisParameters& i_parameters, double& o_distance) const override;
  lmStatus measureDistance(double i_precision, double& o_distance, ClumPoint3& o_onBody,
                           ClumPoint3& o_onOther) const override;
  bool operator==(const CorvBody& i_other) const override;
  CorvValidatorCfgCollisionBaseShPtr makeValidator(const CorvConfigSpaceShPtr& i_space) const override;
  void getEnclosingBalls(std::vector<CEnclosingBall>& io_balls) const override;

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;
  void awake() override;

protected:
  CorvBodyLumScene() = default;
  CorvBodyLumScene(const std::vector<ClumGeometryShPtr>& i_geometries,
                   const std::vector<ClumMat4>& i_relativePositions);
  CorvBodyLumScene(const CorvBodyLumScene& i_other) = default;
  lmStatus init(const CorvBodyLumSceneWkPtr& i_weakPtr);
  lmStatus init(const CorvBodyLumSceneWkPtr& i_weakPtr, const CorvBodyLumSceneConstShPtr& i_source);

  void placeBody(const ClumMat4& i_position) override;

private:
  friend class CorvJoint;

  /// Takes control of what nobody controls, for the joint; releases what was taken.
  void takeControl(const ClumGeometryShPtr& i_geometry, const CorvJointShPtr& i_joint);
  void releaseControl(const ClumGeometryShPtr& i_geometry);
  void insertUnchecked(const ClumGeometryShPtr& i_geometry, unsigned int i_rank);
  void eraseUnchecked(unsigned int i_rank);
  /// The device's toolkit, or the default one.
  ClumCollisionToolkitShPtr toolkit() const;
  template <class FUNCTION>
  void forEachTest(FUNCTION i_function) const;

  std::vector<ClumGeometryShPtr> m_mobileGeometries;
  std::vector<ClumMat4> m_relativePositions; ///< of each geometry, in the body frame
  std::vector<ClumGeometryShPtr> m_controlled;  ///< those whose control the joint took
  ClumGeometryShPtr m_mobileGroup;
  double m_toleranceModifier = 0.0;
  bool m_toleranceActivation = true;
};
