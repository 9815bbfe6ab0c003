#pragma once

#include "foundation/lumLeafGeometry.h"

/// A solid of revolution about the z axis of its frame, told by a radius and a height, half of it on either side of the
/// origin. Both are finite, the radius is above 0.
class LUM_API ClumTurnedSolid : public ClumLeafGeometry
{
  LUM_UNREFLECTED(ClumTurnedSolid, ClumLeafGeometry);

public:
  ~ClumTurnedSolid() override;

  double radius() const { return m_radius; }
  double height() const { return m_height; }

  void getBoundingBox(ClumPoint3& o_lowest, ClumPoint3& o_highest) const override;

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

protected:
  /// @param i_hasBalls true for a solid that ends in half balls beyond its height; the height may then be 0.
  ClumTurnedSolid(double i_radius, double i_height, bool i_hasBalls)
    : m_radius(i_radius), m_height(i_height), m_hasBalls(i_hasBalls)
  {
  }
  ClumTurnedSolid(const ClumTurnedSolid& i_other) = default;
  /// Fails unless the sizes are sound.
  lmStatus init(const ClumTurnedSolidWkPtr& i_weakPtr);

private:
  bool areSizesSound() const;

  double m_radius;
  double m_height;
  bool m_hasBalls;
};
