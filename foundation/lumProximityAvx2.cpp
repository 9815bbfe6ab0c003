#include "foundation/lumProximityKernel.h"

// The kernel for machines with AVX2. Compiled with -mavx2, and never with fused multiply-add.

#ifdef LUM_PROXIMITY_X86
#include <immintrin.h>

namespace
{
struct TFloats
{
  __m256 lanes;

  TFloats() = default;
  TFloats(__m256 i_lanes) : lanes(i_lanes) {}
  explicit TFloats(float v) : lanes(_mm256_set1_ps(v)) {}
  explicit TFloats(const float* v) : lanes(_mm256_load_ps(v)) {}
  void store(float* o) const { _mm256_store_ps(o, lanes); }
};

struct TDoubles
{
  __m256d lanes;

  TDoubles() = default;
  TDoubles(__m256d i_lanes) : lanes(i_lanes) {}
  explicit TDoubles(double v) : lanes(_mm256_set1_pd(v)) {}
  explicit TDoubles(const double* v) : lanes(_mm256_load_pd(v)) {}
  void storeAnywhere(double* o) const { _mm256_storeu_pd(o, lanes); }
  void store(double* o) const { _mm256_store_pd(o, lanes); }
};

struct TMask
{
  __m256d bits;

  unsigned int lanes() const { return static_cast<unsigned int>(_mm256_movemask_pd(bits)); }
  bool any() const { return lanes() != 0; }
  bool all() const { return lanes() == 15; }
  bool none() const { return lanes() == 0; }
};

inline TFloats operator+(const TFloats& a, const TFloats& b)
{
  return _mm256_add_ps(a.lanes, b.lanes);
}
inline TFloats operator-(const TFloats& a, const TFloats& b)
{
  return _mm256_sub_ps(a.lanes, b.lanes);
}
inline TFloats operator*(const TFloats& a, const TFloats& b)
{
  return _mm256_mul_ps(a.lanes, b.lanes);
}
inline TFloats operator/(const TFloats& a, const TFloats& b)
{
  return _mm256_div_ps(a.lanes, b.lanes);
}
inline TFloats larger(const TFloats& a, const TFloats& b)
{
  return _mm256_max_ps(a.lanes, b.lanes);
}
inline TFloats smaller(const TFloats& a, const TFloats& b)
{
  return _mm256_min_ps(a.lanes, b.lanes);
}
inline TFloats magnitude(const TFloats& a)
{
  return _mm256_andnot_ps(_mm256_set1_ps(-0.0f), a.lanes);
}
/// `i_then` where a > b, otherwise `i_else`.
inline TFloats pick(const TFloats& a, const TFloats& b, const TFloats& i_then, const TFloats& i_else)
{
  return _mm256_blendv_ps(i_else.lanes, i_then.lanes, _mm256_cmp_ps(a.lanes, b.lanes, _CMP_GT_OQ));
}
inline unsigned int lanesBelow(const TFloats& a, const TFloats& b)
{
  return static_cast<unsigned int>(_mm256_movemask_ps(_mm256_cmp_ps(a.lanes, b.lanes, _CMP_LT_OQ)));
}

inline TFloats squareRoot(const TFloats& a)
{
  return _mm256_sqrt_ps(a.lanes);
}
/// The least of all lanes, in every lane.
inline TFloats least(const TFloats& a)
{
  const __m256 four = _mm256_min_ps(a.lanes, _mm256_permute2f128_ps(a.lanes, a.lanes, 1));
  const __m256 two = _mm256_min_ps(four, _mm256_permute_ps(four, 0x4e));
  return _mm256_min_ps(two, _mm256_permute_ps(two, 0xb1));
}
inline float first(const TFloats& a)
{
  return _mm256_cvtss_f32(a.lanes);
}
inline unsigned int lanesOf(const TFloats& a, const TFloats& b)
{
  return static_cast<unsigned int>(_mm256_movemask_ps(_mm256_cmp_ps(a.lanes, b.lanes, _CMP_EQ_OQ)));
}
/// A large number in the lanes that are not named.
inline TFloats only(const TFloats& a, unsigned int i_lanes)
{
  const __m256i bits = _mm256_setr_epi32(1, 2, 4, 8, 16, 32, 64, 128);
  const __m256i named = _mm256_and_si256(_mm256_set1_epi32(static_cast<int>(i_lanes)), bits);
  return _mm256_blendv_ps(_mm256_set1_ps(PROXIMITY_LARGEST), a.lanes,
                          _mm256_castsi256_ps(_mm256_cmpeq_epi32(named, bits)));
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
  return _mm256_permute_ps(_mm256_set_m128(a.lanes, a.lanes), LANE * 0x55);
}

inline TDoubles operator+(const TDoubles& a, const TDoubles& b)
{
  return _mm256_add_pd(a.lanes, b.lanes);
}
inline TDoubles operator-(const TDoubles& a, const TDoubles& b)
{
  return _mm256_sub_pd(a.lanes, b.lanes);
}
inline TDoubles operator*(const TDoubles& a, const TDoubles& b)
{
  return _mm256_mul_pd(a.lanes, b.lanes);
}
inline TDoubles operator/(const TDoubles& a, const TDoubles& b)
{
  return _mm256_div_pd(a.lanes, b.lanes);
}
inline TDoubles squareRoot(const TDoubles& a)
{
  return _mm256_sqrt_pd(a.lanes);
}
inline TDoubles larger(const TDoubles& a, const TDoubles& b)
{
  return _mm256_max_pd(a.lanes, b.lanes);
}
inline TDoubles smaller(const TDoubles& a, const TDoubles& b)
{
  return _mm256_min_pd(a.lanes, b.lanes);
}
inline TDoubles magnitude(const TDoubles& a)
{
  return _mm256_andnot_pd(_mm256_set1_pd(-0.0), a.lanes);
}
inline TMask operator>(const TDoubles& a, const TDoubles& b)
{
  return {_mm256_cmp_pd(a.lanes, b.lanes, _CMP_GT_OQ)};
}
inline TMask operator<(const TDoubles& a, const TDoubles& b)
{
  return {_mm256_cmp_pd(a.lanes, b.lanes, _CMP_LT_OQ)};
}
inline TMask operator&(const TMask& a, const TMask& b)
{
  return {_mm256_and_pd(a.bits, b.bits)};
}
inline TMask operator|(const TMask& a, const TMask& b)
{
  return {_mm256_or_pd(a.bits, b.bits)};
}
inline TDoubles select(const TMask& m, const TDoubles& i_then, const TDoubles& i_else)
{
  return _mm256_blendv_pd(i_else.lanes, i_then.lanes, m.bits);
}
} // namespace

#include "foundation/lumProximitySearch.h"

const CProximityKernel g_proximityAvx2 = {"AVX2", proximityDistance, proximityContact, proximityRay};
#endif
