#pragma once

#include "paths/orvDirectPath.h"

/// A direct path seen through a sub-space of its space.
class LUM_API CorvDPRestriction : public CorvDirectPath
{
  LUM_CONCRETE(CorvDPRestriction, CorvDirectPath);

public:
  ~CorvDPRestriction() override;
  /// @return null if an argument is null or `i_space` is no sub-space of the path's space.
  static CorvDPRestrictionShPtr create(const CorvDirectPathShPtr& i_directPath, const CorvConfigSpaceShPtr& i_space);
  static CorvDPRestrictionShPtr createCopy(const CorvDPRestrictionConstShPtr& i_objectToCopy);
  CorvAbstractPathShPtr clone() const override;

  const CorvDirectPathShPtr& directPath() const { return m_directPath; }
  const CorvConfigSpaceShPtr& restrictionSpace() const { return m_restrictionSpace; }

  /// Not to be called: raises an assertion, and answers infinite rates.
  void maxAbsoluteDerivative(double i_from, double i_to, std::vector<double>& o_derivatives) const override;
  /// Only to a space that lies in the wrapped path's, which is converted too.
  lmStatus convert(const CorvConfigSpaceShPtr& i_space) override;

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

protected:
  CorvDPRestriction() = default;
  CorvDPRestriction(const CorvDirectPathShPtr& i_directPath, const CorvConfigSpaceShPtr& i_space);
  /// The copy owns a copy of the direct path.
  CorvDPRestriction(const CorvDPRestriction& i_other);
  lmStatus init(const CorvDPRestrictionWkPtr& i_weakPtr);

  void interpolate(double i_distance, CorvConfig& io_cfg) const override;
  double computePrivateLength() const override;

private:
  CorvDirectPathShPtr m_directPath;
  CorvConfigSpaceShPtr m_restrictionSpace;
};
