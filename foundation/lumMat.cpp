#include "foundation/lumMat.h"

#include "foundation/lumAssert.h"

#include <Eigen/LU>

namespace
{
using TMatrixView = Eigen::Map<Eigen::MatrixXd>;
using TConstMatrixView = Eigen::Map<const Eigen::MatrixXd>;

TMatrixView matrixView(ClumMat& i_matrix)
{
  return TMatrixView(i_matrix.data(), i_matrix.height(), i_matrix.width());
}

TConstMatrixView matrixView(const ClumMat& i_matrix)
{
  return TConstMatrixView(i_matrix.data(), i_matrix.height(), i_matrix.width());
}
} // namespace

ClumMat::ClumMat(unsigned int i_height, unsigned int i_width, double i_value)
  : m_height(i_height), m_width(i_width), m_values(static_cast<std::size_t>(i_height) * i_width, i_value)
{
}

ClumMat ClumMat::operator-(const ClumMat& i_other) const
{
  const bool isSameSize = m_height == i_other.m_height && m_width == i_other.m_width;
  LUM_ASSERT(isSameSize);
  if (!isSameSize)
    return ClumMat();
  ClumMat result(m_height, m_width);
  matrixView(result) = matrixView(*this) - matrixView(i_other);
  return result;
}

ClumMat ClumMat::operator*(const ClumMat& i_other) const
{
  LUM_ASSERT(m_width == i_other.m_height);
  if (m_width != i_other.m_height)
    return ClumMat();
  ClumMat result(m_height, i_other.m_width);
  for (unsigned int c = 0; c < i_other.m_width; ++c)
    for (unsigned int k = 0; k < m_width; ++k)
      for (unsigned int r = 0; r < m_height; ++r)
        result(r, c) += (*this)(r, k) * i_other(k, c);
  return result;
}

ClumVect ClumMat::operator*(const ClumVect& i_vector) const
{
  LUM_ASSERT(m_width == i_vector.size());
  if (m_width != i_vector.size())
    return ClumVect();
  ClumVect result(m_height);
  for (unsigned int k = 0; k < m_width; ++k)
    for (unsigned int r = 0; r < m_height; ++r)
      result[r] += (*this)(r, k) * i_vector[k];
  return result;
}

ClumMat ClumMat::t() const
{
  ClumMat result(m_width, m_height);
  matrixView(result) = matrixView(*this).transpose();
  return result;
}

double ClumMat::det() const
{
  LUM_ASSERT(m_height == m_width);
  if (m_height != m_width)
    return 0.0;
  return m_height == 0 ? 1.0 : Eigen::PartialPivLU<Eigen::MatrixXd>(matrixView(*this)).determinant();
}
