#pragma once

#include "foundation/lumGeometryUtilities.h"
#include "foundation/lumMath.h"
#include "foundation/lumPoint3.h"

#include <vector>

/// Sides of the polygons that stand for circles: in collision tests, and in enclosures.
constexpr unsigned int LUM_CIRCLE_SIDES = 256;
constexpr unsigned int LUM_ENCLOSURE_SIDES = 12;

/// Appends the corners of the regular polygon around a circle about the z axis, a little outside of it so that no
/// rounding cuts into the circle.
inline void lumAppendCircumscribed(double i_radius, double i_z, unsigned int i_sides,
                                   std::vector<ClumPoint3>& io_corners)
{
  const double step = 2.0 * ClumGeometryUtilities::PI / i_sides;
  const double reach = i_radius / lumCos(0.5 * step) * (1.0 + 1e-14);
  for (unsigned int i = 0; i < i_sides; ++i)
  {
    double sine = 0.0, cosine = 0.0;
    lumSinCos(i * step, sine, cosine);
    io_corners.emplace_back(reach * cosine, reach * sine, i_z);
  }
}

/// How far that polygon reaches beyond the circle.
inline double lumCircumscribedExcess(double i_radius, unsigned int i_sides)
{
  return i_radius * (1.0 / lumCos(ClumGeometryUtilities::PI / i_sides) - 1.0 + 1e-13);
}
