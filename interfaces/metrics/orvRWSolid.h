#pragma once

#include "metrics/orvRandomWalk.h"

/// Moves the pose that a joint's kinematical effect gives to a configuration, and takes the configuration of the new
/// pose. The joint is held weakly.
class LUM_API CorvRWSolid : public CorvRandomWalk
{
  LUM_CONST_ABSTRACT(CorvRWSolid, CorvRandomWalk);

public:
  ~CorvRWSolid() override;

  CorvJointShPtr joint() const;
  void joint(const CorvJointShPtr& i_joint);
  /// The joint's `maxSweep()`, 0 without a joint.
  double lever() const;

  void step(double i_size, CorvConfig& io_cfg) const override;

  /// Gives the joint of a space, or of its device's root, to the walk of the space and to those of its sub-spaces.
  static void repairSpace(const CorvConfigSpaceShPtr& i_space);

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

  virtual void stepSolid(double i_size, ClumMat4& io_pose) const = 0;

protected:
  CorvRWSolid() = default;
  CorvRWSolid(const CorvJointShPtr& i_joint, const CorvRandomDistributionConstShPtr& i_distribution);
  CorvRWSolid(const CorvRWSolid&) = default;
  lmStatus init(const CorvRWSolidWkPtr& i_weakPtr);

private:
  CorvJointWkPtr m_joint;
};
