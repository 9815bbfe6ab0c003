#include "foundation/lumVect.h"

#include "foundation/lumAssert.h"

#include <Eigen/Core>

namespace
{
using TVectorView = Eigen::Map<Eigen::VectorXd>;
using TConstVectorView = Eigen::Map<const Eigen::VectorXd>;

TVectorView vectorView(ClumVect& i_vector)
{
  return TVectorView(i_vector.data(), i_vector.size());
}

TConstVectorView vectorView(const ClumVect& i_vector)
{
  return TConstVectorView(i_vector.data(), i_vector.size());
}
} // namespace

ClumVect ClumVect::operator+(const ClumVect& i_other) const
{
  LUM_ASSERT(size() == i_other.size());
  if (size() != i_other.size())
    return ClumVect();
  ClumVect result(size());
  vectorView(result) = vectorView(*this) + vectorView(i_other);
  return result;
}

ClumVect ClumVect::operator-(const ClumVect& i_other) const
{
  LUM_ASSERT(size() == i_other.size());
  if (size() != i_other.size())
    return ClumVect();
  ClumVect result(size());
  vectorView(result) = vectorView(*this) - vectorView(i_other);
  return result;
}

ClumVect ClumVect::operator*(double i_factor) const
{
  ClumVect result(size());
  vectorView(result) = vectorView(*this) * i_factor;
  return result;
}

double ClumVect::operator*(const ClumVect& i_other) const
{
  LUM_ASSERT(size() == i_other.size());
  if (size() != i_other.size())
    return 0.0;
  // Summed in order: a blocked sum would depend on the instruction set.
  double sum = 0.0;
  for (unsigned int i = 0; i < size(); ++i)
    sum += m_values[i] * i_other.m_values[i];
  return sum;
}

double ClumVect::norm() const
{
  return std::sqrt(*this * *this);
}
