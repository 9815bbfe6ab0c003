#include "foundation/lumProximityKernel.h"

// The kernel in plain C++, for every machine.

namespace
{
struct TFloats
{
  float lanes[8];

  TFloats() = default;
  explicit TFloats(float v)
  {
    for (float& lane : lanes)
      lane = v;
  }
  explicit TFloats(const float* v)
  {
    for (int k = 0; k < 8; ++k)
      lanes[k] = v[k];
  }
  void store(float* o) const
  {
    for (int k = 0; k < 8; ++k)
      o[k] = lanes[k];
  }
};

struct TDoubles
{
  double lanes[4];

  TDoubles() = default;
  explicit TDoubles(double v)
  {
    for (double& lane : lanes)
      lane = v;
  }
  explicit TDoubles(const double* v)
  {
    for (int k = 0; k < 4; ++k)
      lanes[k] = v[k];
  }
  void storeAnywhere(double* o) const { store(o); }
  void store(double* o) const
  {
    for (int k = 0; k < 4; ++k)
      o[k] = lanes[k];
  }
};

struct TMask
{
  bool bits[4];

  unsigned int lanes() const { return bits[0] | bits[1] << 1 | bits[2] << 2 | bits[3] << 3; }
  bool any() const { return lanes() != 0; }
  bool all() const { return lanes() == 15; }
  bool none() const { return lanes() == 0; }
};

template <class T, class F>
inline T each(const T& a, const T& b, F f)
{
  T r = a;
  for (unsigned int k = 0; k < sizeof a.lanes / sizeof a.lanes[0]; ++k)
    r.lanes[k] = f(a.lanes[k], b.lanes[k]);
  return r;
}
template <class F>
inline TMask compare(const TDoubles& a, const TDoubles& b, F f)
{
  TMask m;
  for (int k = 0; k < 4; ++k)
    m.bits[k] = f(a.lanes[k], b.lanes[k]);
  return m;
}

inline TFloats operator+(const TFloats& a, const TFloats& b)
{
  return each(a, b, [](float x, float y) { return x + y; });
}
inline TFloats operator-(const TFloats& a, const TFloats& b)
{
  return each(a, b, [](float x, float y) { return x - y; });
}
inline TFloats operator*(const TFloats& a, const TFloats& b)
{
  return each(a, b, [](float x, float y) { return x * y; });
}
inline TFloats operator/(const TFloats& a, const TFloats& b)
{
  return each(a, b, [](float x, float y) { return x / y; });
}
inline TFloats larger(const TFloats& a, const TFloats& b)
{
  return each(a, b, [](float x, float y) { return x > y ? x : y; });
}
inline TFloats smaller(const TFloats& a, const TFloats& b)
{
  return each(a, b, [](float x, float y) { return x < y ? x : y; });
}
inline TFloats magnitude(const TFloats& a)
{
  return each(a, a, [](float x, float) { return __builtin_fabsf(x); });
}
/// `i_then` where a > b, otherwise `i_else`.
inline TFloats pick(const TFloats& a, const TFloats& b, const TFloats& i_then, const TFloats& i_else)
{
  TFloats r = i_else;
  for (int k = 0; k < 8; ++k)
    if (a.lanes[k] > b.lanes[k])
      r.lanes[k] = i_then.lanes[k];
  return r;
}
inline unsigned int lanesBelow(const TFloats& a, const TFloats& b)
{
  unsigned int lanes = 0;
  for (int k = 0; k < 8; ++k)
    lanes |= static_cast<unsigned int>(a.lanes[k] < b.lanes[k]) << k;
  return lanes;
}

inline TFloats squareRoot(const TFloats& a)
{
  return each(a, a, [](float x, float) { return __builtin_sqrtf(x); });
}
/// The least of all lanes, in every lane.
inline TFloats least(const TFloats& a)
{
  float found = a.lanes[0];
  for (int k = 1; k < 8; ++k)
    found = a.lanes[k] < found ? a.lanes[k] : found;
  return TFloats(found);
}
inline float first(const TFloats& a)
{
  return a.lanes[0];
}
inline unsigned int lanesOf(const TFloats& a, const TFloats& b)
{
  unsigned int lanes = 0;
  for (int k = 0; k < 8; ++k)
    lanes |= static_cast<unsigned int>(a.lanes[k] == b.lanes[k]) << k;
  return lanes;
}
/// A large number in the lanes that are not named.
inline TFloats only(const TFloats& a, unsigned int i_lanes)
{
  TFloats r = a;
  for (int k = 0; k < 8; ++k)
    r.lanes[k] = i_lanes >> k & 1u ? a.lanes[k] : PROXIMITY_LARGEST;
  return r;
}

struct TQuad
{
  float lanes[4];

  TQuad() = default;
  explicit TQuad(float v)
  {
    for (float& lane : lanes)
      lane = v;
  }
  TQuad(float x, float y, float z) : lanes{x, y, z, 0.0f} {}
  explicit TQuad(const float* v)
  {
    for (int k = 0; k < 4; ++k)
      lanes[k] = v[k];
  }
};
inline TQuad operator+(const TQuad& a, const TQuad& b)
{
  return each(a, b, [](float x, float y) { return x + y; });
}
inline TQuad operator*(const TQuad& a, const TQuad& b)
{
  return each(a, b, [](float x, float y) { return x * y; });
}
/// One of the four, in every lane.
template <int LANE>
inline TFloats spread(const TQuad& a)
{
  return TFloats(a.lanes[LANE]);
}

inline TDoubles operator+(const TDoubles& a, const TDoubles& b)
{
  return each(a, b, [](double x, double y) { return x + y; });
}
inline TDoubles operator-(const TDoubles& a, const TDoubles& b)
{
  return each(a, b, [](double x, double y) { return x - y; });
}
inline TDoubles operator*(const TDoubles& a, const TDoubles& b)
{
  return each(a, b, [](double x, double y) { return x * y; });
}
inline TDoubles operator/(const TDoubles& a, const TDoubles& b)
{
  return each(a, b, [](double x, double y) { return x / y; });
}
inline TDoubles squareRoot(const TDoubles& a)
{
  return each(a, a, [](double x, double) { return __builtin_sqrt(x); });
}
inline TDoubles larger(const TDoubles& a, const TDoubles& b)
{
  return each(a, b, [](double x, double y) { return x > y ? x : y; });
}
inline TDoubles smaller(const TDoubles& a, const TDoubles& b)
{
  return each(a, b, [](double x, double y) { return x < y ? x : y; });
}
inline TDoubles magnitude(const TDoubles& a)
{
  return each(a, a, [](double x, double) { return __builtin_fabs(x); });
}
inline TMask operator>(const TDoubles& a, const TDoubles& b)
{
  return compare(a, b, [](double x, double y) { return x > y; });
}
inline TMask operator<(const TDoubles& a, const TDoubles& b)
{
  return compare(a, b, [](double x, double y) { return x < y; });
}
inline TMask operator&(const TMask& a, const TMask& b)
{
  return {{a.bits[0] && b.bits[0], a.bits[1] && b.bits[1], a.bits[2] && b.bits[2], a.bits[3] && b.bits[3]}};
}
inline TMask operator|(const TMask& a, const TMask& b)
{
  return {{a.bits[0] || b.bits[0], a.bits[1] || b.bits[1], a.bits[2] || b.bits[2], a.bits[3] || b.bits[3]}};
}
inline TDoubles select(const TMask& m, const TDoubles& i_then, const TDoubles& i_else)
{
  TDoubles r = i_else;
  for (int k = 0; k < 4; ++k)
    if (m.bits[k])
      r.lanes[k] = i_then.lanes[k];
  return r;
}
} // namespace

#include "foundation/lumProximitySearch.h"

const CProximityKernel g_proximityPortable = {"portable", proximityDistance, proximityContact, proximityRay};
