#include "foundation/lumMat4.h"

#include "foundation/lumMath.h"

const ClumMat4 ClumMat4::IDENTITY;

void ClumMat4::rotate(const ClumVect3& i_axis, double i_angle)
{
  identity();
  const ClumVect3 u = i_axis.normalized();
  if (u.squaredNorm() == 0.0)
    return;
  double s = 0.0, c = 1.0;
  lumSinCos(i_angle, s, c);
  const double d = 1.0 - c;
  setColumnComponents(0, c + d * u.x() * u.x(), d * u.x() * u.y() + s * u.z(), d * u.x() * u.z() - s * u.y(), 0.0);
  setColumnComponents(1, d * u.x() * u.y() - s * u.z(), c + d * u.y() * u.y(), d * u.y() * u.z() + s * u.x(), 0.0);
  setColumnComponents(2, d * u.x() * u.z() + s * u.y(), d * u.y() * u.z() - s * u.x(), c + d * u.z() * u.z(), 0.0);
}

void ClumMat4::setAsFrameWithBaseVectorAxis(EBaseVector i_baseVector, const ClumVect3& i_axis)
{
  identity();
  const ClumVect3 first = i_baseVector < INVERSE_X_AXIS ? i_axis.normalized() : -i_axis.normalized();
  if (first.squaredNorm() == 0.0)
    return;
  // The base vector least aligned with the direction completes it best.
  unsigned int least = 0;
  for (unsigned int i = 1; i < 3; ++i)
    if (std::fabs(first[i]) < std::fabs(first[least]))
      least = i;
  ClumVect3 helper;
  helper[least] = 1.0;
  const ClumVect3 third = (first * helper).normalized();
  const ClumVect3 second = third * first;
  const ClumVect3* axes[] = {&first, &second, &third};
  for (unsigned int i = 0; i < 3; ++i)
    setColumnComponents((i_baseVector + i) % 3, axes[i]->x(), axes[i]->y(), axes[i]->z(), 0.0);
}

ClumMat4& ClumMat4::repair()
{
  const ClumVect3 position = translation();
  const ClumVect3 y = column(1);
  setAsFrameWithBaseVectorAxis(X_AXIS, column(0));
  const ClumVect3 x = xAxis();
  const ClumVect3 z = (x * y).normalized();
  // A rotation block whose first two axes are parallel keeps the completion that was just made.
  if (z.squaredNorm() > 0.0)
  {
    const ClumVect3 orthogonalY = z * x;
    setColumnComponents(1, orthogonalY.x(), orthogonalY.y(), orthogonalY.z(), 0.0);
    setColumnComponents(2, z.x(), z.y(), z.z(), 0.0);
  }
  setTranslation(position);
  return *this;
}
