#include "foundation/lumPRNGGameRand.h"

#include "foundation/lumMath.h"

#include <algorithm>
#include <cmath>

namespace
{
std::uint64_t rotatedLeft(std::uint64_t i_bits, int i_count)
{
  return (i_bits << i_count) | (i_bits >> (64 - i_count));
}

std::uint64_t splitMix64(std::uint64_t& io_state)
{
  std::uint64_t z = (io_state += 0x9e3779b97f4a7c15ull);
  z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9ull;
  z = (z ^ (z >> 27)) * 0x94d049bb133111ebull;
  return z ^ (z >> 31);
}
} // namespace

ClumPRNGGameRandShPtr ClumPRNGGameRand::create()
{
  return ClumPRNGGameRandShPtr(new ClumPRNGGameRand(0));
}

void ClumPRNGGameRand::seedState(std::uint64_t i_seed)
{
  for (std::uint64_t& word : m_state)
    word = splitMix64(i_seed);
  m_hasSpareNormal = false;
}

std::uint64_t ClumPRNGGameRand::next()
{
  const std::uint64_t result = rotatedLeft(m_state[0] + m_state[3], 23) + m_state[0];
  const std::uint64_t shifted = m_state[1] << 17;
  m_state[2] ^= m_state[0];
  m_state[3] ^= m_state[1];
  m_state[1] ^= m_state[2];
  m_state[0] ^= m_state[3];
  m_state[2] ^= shifted;
  m_state[3] = rotatedLeft(m_state[3], 45);
  return result;
}

int ClumPRNGGameRand::random(int i_min, int i_max)
{
  const auto [low, high] = std::minmax(i_min, i_max);
  const std::uint64_t range = static_cast<std::uint64_t>(static_cast<std::int64_t>(high) - low) + 1;
  std::uint64_t product = (next() >> 32) * range;
  // 2^32 is no multiple of the range: its remainder's worth of products is drawn again.
  const std::uint64_t rejected = (std::uint64_t(1) << 32) % range;
  while ((product & 0xffffffffull) < rejected)
    product = (next() >> 32) * range;
  return static_cast<int>(low + static_cast<std::int64_t>(product >> 32));
}

double ClumPRNGGameRand::unit()
{
  return static_cast<double>(next() >> 11) * (1.0 / 9007199254740992.0);
}

double ClumPRNGGameRand::random(double i_min, double i_max)
{
  const double u = unit();
  // Rounding, and this order for a range too wide for a double, may lead a hair's breadth out of the range.
  const double value = std::isfinite(i_max - i_min) ? i_min + (i_max - i_min) * u : i_min * (1.0 - u) + i_max * u;
  return std::clamp(value, std::min(i_min, i_max), std::max(i_min, i_max));
}

double ClumPRNGGameRand::normalRand(double i_standardDeviation)
{
  if (m_hasSpareNormal)
  {
    m_hasSpareNormal = false;
    return m_spareNormal * i_standardDeviation;
  }
  double x, y, squaredRadius;
  do
  {
    x = 2.0 * unit() - 1.0;
    y = 2.0 * unit() - 1.0;
    squaredRadius = x * x + y * y;
  } while (squaredRadius >= 1.0 || squaredRadius == 0.0);
  const double factor = std::sqrt(-2.0 * lumLog(squaredRadius) / squaredRadius);
  m_spareNormal = y * factor;
  m_hasSpareNormal = true;
  return x * factor * i_standardDeviation;
}

ClumPRNGShPtr ClumPRNGGameRand::makeWorkerGenerator()
{
  return ClumPRNGShPtr(new ClumPRNGGameRand(next()));
}
