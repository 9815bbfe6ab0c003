#include "foundation/lumGeometryUtilities.h"
#include "foundation/lumMat.h"
#include "foundation/lumMath.h"
#include "foundation/lumPRNGGameRand.h"
#include "support/logCapture.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>

namespace
{
constexpr double INF = std::numeric_limits<double>::infinity();

/// The error of a double against a more precise value, in units of its last place.
double ulpError(double i_value, long double i_exact)
{
  int exponent = 0;
  std::frexp(static_cast<double>(i_exact), &exponent);
  const long double unit = std::ldexp(1.0L, std::max(exponent - 53, -1074));
  return static_cast<double>(std::fabs((static_cast<long double>(i_value) - i_exact) / unit));
}

bool isSame(double i_a, double i_b)
{
  return (std::isnan(i_a) && std::isnan(i_b)) || (i_a == i_b && std::signbit(i_a) == std::signbit(i_b));
}

ClumMat4 randomFrame(ClumPRNGGameRand& io_random)
{
  ClumMat4 frame;
  const double pi = ClumGeometryUtilities::PI;
  ClumGeometryUtilities::bryantToMatrix(io_random.random(-5.0, 5.0), io_random.random(-5.0, 5.0),
                                        io_random.random(-5.0, 5.0), io_random.random(-pi, pi),
                                        io_random.random(-pi, pi), io_random.random(-pi, pi), frame);
  return frame;
}

double largestDifference(const ClumMat4& i_a, const ClumMat4& i_b)
{
  double largest = 0.0;
  for (unsigned int i = 0; i < 16; ++i)
    largest = std::max(largest, std::fabs(i_a.data()[i] - i_b.data()[i]));
  return largest;
}

/// The distance of a frame from a right-handed rigid one.
double rigidityError(const ClumMat4& i_frame)
{
  const ClumVect3 x = i_frame.axis(ClumMat4::X_AXIS), y = i_frame.axis(ClumMat4::Y_AXIS);
  const ClumVect3 z = i_frame.axis(ClumMat4::Z_AXIS);
  return std::max({std::fabs(x.norm() - 1.0), std::fabs(y.norm() - 1.0), std::fabs(x.scalarProduct(y)),
                   ((x * y) - z).norm(), std::fabs(i_frame(3, 3) - 1.0)});
}
} // namespace

TEST(LumMath, StaysWithinUlpsOfTheLongDoubleFunctions)
{
  const ClumPRNGGameRandShPtr random = ClumPRNGGameRand::create();
  std::array<double, 8> worst{};
  for (int i = 0; i < 200000; ++i)
  {
    const double size = lumExp(random->random(std::log(1e-9), std::log(1e5)));
    const double x = random->random(0, 1) ? size : -size;
    const long double exact = x;
    double s = 0.0, c = 0.0;
    lumSinCos(x, s, c);
    EXPECT_TRUE(s == lumSin(x) && c == lumCos(x));
    worst[0] = std::max(worst[0], ulpError(s, std::sin(exact)));
    worst[1] = std::max(worst[1], ulpError(c, std::cos(exact)));
    const double y = random->random(-3.0, 3.0);
    worst[2] = std::max(worst[2], ulpError(lumAtan2(y, x), std::atan2(static_cast<long double>(y), exact)));
    const double u = random->random(-1.0, 1.0);
    worst[3] = std::max(worst[3], ulpError(lumAcos(u), std::acos(static_cast<long double>(u))));
    worst[4] = std::max(worst[4], ulpError(lumAsin(u), std::asin(static_cast<long double>(u))));
    worst[5] = std::max(worst[5], ulpError(lumLog(size), std::log(static_cast<long double>(size))));
    const double e = random->random(-740.0, 709.0);
    worst[6] = std::max(worst[6], ulpError(lumExp(e), std::exp(static_cast<long double>(e))));
    // Next to multiples of pi/2 the reduction cancels most.
    const double near = std::nextafter(random->random(-60000, 60000) * ClumGeometryUtilities::PI / 2.0, INF);
    worst[7] = std::max({worst[7], ulpError(lumSin(near), std::sin(static_cast<long double>(near))),
                         ulpError(lumCos(near), std::cos(static_cast<long double>(near)))});
  }
  for (std::size_t i = 0; i < worst.size(); ++i)
    EXPECT_LT(worst[i], i == 2 ? 1.5 : 1.0) << "function " << i;
}

TEST(LumMath, KeepsTheSpecialCasesOfTheStandard)
{
  const double values[] = {0.0, -0.0, 1.0, -1.0, 1e-300, -1e300, INF, -INF, std::nan("")};
  for (double y : values)
    for (double x : values)
      EXPECT_TRUE(isSame(lumAtan2(y, x), std::atan2(y, x))) << y << " " << x;
  EXPECT_TRUE(isSame(lumSin(-0.0), -0.0) && isSame(lumCos(0.0), 1.0));
  EXPECT_TRUE(std::isnan(lumSin(INF)) && std::isnan(lumCos(-INF)) && std::isnan(lumAcos(1.0 + 1e-15)));
  EXPECT_TRUE(isSame(lumAcos(1.0), 0.0) && isSame(lumAcos(-1.0), std::acos(-1.0)));
  EXPECT_TRUE(isSame(lumAsin(1.0), std::asin(1.0)) && isSame(lumAsin(-0.0), -0.0));
  EXPECT_TRUE(isSame(lumLog(0.0), -INF) && isSame(lumLog(1.0), 0.0) && isSame(lumLog(INF), INF));
  EXPECT_TRUE(std::isnan(lumLog(-1.0)));
  EXPECT_TRUE(isSame(lumExp(0.0), 1.0) && isSame(lumExp(-INF), 0.0) && isSame(lumExp(1000.0), INF));
  EXPECT_NEAR(lumSin(1e15), std::sin(1e15), 1.0);
  EXPECT_NEAR(lumSin(1e15) * lumSin(1e15) + lumCos(1e15) * lumCos(1e15), 1.0, 1e-15);
}

TEST(ClumMat4, ComposesInvertsAndRepairsFrames)
{
  const ClumPRNGGameRandShPtr random = ClumPRNGGameRand::create();
  ClumMat4 product;
  for (int i = 0; i < 500; ++i)
  {
    const ClumMat4 frame = randomFrame(*random);
    EXPECT_LT(rigidityError(frame), 1e-14);
    EXPECT_LT(largestDifference(frame * frame.inverse(), ClumMat4::IDENTITY), 1e-13);
    const ClumPoint3 point(1.0, -2.0, 0.5);
    EXPECT_LT(((product * frame) * point).distanceFrom(product * (frame * point)), 1e-12);
    EXPECT_LT(((frame * point.toVect3()) + frame.translation() - (frame * point).toVect3()).norm(), 1e-13);
    product = product * frame;
    product.setTranslation(ClumVect3());

    ClumMat4 bent = frame;
    for (unsigned int k = 0; k < 12; ++k)
      bent.data()[k] += random->random(-1e-3, 1e-3);
    EXPECT_LT(rigidityError(bent.repair()), 1e-14);
    EXPECT_LT(largestDifference(bent, frame), 1e-2);
    EXPECT_EQ(bent.translation(), frame.translation());
  }
  ClumMat4 flat;
  flat.zero();
  EXPECT_LT(rigidityError(flat.repair()), 1e-15);
}

TEST(ClumMat4, BaseVectorFrameIsRigidAndPointsAsTold)
{
  const ClumPRNGGameRandShPtr random = ClumPRNGGameRand::create();
  for (int i = 0; i < 300; ++i)
  {
    const auto base = static_cast<ClumMat4::EBaseVector>(i % 3);
    ClumVect3 direction(random->random(-1.0, 1.0), random->random(-1.0, 1.0), random->random(-1.0, 1.0));
    if (i < 30)
      direction.setValue(i % 2 ? 0.0 : 1.0, i % 2 ? 1.0 : 0.0, 0.0);
    ClumMat4 frame;
    frame.setAsFrameWithBaseVectorAxis(base, direction);
    EXPECT_LT(rigidityError(frame), 1e-14);
    EXPECT_LT((frame.axis(base) - direction.normalized()).norm(), 1e-15);
  }
}

TEST(ClumGeometryUtilities, BryantAnglesRoundTripInGimbalLockToo)
{
  const ClumPRNGGameRandShPtr random = ClumPRNGGameRand::create();
  const double half = ClumGeometryUtilities::PI / 2.0;
  for (int i = 0; i < 2000; ++i)
  {
    // Every fourth stands in gimbal lock, every other fourth close to it.
    const double offset = i % 4 == 1 ? lumExp(random->random(-40.0, -2.0)) : 0.0;
    const double ry = i % 4 < 2 ? (i % 8 < 4 ? half - offset : offset - half) : random->random(-half, half);
    const double rx = random->random(-3.0, 3.0), rz = random->random(-3.0, 3.0);
    ClumMat4 frame, again, axes[3];
    ClumGeometryUtilities::bryantToMatrix(1.0, 2.0, 3.0, rx, ry, rz, frame);
    axes[0].rotate(1.0, 0.0, 0.0, rx);
    axes[1].rotate(0.0, 1.0, 0.0, ry);
    axes[2].rotate(0.0, 0.0, 1.0, rz);
    again.translate(1.0, 2.0, 3.0);
    EXPECT_LT(largestDifference(again * axes[0] * axes[1] * axes[2], frame), 1e-15);

    std::vector<double> values;
    ClumGeometryUtilities::matrixToBryant(frame, values);
    ClumGeometryUtilities::bryantToMatrix(values, again);
    EXPECT_LT(largestDifference(again, frame), 1e-11) << rx << " " << ry << " " << rz;
    if (i % 4 >= 2 && std::fabs(ry) < 1.5)
    {
      EXPECT_NEAR(values[3], rx, 1e-13);
      EXPECT_NEAR(values[4], ry, 1e-13);
      EXPECT_NEAR(values[5], rz, 1e-13);
    }
  }
}

TEST(ClumGeometryUtilities, AxisAndAngleRebuildTheRotation)
{
  const ClumPRNGGameRandShPtr random = ClumPRNGGameRand::create();
  const double pi = ClumGeometryUtilities::PI;
  const double angles[] = {0.0, 1e-9, 1e-4, 1.0, 2.0, 3.0, pi - 1e-5, pi - 1e-9, pi};
  for (double angle : angles)
    for (int i = 0; i < 50; ++i)
    {
      const ClumVect3 axis(random->random(-1.0, 1.0), random->random(-1.0, 1.0), random->random(-1.0, 1.0));
      ClumMat4 frame, again;
      frame.rotate(axis, angle);
      ClumVect3 foundAxis;
      double foundAngle = 0.0;
      ClumGeometryUtilities::getRotationAxisAndAngle(frame, foundAxis, foundAngle);
      again.rotate(foundAxis, foundAngle);
      EXPECT_LT(largestDifference(again, frame), 1e-14) << angle;
      EXPECT_NEAR(foundAngle, angle, 1e-14);
      const ClumMat4 start = randomFrame(*random);
      EXPECT_NEAR(ClumGeometryUtilities::slerpAngle(start, start * frame), angle, 1e-14);
    }
}

TEST(ClumGeometryUtilities, SegmentDistanceTakesTheEndsInto)
{
  const ClumPoint3 start(0.0, 0.0, 0.0), end(2.0, 0.0, 0.0);
  EXPECT_DOUBLE_EQ(ClumGeometryUtilities::distancePointSegment(ClumPoint3(1.0, 3.0, 0.0), start, end), 3.0);
  EXPECT_DOUBLE_EQ(ClumGeometryUtilities::distancePointSegment(ClumPoint3(5.0, 4.0, 0.0), start, end), 5.0);
  EXPECT_DOUBLE_EQ(ClumGeometryUtilities::distancePointSegment(ClumPoint3(0.0, 0.0, 2.0), start, start), 2.0);
}

TEST(ClumMat, MultipliesTransposesAndRefusesMismatch)
{
  ClumMat a(2, 3);
  for (unsigned int r = 0; r < 2; ++r)
    for (unsigned int c = 0; c < 3; ++c)
      a(r, c) = 1.0 + r * 3 + c;
  const ClumMat square = a * a.t();
  EXPECT_DOUBLE_EQ(square(0, 0), 14.0);
  EXPECT_DOUBLE_EQ(square(1, 0), 32.0);
  EXPECT_NEAR(square.det(), 14.0 * 77.0 - 32.0 * 32.0, 1e-9);
  EXPECT_DOUBLE_EQ((a * ClumVect(3, 2.0))[1], 30.0);
  EXPECT_DOUBLE_EQ((ClumVect(4, 1.0) - ClumVect(4, 3.0)).norm(), 4.0);
  const LogCapture log;
  EXPECT_EQ((a * a).height(), 0u);
  EXPECT_EQ((ClumVect(2) + ClumVect(3)).size(), 0u);
  EXPECT_EQ(log.count(), 2u);
}

TEST(ClumPRNG, StreamIsTheSameOnEveryMachine)
{
  // First outputs of xoshiro256++ whose state is splitmix64's first four numbers from seed 0.
  const ClumPRNGGameRandShPtr random = ClumPRNGGameRand::create();
  EXPECT_EQ(random->next(), 0x53175d61490b23dfull);
  EXPECT_EQ(random->next(), 0x61da6f3dc380d507ull);
  random->seed(7);
  const double normal = random->normalRand(1.0);
  const int integer = random->random(-10, 10);
  random->seed(7);
  EXPECT_EQ(random->normalRand(2.0), 2.0 * normal);
  EXPECT_EQ(random->random(10, -10), integer);
  // A seed forgets the spare normal draw.
  random->seed(7);
  EXPECT_EQ(random->normalRand(1.0), normal);
}

TEST(ClumPRNG, DrawsHaveTheirDistributions)
{
  const ClumPRNGGameRandShPtr random = ClumPRNGGameRand::create();
  const int draws = 300000;
  std::array<int, 7> counts{};
  double sum = 0.0, squares = 0.0, fourth = 0.0, uniform = 0.0;
  for (int i = 0; i < draws; ++i)
  {
    const int integer = random->random(-3, 3);
    ASSERT_TRUE(integer >= -3 && integer <= 3);
    ++counts[static_cast<std::size_t>(integer + 3)];
    const double x = random->normalRand(2.0) / 2.0;
    sum += x;
    squares += x * x;
    fourth += x * x * x * x;
    const double u = random->random(-1.0, 3.0);
    ASSERT_TRUE(u >= -1.0 && u <= 3.0);
    uniform += u;
  }
  // Five standard errors each.
  for (int count : counts)
    EXPECT_NEAR(count, draws / 7.0, 5.0 * std::sqrt(draws * (1.0 / 7.0) * (6.0 / 7.0)));
  EXPECT_NEAR(sum / draws, 0.0, 5.0 / std::sqrt(draws));
  EXPECT_NEAR(squares / draws, 1.0, 5.0 * std::sqrt(2.0 / draws));
  EXPECT_NEAR(fourth / draws, 3.0, 5.0 * std::sqrt(96.0 / draws));
  EXPECT_NEAR(uniform / draws, 1.0, 5.0 * std::sqrt(16.0 / 12.0 / draws));

  EXPECT_EQ(random->random(5, 5), 5);
  const int low = std::numeric_limits<int>::min(), high = std::numeric_limits<int>::max();
  bool wasNegative = false, wasPositive = false;
  for (int i = 0; i < 64; ++i)
    (random->random(low, high) < 0 ? wasNegative : wasPositive) = true;
  EXPECT_TRUE(wasNegative && wasPositive);
}

TEST(ClumPRNG, WorkerGeneratorIsDeterminedAndItsOwn)
{
  const ClumPRNGGameRandShPtr random = ClumPRNGGameRand::create();
  const ClumPRNGShPtr first = random->makeWorkerGenerator(), second = random->makeWorkerGenerator();
  const double a = first->random(0.0, 1.0), b = second->random(0.0, 1.0), own = random->random(0.0, 1.0);
  EXPECT_TRUE(a != b && a != own && b != own);
  random->seed(0);
  EXPECT_EQ(random->makeWorkerGenerator()->random(0.0, 1.0), a);
}
