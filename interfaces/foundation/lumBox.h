#pragma once

#include "foundation/lumLeafGeometry.h"

/// A solid box around the origin of its frame.
class LUM_API ClumBox : public ClumLeafGeometry
{
  LUM_CONCRETE(ClumBox, ClumLeafGeometry);

public:
  ~ClumBox() override;
  /// @return null unless all sizes are finite and above 0.
  static ClumBoxShPtr create(double i_sizeX, double i_sizeY, double i_sizeZ);
  static ClumBoxShPtr createCopy(const ClumBoxConstShPtr& i_objectToCopy);
  ClumGeometryShPtr clone() const override;

  double sizeX() const { return m_size[0]; }
  double sizeY() const { return m_size[1]; }
  double sizeZ() const { return m_size[2]; }

  void getBoundingBox(ClumPoint3& o_lowest, ClumPoint3& o_highest) const override;
  void getSweptTriangles(ClumSweptTriangles& o_shape) const override;

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

protected:
  ClumBox() = default;
  ClumBox(double i_sizeX, double i_sizeY, double i_sizeZ);
  ClumBox(const ClumBox& i_other) = default;
  lmStatus init(const ClumBoxWkPtr& i_weakPtr);

private:
  bool areSizesSound() const;

  double m_size[3] = {1.0, 1.0, 1.0};
};
