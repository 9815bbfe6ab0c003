#pragma once

#include "kinematics/orvConfigSpace.h"

/// A degree of freedom: the leaf of every config space, itself a space of one dof.
///
/// A revolute dof is an angle in radians; unbounded, it closes on itself. A bounded dof keeps a validator of its bounds
/// among its configuration validators, a locked one a lock among its constraints. The metric follows the flags:
/// circular for a revolute unbounded dof, otherwise absolute, scaled for a revolute dof, and scaled again by the
/// weights that a client sets.
class LUM_API CorvDof : public CorvConfigSpace
{
  LUM_CONCRETE(CorvDof, CorvConfigSpace);

public:
  ~CorvDof() override;
  static CorvDofShPtr create(bool i_revolute);
  static CorvDofShPtr createCopy(const CorvDofConstShPtr& i_objectToCopy);

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

  unsigned int size() const override;
  CorvDofShPtr dof(unsigned int i_rank) const override;
  lmStatus getDofs(std::vector<CorvDofShPtr>& o_dofs) const override;
  /// Adds to the base's comparison revolute, bounded, the bounds and the tolerance; whether it is locked does not
  /// count.
  bool operator==(const CorvConfigSpace& i_other) const override;

  bool isRevolute() const { return m_isRevolute; }
  void isRevolute(bool i_isRevolute);
  bool isBounded() const { return m_isBounded; }
  void isBounded(bool i_isBounded);
  bool isLocked() const { return m_isLocked; }
  void isLocked(bool i_isLocked);

  double lowerBound() const { return m_lowerBound; }
  double upperBound() const { return m_upperBound; }
  double vmin() const { return m_lowerBound; }
  double vmax() const { return m_upperBound; }
  /// @return -1, with nothing changed, if `i_lower` exceeds `i_upper` or one is not a number.
  lmStatus bounds(double i_lower, double i_upper);
  /// Sets the bounds and makes the dof bounded.
  lmStatus boundWithin(double i_lower, double i_upper);
  lmStatus vmin(double i_lower) { return bounds(i_lower, m_upperBound); }
  lmStatus vmax(double i_upper) { return bounds(m_lowerBound, i_upper); }

  double lockedValue() const { return m_lockedValue; }
  void lockedValue(double i_value);
  void lockAt(double i_value);

  /// True if the dof can only take one value: locked, or bounded with equal bounds.
  bool isConstant() const;
  /// @return -1 if the dof is not constant.
  lmStatus getConstantValue(double& o_value) const;

  /// By the dof's metric.
  double distance(double i_a, double i_b) const;
  /// True within the tolerance, absolute or relative to the first of the two values that is not 0.
  bool equivalentValues(double i_a, double i_b) const;
  double tolerance() const { return m_tolerance; }
  void tolerance(double i_tolerance) { m_tolerance = i_tolerance; }

  /// The validator of the bounds, and the constraint of the lock; made on first use.
  CorvValidatorDofBoundsShPtr boundsValidator() const;
  CorvConstraintDofLockShPtr lockConstraint() const;

  /// Factors of the metric, 1 until set: one for the model, one for its user.
  double weightMultiplier() const;
  void weightMultiplier(double i_multiplier);
  double userWeightScaler() const;
  void userWeightScaler(double i_scaler);
  /// The product of all scales of the metric.
  double weight() const;
  /// The factor of an angle's metric, for dofs whose metric is made from now on. Default 0.5.
  static double revoluteWeightScaler();
  static void revoluteWeightScaler(double i_scaler);

protected:
  CorvDof();
  explicit CorvDof(bool i_revolute);
  lmStatus init(const CorvDofWkPtr& i_weakPtr);

private:
  void updateMetric();
  double scaleOfType(const std::string& i_type) const;
  void setScaleOfType(const std::string& i_type, double i_scale);
  void updateBounds();
  void updateLock();

  double m_tolerance = 1e-06;
  bool m_isRevolute = false;
  bool m_isBounded = false;
  bool m_isLocked = false;
  double m_lowerBound = 0.0;
  double m_upperBound = 0.0;
  double m_lockedValue = 0.0;
  mutable CorvValidatorDofBoundsShPtr m_boundsValidator;
  mutable CorvConstraintDofLockShPtr m_lockConstraint;
};
