#pragma once

#include "foundation/lumExport.h"

#include <vector>

/// A vector of doubles of any size. A value class.
///
/// Operands of one operation have the same size: otherwise the operation asserts and gives an empty vector or 0.
class LUM_API ClumVect
{
public:
  ClumVect() = default;
  /// Zeros.
  explicit ClumVect(unsigned int i_size) : m_values(i_size, 0.0) {}
  ClumVect(unsigned int i_size, double i_value) : m_values(i_size, i_value) {}

  unsigned int size() const { return static_cast<unsigned int>(m_values.size()); }
  double operator[](unsigned int i_rank) const { return m_values[i_rank]; }
  double& operator[](unsigned int i_rank) { return m_values[i_rank]; }
  const double* data() const { return m_values.data(); }
  double* data() { return m_values.data(); }

  ClumVect operator+(const ClumVect& i_other) const;
  ClumVect operator-(const ClumVect& i_other) const;
  ClumVect operator*(double i_factor) const;
  /// The scalar product.
  double operator*(const ClumVect& i_other) const;
  double norm() const;

private:
  std::vector<double> m_values;
};
