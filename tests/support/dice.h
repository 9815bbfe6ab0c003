#pragma once

#include "foundation/lumMat4.h"
#include "foundation/lumPoint3.h"
#include "foundation/lumVect3.h"

#include <cstddef>
#include <random>

/// Numbers, vectors and frames that a seed repeats on every platform.
class Dice
{
public:
  explicit Dice(unsigned int i_seed) : m_engine(i_seed) {}
  double operator()(double i_low, double i_high) { return i_low + (i_high - i_low) * (m_engine() / 4294967296.0); }
  unsigned int rank(std::size_t i_count) { return static_cast<unsigned int>(m_engine() % i_count); }
  ClumVect3 vector(double i_reach)
  {
    const double x = (*this)(-i_reach, i_reach), y = (*this)(-i_reach, i_reach);
    return ClumVect3(x, y, (*this)(-i_reach, i_reach));
  }
  ClumPoint3 point(double i_reach) { return ClumPoint3(vector(i_reach)); }
  ClumMat4 pose(double i_reach)
  {
    ClumMat4 frame;
    const ClumVect3 axis = vector(1.0);
    frame.rotate(axis, (*this)(-3.1, 3.1));
    frame.setTranslation(vector(i_reach));
    return frame;
  }

private:
  std::mt19937 m_engine;
};

inline ClumMat4 placedAt(double i_x, double i_y, double i_z)
{
  ClumMat4 frame;
  frame.translate(i_x, i_y, i_z);
  return frame;
}
