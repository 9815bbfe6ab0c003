#pragma once

#include "foundation/lumVect.h"

/// A dense matrix of doubles of any size, kept column after column. A value class.
///
/// Sizes of operands have to match: otherwise the operation asserts and gives an empty result.
class LUM_API ClumMat
{
public:
  ClumMat() = default;
  /// Zeros.
  ClumMat(unsigned int i_height, unsigned int i_width) : ClumMat(i_height, i_width, 0.0) {}
  ClumMat(unsigned int i_height, unsigned int i_width, double i_value);

  unsigned int height() const { return m_height; }
  unsigned int width() const { return m_width; }
  double operator()(unsigned int i_row, unsigned int i_column) const { return m_values[i_column * m_height + i_row]; }
  double& operator()(unsigned int i_row, unsigned int i_column) { return m_values[i_column * m_height + i_row]; }
  const double* data() const { return m_values.data(); }
  double* data() { return m_values.data(); }

  ClumMat operator-(const ClumMat& i_other) const;
  ClumMat operator*(const ClumMat& i_other) const;
  ClumVect operator*(const ClumVect& i_vector) const;
  /// The transpose.
  ClumMat t() const;
  /// The determinant of a square matrix: 1 for an empty one.
  double det() const;

private:
  unsigned int m_height = 0;
  unsigned int m_width = 0;
  std::vector<double> m_values;
};
