#pragma once

#include "kinematics/orvKEPathMetric.h"
#include "kinematics/orvKinematicalEffect.h"
#include "paths/handles.h"

/// A motion along a path: the frame that a joint of some device takes while the device follows the path.
///
/// The one dof is the parameter along the path, bounded by [0, 1]; values beyond give the ends. The frame is the
/// joint's frame in its device, so that at 0 it is that of the path's start. There is no inverse, and there are no
/// derivatives. The velocity comes from the rates of the path and the levers of the device's joints; it fails where a
/// joint on the way depends on a dof that is not the path's, or that a constraint computes: no bound is known then.
///
/// The effect refers to path, joint and device, which copies share. A path that has been edited is given anew with
/// `path`.
class LUM_API CorvKEPath : public CorvKinematicalEffect
{
  LUM_CONCRETE(CorvKEPath, CorvKinematicalEffect);
  ORV_EFFECT_OPERATIONS

public:
  using CKEPathMetric = CorvKEPathMetric;

  static constexpr const char* TYPE = "orvane.core.kinematical-effect.path";

  ~CorvKEPath() override;
  /// Any of the handles may be null: `forward` then fails until it is given.
  static CorvKEPathShPtr create(const CorvPathConstShPtr& i_path, const CorvJointConstShPtr& i_joint,
                                const CorvDeviceConstShPtr& i_device, const std::string& i_type = TYPE);
  static CorvKEPathShPtr createCopy(const CorvKEPathConstShPtr& i_objectToCopy);
  CorvKinematicalEffectShPtr clone() const override;

  const CorvPathConstShPtr& path() const { return m_path; }
  void path(const CorvPathConstShPtr& i_path);
  const CorvJointConstShPtr& joint() const { return m_joint; }
  void joint(const CorvJointConstShPtr& i_joint);
  const CorvDeviceConstShPtr& device() const { return m_device; }
  void device(const CorvDeviceConstShPtr& i_device);

  /// The same path, joint and device, beside the base's.
  bool operator==(const CorvKinematicalEffect& i_other) const override;

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

protected:
  CorvKEPath() = default;
  CorvKEPath(const CorvPathConstShPtr& i_path, const CorvJointConstShPtr& i_joint, const CorvDeviceConstShPtr& i_device,
             const std::string& i_type);
  CorvKEPath(const CorvKEPath&) = default;
  lmStatus init(const CorvKEPathWkPtr& i_weakPtr);
  lmStatus init(const CorvKEPathWkPtr& i_weakPtr, const CorvKEPathConstShPtr& i_source);

private:
  void updateDofLimits();
  lmStatus initVelocityCacheValues() const;
  lmStatus getSpeedsOn(const CorvDirectPath& i_directPath, double& o_linear, double& o_angular) const;
  bool isMovedAsSolidBy(const CorvDirectPath& i_directPath) const;
  lmStatus getEffectSpeeds(const CorvJoint& i_joint, const CorvDirectPath& i_directPath,
                           const std::vector<double>& i_rates, double& o_linear, double& o_angular) const;

  CorvPathConstShPtr m_path;
  CorvJointConstShPtr m_joint;
  CorvDeviceConstShPtr m_device;
  mutable double m_linearVelocity = 0.0; ///< by parameter, if the cache is valid
  mutable double m_angularVelocity = 0.0;
  mutable bool m_isVelocityCacheValid = false;
};
