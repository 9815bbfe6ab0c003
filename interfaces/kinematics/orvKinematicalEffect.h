#pragma once

#include "foundation/lumCodable.h"
#include "kinematics/handles.h"

/// The mathematics of one joint: a map from a few dof values to a rigid frame, with inverse, derivatives and
/// velocities.
///
/// An effect is made once and then only read; what changes is its space, through the dofs. The pointer forms take as
/// many values as the space has dofs; they keep no state, allocate nothing and may be called from several threads.
/// Every form answers -1 to a null pointer, to a vector of another size and to a rank out of range, and then leaves its
/// output alone.
class LUM_API CorvKinematicalEffect : public ClumMutableCodable
{
  LUM_ABSTRACT(CorvKinematicalEffect, ClumMutableCodable);

public:
  ~CorvKinematicalEffect() override;

  /// A deep copy, with a space of its own.
  virtual CorvKinematicalEffectShPtr clone() const = 0;

  const std::string& type() const { return m_type; }
  /// The space of the effect's dofs. Never null.
  const CorvConfigSpaceShPtr& configSpace() const { return m_configSpace; }

  virtual lmStatus forward(const double* i_values, ClumMat4& o_mat) const = 0;
  /// The values, in the range that `atan2` gives for angles, whose `forward` is the frame; for a frame that the effect
  /// cannot reach, values of a nearby one.
  virtual lmStatus inverse(const ClumMat4& i_mat, double* o_values) const = 0;
  /// The partial derivative of the frame with respect to one dof; the last row is zero.
  virtual lmStatus forwardDerivate(const double* i_values, unsigned int i_rank, ClumMat4& o_mat) const = 0;
  virtual lmStatus forwardSecondDerivate(const std::vector<double>& i_values, unsigned int i_rank1,
                                         unsigned int i_rank2, ClumMat4& o_mat) const;
  /// @return -1 where the effect offers no second derivative.
  virtual lmStatus forwardSecondDerivate(const double* i_values, unsigned int i_rank1, unsigned int i_rank2,
                                         ClumMat4& o_mat) const = 0;
  /// Upper bounds of the frame's linear and angular speed at any values, for these rates of the dofs.
  virtual lmStatus forwardVelocity(const double* i_velocities, double& o_linear, double& o_angular) const = 0;
  /// Rates of the dofs that give the frame a velocity, as far as the effect can.
  virtual lmStatus inverseVelocity(double i_vx, double i_vy, double i_vz, double i_angular, const ClumVect3& i_axis,
                                   std::vector<double>& o_velocities) const = 0;
  /// Equal type and equal space.
  virtual bool operator==(const CorvKinematicalEffect& i_other) const;
  bool operator!=(const CorvKinematicalEffect& i_other) const { return !(*this == i_other); }

  /// The identity if the size is wrong.
  ClumMat4 forward(const std::vector<double>& i_values) const;
  lmStatus forward(const std::vector<double>& i_values, ClumMat4& o_mat) const;
  lmStatus forward(const CorvConfig& i_cfg, ClumMat4& o_mat) const;
  /// Empty if there is no inverse.
  std::vector<double> inverse(const ClumMat4& i_mat) const;
  lmStatus inverse(const ClumMat4& i_mat, std::vector<double>& o_values) const;
  lmStatus inverse(const ClumMat4& i_mat, CorvConfig& o_cfg) const;
  lmStatus forwardDerivate(const std::vector<double>& i_values, unsigned int i_rank, ClumMat4& o_mat) const;
  lmStatus forwardDerivate(const CorvConfig& i_cfg, unsigned int i_rank, ClumMat4& o_mat) const;
  lmStatus forwardSecondDerivate(const CorvConfig& i_cfg, unsigned int i_rank1, unsigned int i_rank2,
                                 ClumMat4& o_mat) const;
  lmStatus forwardVelocity(const std::vector<double>& i_velocities, double& o_linear, double& o_angular) const;
  /// @param i_velocities read as a vector of rates.
  lmStatus forwardVelocity(const CorvConfig& i_velocities, double& o_linear, double& o_angular) const;

  /// The direction about which, or else along which, a dof moves the frame at a configuration, in the coordinates of
  /// the frame's parent and of length 1.
  lmStatus getAxisHint(const CorvConfig& i_cfg, unsigned int i_rank, ClumVect3& o_axis) const;

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

protected:
  CorvKinematicalEffect() = default;
  CorvKinematicalEffect(const CorvConfigSpaceShPtr& i_configSpace, const std::string& i_type);
  CorvKinematicalEffect(const CorvKinematicalEffect& i_other) = default;
  /// @return -1 if the type is empty or the space null.
  lmStatus init(const CorvKinematicalEffectWkPtr& i_weakPtr);
  lmStatus init(const CorvKinematicalEffectWkPtr& i_weakPtr, const CorvKinematicalEffectConstShPtr& i_source);

  /// True if both have equally many dofs.
  bool hasSizeOf(const CorvKinematicalEffect& i_other) const;

  /// A space of several dofs: revolute or not, in order.
  static CorvConfigSpaceShPtr makeSpaceOfDofs(const std::vector<bool>& i_areRevolute, const std::string& i_type);

private:
  bool hasSize(std::size_t i_count) const;

  std::string m_type;
  CorvConfigSpaceShPtr m_configSpace;
};

/// Declares what every concrete effect overrides, beside the base's convenient forms of the same names.
#define ORV_EFFECT_OPERATIONS                                                                                          \
public:                                                                                                                \
  using CorvKinematicalEffect::forward;                                                                                \
  using CorvKinematicalEffect::forwardDerivate;                                                                        \
  using CorvKinematicalEffect::forwardSecondDerivate;                                                                  \
  using CorvKinematicalEffect::forwardVelocity;                                                                        \
  using CorvKinematicalEffect::inverse;                                                                                \
  lmStatus forward(const double* i_values, ClumMat4& o_mat) const override;                                            \
  lmStatus inverse(const ClumMat4& i_mat, double* o_values) const override;                                            \
  lmStatus forwardDerivate(const double* i_values, unsigned int i_rank, ClumMat4& o_mat) const override;               \
  lmStatus forwardSecondDerivate(const double* i_values, unsigned int i_rank1, unsigned int i_rank2, ClumMat4& o_mat)  \
    const override;                                                                                                    \
  lmStatus forwardVelocity(const double* i_velocities, double& o_linear, double& o_angular) const override;            \
  lmStatus inverseVelocity(double i_vx, double i_vy, double i_vz, double i_angular, const ClumVect3& i_axis,           \
                           std::vector<double>& o_velocities) const override;                                          \
                                                                                                                       \
private:

/// What every concrete effect has alike: `create`, `createCopy` and `clone`.
///
/// `LEAF::TYPE` is the default type key; `BASE` is made from the arguments that the leaf passes on.
template <class LEAF, class BASE>
class TorvKELeaf : public BASE
{
public:
  /// @return null if the type is empty.
  static ShPtr<LEAF> create(const std::string& i_type = LEAF::TYPE) { return lumCreate<LEAF>(i_type); }
  static ShPtr<LEAF> createCopy(const ShPtr<const LEAF>& i_objectToCopy) { return lumCreateCopy(i_objectToCopy); }
  CorvKinematicalEffectShPtr clone() const override { return createCopy(static_cast<const LEAF&>(*this).self()); }

  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override
  {
    static const ShPtr<LEAF> s_model = create();
    const lmStatus status = BASE::initWithCoder(i_coder, i_self);
    return status.failed() || this->hasSizeOf(*s_model) ? status : lmStatus(lmStatus::FAILURE);
  }

protected:
  TorvKELeaf() = default;
  using BASE::BASE;
};
