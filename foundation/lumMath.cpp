#include "foundation/lumMath.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

// Reductions and minimax polynomials of fdlibm (Sun Microsystems, 1993): e_rem_pio2, k_sin, k_cos, s_atan, e_atan2,
// e_acos, e_asin, e_log, e_exp. Constants are the doubles given there.

namespace
{
constexpr double MATH_PI = 3.14159265358979311600;
constexpr double MATH_PI_LOW = 1.2246467991473531772e-16;
constexpr double HALF_PI = 1.57079632679489655800;
constexpr double HALF_PI_LOW = 6.12323399573676603587e-17;
constexpr double QUARTER_PI = 7.85398163397448278999e-01;
constexpr double TINY = 7.450580596923828125e-09; // 2^-27: below it x - x^3/6 rounds to x
/// Up to here the multiple of pi/2 has less than 20 bits, so that its products with 33-bit parts of pi/2 are exact.
constexpr double LARGEST_EXACTLY_REDUCED = 1.6e6;

double notANumber()
{
  return std::numeric_limits<double>::quiet_NaN();
}

int exponentOf(double i_x)
{
  std::uint64_t bits;
  std::memcpy(&bits, &i_x, sizeof bits);
  return static_cast<int>((bits >> 52) & 0x7ff);
}

/// The number with the lower half of its bits cleared, so that its square is exact.
double highPart(double i_x)
{
  std::uint64_t bits;
  std::memcpy(&bits, &i_x, sizeof bits);
  bits &= 0xffffffff00000000ull;
  std::memcpy(&i_x, &bits, sizeof bits);
  return i_x;
}

/// An angle as quadrant * pi/2 + high + low, with |high| at most about pi/4.
struct CReducedAngle
{
  unsigned int quadrant;
  double high;
  double low;
};

CReducedAngle reduceAngle(double i_x)
{
  if (std::fabs(i_x) <= QUARTER_PI)
    return {0u, i_x, 0.0};
  if (std::fabs(i_x) > LARGEST_EXACTLY_REDUCED)
    i_x = std::fmod(i_x, 2.0 * MATH_PI);
  const double n = std::floor(i_x * 6.36619772367581382433e-01 + 0.5);
  double rest = i_x - n * 1.57079632673412561417;
  double correction = n * 6.07710050650619224932e-11;
  double high = rest - correction;
  // Near a multiple of pi/2 leading bits cancel: take in further parts of pi/2 as they are needed.
  if (exponentOf(i_x) - exponentOf(high) > 16)
  {
    double before = rest;
    double part = n * 6.07710050630396597660e-11;
    rest = before - part;
    correction = n * 2.02226624879595063154e-21 - ((before - rest) - part);
    high = rest - correction;
    if (exponentOf(i_x) - exponentOf(high) > 49)
    {
      before = rest;
      part = n * 2.02226624871116645580e-21;
      rest = before - part;
      correction = n * 8.47842766036889956997e-32 - ((before - rest) - part);
      high = rest - correction;
    }
  }
  const auto quadrant = static_cast<unsigned int>(static_cast<int>(n) & 3);
  return {quadrant, high, (rest - high) - correction};
}

double reducedSin(double i_high, double i_low)
{
  if (std::fabs(i_high) < TINY)
    return i_high;
  const double z = i_high * i_high;
  const double v = z * i_high;
  const double r =
    8.33333333332248946124e-03 +
    z * (-1.98412698298579493134e-04 +
         z * (2.75573137070700676789e-06 + z * (-2.50507602534068634195e-08 + z * 1.58969099521155010221e-10)));
  return i_high - ((z * (0.5 * i_low - v * r) - i_low) - v * -1.66666666666666324348e-01);
}

double reducedCos(double i_high, double i_low)
{
  const double z = i_high * i_high;
  const double w = z * z;
  const double r =
    z * (4.16666666666666019037e-02 + z * (-1.38888888888741095749e-03 + z * 2.48015872894767294178e-05)) +
    w * w * (-2.75573143513906633035e-07 + z * (2.08757232129817482790e-09 + z * -1.13596475577881948265e-11));
  const double half = 0.5 * z;
  const double lead = 1.0 - half;
  return lead + (((1.0 - lead) - half) + (z * r - i_high * i_low));
}

double arcTangent(double i_x)
{
  static const double s_high[] = {4.63647609000806093515e-01, 7.85398163397448278999e-01, 9.82793723247329054082e-01,
                                  1.57079632679489655800};
  static const double s_low[] = {2.26987774529616870924e-17, 3.06161699786838301793e-17, 1.39033110312309984516e-17,
                                 6.12323399573676603587e-17};
  double x = std::fabs(i_x);
  if (x < TINY)
    return i_x;
  int part = -1;
  if (x >= 2.4375)
  {
    part = 3;
    x = -1.0 / x;
  }
  else if (x >= 1.1875)
  {
    part = 2;
    x = (x - 1.5) / (1.0 + 1.5 * x);
  }
  else if (x >= 0.6875)
  {
    part = 1;
    x = (x - 1.0) / (x + 1.0);
  }
  else if (x >= 0.4375)
  {
    part = 0;
    x = (2.0 * x - 1.0) / (2.0 + x);
  }
  const double z = x * x;
  const double w = z * z;
  const double odd =
    z *
    (3.33333333333329318027e-01 +
     w * (1.42857142725034663711e-01 +
          w * (9.09088713343650656196e-02 +
               w * (6.66107313738753120669e-02 + w * (4.97687799461593236017e-02 + w * 1.62858201153657823623e-02)))));
  const double even =
    w * (-1.99999999998764832476e-01 +
         w * (-1.11111104054623557880e-01 +
              w * (-7.69187620504482999495e-02 + w * (-5.83357013379057348645e-02 + w * -3.65315727442169155270e-02))));
  const double angle = part < 0 ? x - x * (odd + even) : s_high[part] - ((x * (odd + even) - s_low[part]) - x);
  return std::signbit(i_x) ? -angle : angle;
}

/// asin(x) = x + x * R(x^2) on [-0.5, 0.5].
double arcSineQuotient(double i_z)
{
  const double p =
    i_z * (1.66666666666666657415e-01 +
           i_z * (-3.25565818622400915405e-01 +
                  i_z * (2.01212532134862925881e-01 +
                         i_z * (-4.00555345006794114027e-02 +
                                i_z * (7.91534994289814532176e-04 + i_z * 3.47933107596021167570e-05)))));
  const double q =
    1.0 + i_z * (-2.40339491173441421878 + i_z * (2.02094576023350569471 + i_z * (-6.88283971605453293030e-01 +
                                                                                  i_z * 7.70381505559019352791e-02)));
  return p / q;
}

double sinOfReduced(const CReducedAngle& i_angle)
{
  const double size =
    i_angle.quadrant & 1u ? reducedCos(i_angle.high, i_angle.low) : reducedSin(i_angle.high, i_angle.low);
  return i_angle.quadrant & 2u ? -size : size;
}

double cosOfReduced(const CReducedAngle& i_angle)
{
  const double size =
    i_angle.quadrant & 1u ? reducedSin(i_angle.high, i_angle.low) : reducedCos(i_angle.high, i_angle.low);
  return (i_angle.quadrant + 1u) & 2u ? -size : size;
}
} // namespace

double lumSin(double i_x)
{
  return std::isfinite(i_x) ? sinOfReduced(reduceAngle(i_x)) : notANumber();
}

double lumCos(double i_x)
{
  return std::isfinite(i_x) ? cosOfReduced(reduceAngle(i_x)) : notANumber();
}

void lumSinCos(double i_x, double& o_sin, double& o_cos)
{
  if (!std::isfinite(i_x))
  {
    o_sin = o_cos = notANumber();
    return;
  }
  const CReducedAngle angle = reduceAngle(i_x);
  o_sin = sinOfReduced(angle);
  o_cos = cosOfReduced(angle);
}

double lumAtan2(double i_y, double i_x)
{
  if (std::isnan(i_x) || std::isnan(i_y))
    return notANumber();
  const bool isLeft = std::signbit(i_x);
  double angle;
  if (std::isinf(i_x) && std::isinf(i_y))
    angle = isLeft ? 3.0 * QUARTER_PI : QUARTER_PI;
  else if (i_y == 0.0 || std::isinf(i_x))
    angle = isLeft ? MATH_PI : 0.0;
  else if (i_x == 0.0 || std::isinf(i_y) || exponentOf(i_y) - exponentOf(i_x) > 60)
    angle = HALF_PI;
  else if (!isLeft)
    angle = arcTangent(std::fabs(i_y / i_x));
  else if (exponentOf(i_y) - exponentOf(i_x) < -60)
    angle = MATH_PI;
  else
    angle = MATH_PI - (arcTangent(std::fabs(i_y / i_x)) - MATH_PI_LOW);
  return std::signbit(i_y) ? -angle : angle;
}

double lumAcos(double i_x)
{
  if (!(std::fabs(i_x) <= 1.0))
    return notANumber();
  if (std::fabs(i_x) < 0.5)
    return HALF_PI - (i_x - (HALF_PI_LOW - i_x * arcSineQuotient(i_x * i_x)));
  const double z = (1.0 - std::fabs(i_x)) * 0.5;
  if (z == 0.0)
    return i_x > 0.0 ? 0.0 : MATH_PI;
  const double s = std::sqrt(z);
  if (i_x < 0.0)
    return MATH_PI - 2.0 * (s + (arcSineQuotient(z) * s - HALF_PI_LOW));
  const double lead = highPart(s);
  const double rest = (z - lead * lead) / (s + lead);
  return 2.0 * (lead + (arcSineQuotient(z) * s + rest));
}

double lumAsin(double i_x)
{
  const double x = std::fabs(i_x);
  if (!(x <= 1.0))
    return notANumber();
  if (x < TINY)
    return i_x;
  if (x < 0.5)
    return i_x + i_x * arcSineQuotient(x * x);
  const double z = (1.0 - x) * 0.5;
  const double s = std::sqrt(z);
  double angle;
  if (x >= 0.975)
    angle = HALF_PI - (2.0 * (s + s * arcSineQuotient(z)) - HALF_PI_LOW);
  else
  {
    const double lead = highPart(s);
    const double rest = (z - lead * lead) / (s + lead);
    const double p = 2.0 * s * arcSineQuotient(z) - (HALF_PI_LOW - 2.0 * rest);
    angle = QUARTER_PI - (p - (QUARTER_PI - 2.0 * lead));
  }
  return std::signbit(i_x) ? -angle : angle;
}

double lumLog(double i_x)
{
  if (std::isnan(i_x) || i_x < 0.0)
    return notANumber();
  if (i_x == 0.0)
    return -std::numeric_limits<double>::infinity();
  if (std::isinf(i_x))
    return i_x;
  int exponent = 0;
  double mantissa = std::frexp(i_x, &exponent);
  if (mantissa < 0.70710678118654752440)
  {
    mantissa *= 2.0;
    --exponent;
  }
  const double k = exponent;
  const double f = mantissa - 1.0;
  const double s = f / (2.0 + f);
  const double z = s * s;
  const double w = z * z;
  const double even = w * (3.999999999940941908e-01 + w * (2.222219843214978396e-01 + w * 1.531383769920937332e-01));
  const double odd =
    z * (6.666666666666735130e-01 +
         w * (2.857142874366239149e-01 + w * (1.818357216161805012e-01 + w * 1.479819860511658591e-01)));
  const double half = 0.5 * f * f;
  const double correction = s * (half + (odd + even)) + k * 1.90821492927058770002e-10;
  return k * 6.93147180369123816490e-01 - ((half - correction) - f);
}

double lumExp(double i_x)
{
  if (std::isnan(i_x))
    return i_x;
  if (i_x > 7.09782712893383973096e+02)
    return std::numeric_limits<double>::infinity();
  if (i_x < -7.45133219101941108420e+02)
    return 0.0;
  const double k = std::floor(i_x * 1.44269504088896338700 + 0.5);
  const double high = i_x - k * 6.93147180369123816490e-01;
  const double low = k * 1.90821492927058770002e-10;
  const double x = high - low;
  const double t = x * x;
  const double c =
    x -
    t * (1.66666666666666019037e-01 +
         t * (-2.77777777770155933842e-03 +
              t * (6.61375632143793436117e-05 + t * (-1.65339022054652515390e-06 + t * 4.13813679705723846039e-08))));
  return std::ldexp(1.0 - ((low - (x * c) / (2.0 - c)) - high), static_cast<int>(k));
}
