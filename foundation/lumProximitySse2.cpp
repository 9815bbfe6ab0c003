#include "foundation/lumProximityKernel.h"

// The kernel for what every x86-64 machine has: two halves of a register each.

#ifdef LUM_PROXIMITY_X86
#include <emmintrin.h>

namespace
{
struct TFloats
{
  __m128 low, high;

  TFloats() = default;
  TFloats(__m128 i_low, __m128 i_high) : low(i_low), high(i_high) {}
  explicit TFloats(float v) : low(_mm_set1_ps(v)), high(low) {}
  explicit TFloats(const float* v) : low(_mm_load_ps(v)), high(_mm_load_ps(v + 4)) {}
  void store(float* o) const
  {
    _mm_store_ps(o, low);
    _mm_store_ps(o + 4, high);
  }
};

struct TDoubles
{
  __m128d low, high;

  TDoubles() = default;
  TDoubles(__m128d i_low, __m128d i_high) : low(i_low), high(i_high) {}
  explicit TDoubles(double v) : low(_mm_set1_pd(v)), high(low) {}
  explicit TDoubles(const double* v) : low(_mm_load_pd(v)), high(_mm_load_pd(v + 2)) {}
  void storeAnywhere(double* o) const
  {
    _mm_storeu_pd(o, low);
    _mm_storeu_pd(o + 2, high);
  }
  void store(double* o) const
  {
    _mm_store_pd(o, low);
    _mm_store_pd(o + 2, high);
  }
};

struct TMask
{
  __m128d low, high;

  unsigned int lanes() const { return static_cast<unsigned int>(_mm_movemask_pd(low) | _mm_movemask_pd(high) << 2); }
  bool any() const { return lanes() != 0; }
  bool all() const { return lanes() == 15; }
  bool none() const { return lanes() == 0; }
};

inline TFloats operator+(const TFloats& a, const TFloats& b)
{
  return {_mm_add_ps(a.low, b.low), _mm_add_ps(a.high, b.high)};
}
inline TFloats operator-(const TFloats& a, const TFloats& b)
{
  return {_mm_sub_ps(a.low, b.low), _mm_sub_ps(a.high, b.high)};
}
inline TFloats operator*(const TFloats& a, const TFloats& b)
{
  return {_mm_mul_ps(a.low, b.low), _mm_mul_ps(a.high, b.high)};
}
inline TFloats operator/(const TFloats& a, const TFloats& b)
{
  return {_mm_div_ps(a.low, b.low), _mm_div_ps(a.high, b.high)};
}
inline TFloats larger(const TFloats& a, const TFloats& b)
{
  return {_mm_max_ps(a.low, b.low), _mm_max_ps(a.high, b.high)};
}
inline TFloats smaller(const TFloats& a, const TFloats& b)
{
  return {_mm_min_ps(a.low, b.low), _mm_min_ps(a.high, b.high)};
}
inline TFloats magnitude(const TFloats& a)
{
  const __m128 sign = _mm_set1_ps(-0.0f);
  return {_mm_andnot_ps(sign, a.low), _mm_andnot_ps(sign, a.high)};
}
inline __m128 pickHalf(__m128 m, __m128 i_then, __m128 i_else)
{
  return _mm_or_ps(_mm_and_ps(m, i_then), _mm_andnot_ps(m, i_else));
}
/// `i_then` where a > b, otherwise `i_else`.
inline TFloats pick(const TFloats& a, const TFloats& b, const TFloats& i_then, const TFloats& i_else)
{
  return {pickHalf(_mm_cmpgt_ps(a.low, b.low), i_then.low, i_else.low),
          pickHalf(_mm_cmpgt_ps(a.high, b.high), i_then.high, i_else.high)};
}
inline unsigned int lanesBelow(const TFloats& a, const TFloats& b)
{
  return static_cast<unsigned int>(_mm_movemask_ps(_mm_cmplt_ps(a.low, b.low)) |
                                   _mm_movemask_ps(_mm_cmplt_ps(a.high, b.high)) << 4);
}

inline TFloats squareRoot(const TFloats& a)
{
  return {_mm_sqrt_ps(a.low), _mm_sqrt_ps(a.high)};
}
/// The least of all lanes, in every lane.
inline TFloats least(const TFloats& a)
{
  const __m128 four = _mm_min_ps(a.low, a.high);
  const __m128 two = _mm_min_ps(four, _mm_shuffle_ps(four, four, 0x4e));
  const __m128 one = _mm_min_ps(two, _mm_shuffle_ps(two, two, 0xb1));
  return {one, one};
}
inline float first(const TFloats& a)
{
  return _mm_cvtss_f32(a.low);
}
inline unsigned int lanesOf(const TFloats& a, const TFloats& b)
{
  return static_cast<unsigned int>(_mm_movemask_ps(_mm_cmpeq_ps(a.low, b.low)) |
                                   _mm_movemask_ps(_mm_cmpeq_ps(a.high, b.high)) << 4);
}
/// A large number in the lanes that are not named.
inline TFloats only(const TFloats& a, unsigned int i_lanes)
{
  const __m128i lanes = _mm_set1_epi32(static_cast<int>(i_lanes));
  const __m128i lowBits = _mm_setr_epi32(1, 2, 4, 8), highBits = _mm_setr_epi32(16, 32, 64, 128);
  const __m128 large = _mm_set1_ps(PROXIMITY_LARGEST);
  return {pickHalf(_mm_castsi128_ps(_mm_cmpeq_epi32(_mm_and_si128(lanes, lowBits), lowBits)), a.low, large),
          pickHalf(_mm_castsi128_ps(_mm_cmpeq_epi32(_mm_and_si128(lanes, highBits), highBits)), a.high, large)};
}

struct TQuad
{
  __m128 lanes;

  TQuad() = default;
  TQuad(__m128 i_lanes) : lanes(i_lanes) {}
  explicit TQuad(float v) : lanes(_mm_set1_ps(v)) {}
  explicit TQuad(const float* v) : lanes(_mm_load_ps(v)) {}
  TQuad(float x, float y, float z) : lanes(_mm_setr_ps(x, y, z, 0.0f)) {}
};
inline TQuad operator+(const TQuad& a, const TQuad& b)
{
  return _mm_add_ps(a.lanes, b.lanes);
}
inline TQuad operator*(const TQuad& a, const TQuad& b)
{
  return _mm_mul_ps(a.lanes, b.lanes);
}
/// One of the four, in every lane.
template <int LANE>
inline TFloats spread(const TQuad& a)
{
  const __m128 lane = _mm_shuffle_ps(a.lanes, a.lanes, LANE * 0x55);
  return {lane, lane};
}

inline TDoubles operator+(const TDoubles& a, const TDoubles& b)
{
  return {_mm_add_pd(a.low, b.low), _mm_add_pd(a.high, b.high)};
}
inline TDoubles operator-(const TDoubles& a, const TDoubles& b)
{
  return {_mm_sub_pd(a.low, b.low), _mm_sub_pd(a.high, b.high)};
}
inline TDoubles operator*(const TDoubles& a, const TDoubles& b)
{
  return {_mm_mul_pd(a.low, b.low), _mm_mul_pd(a.high, b.high)};
}
inline TDoubles operator/(const TDoubles& a, const TDoubles& b)
{
  return {_mm_div_pd(a.low, b.low), _mm_div_pd(a.high, b.high)};
}
inline TDoubles squareRoot(const TDoubles& a)
{
  return {_mm_sqrt_pd(a.low), _mm_sqrt_pd(a.high)};
}
inline TDoubles larger(const TDoubles& a, const TDoubles& b)
{
  return {_mm_max_pd(a.low, b.low), _mm_max_pd(a.high, b.high)};
}
inline TDoubles smaller(const TDoubles& a, const TDoubles& b)
{
  return {_mm_min_pd(a.low, b.low), _mm_min_pd(a.high, b.high)};
}
inline TDoubles magnitude(const TDoubles& a)
{
  const __m128d sign = _mm_set1_pd(-0.0);
  return {_mm_andnot_pd(sign, a.low), _mm_andnot_pd(sign, a.high)};
}
inline TMask operator>(const TDoubles& a, const TDoubles& b)
{
  return {_mm_cmpgt_pd(a.low, b.low), _mm_cmpgt_pd(a.high, b.high)};
}
inline TMask operator<(const TDoubles& a, const TDoubles& b)
{
  return {_mm_cmplt_pd(a.low, b.low), _mm_cmplt_pd(a.high, b.high)};
}
inline TMask operator&(const TMask& a, const TMask& b)
{
  return {_mm_and_pd(a.low, b.low), _mm_and_pd(a.high, b.high)};
}
inline TMask operator|(const TMask& a, const TMask& b)
{
  return {_mm_or_pd(a.low, b.low), _mm_or_pd(a.high, b.high)};
}
inline __m128d selectHalf(__m128d m, __m128d i_then, __m128d i_else)
{
  return _mm_or_pd(_mm_and_pd(m, i_then), _mm_andnot_pd(m, i_else));
}
inline TDoubles select(const TMask& m, const TDoubles& i_then, const TDoubles& i_else)
{
  return {selectHalf(m.low, i_then.low, i_else.low), selectHalf(m.high, i_then.high, i_else.high)};
}
} // namespace

#include "foundation/lumProximitySearch.h"

const CProximityKernel g_proximitySse2 = {"SSE2", proximityDistance, proximityContact, proximityRay};
#endif
