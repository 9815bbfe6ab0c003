#pragma once

#include "foundation/lumPRNG.h"

#include <cstdint>

/// The default random source: xoshiro256++ (Blackman and Vigna, 2019), its state filled from the seed by splitmix64.
///
/// Integers are unbiased (Lemire's multiplication with rejection); doubles have 53 random bits; normal draws use
/// Marsaglia's polar method, two at a time.
class LUM_API ClumPRNGGameRand : public ClumPRNG
{
public:
  /// A generator seeded with 0.
  static ClumPRNGGameRandShPtr create();

  void seed(unsigned int i_seed) override { seedState(i_seed); }
  int random(int i_min, int i_max) override;
  double random(double i_min, double i_max) override;
  double normalRand(double i_standardDeviation) override;
  ClumPRNGShPtr makeWorkerGenerator() override;

  /// The next 64 bits of the stream.
  std::uint64_t next();

private:
  explicit ClumPRNGGameRand(std::uint64_t i_seed) { seedState(i_seed); }
  void seedState(std::uint64_t i_seed);
  /// Uniform in [0, 1).
  double unit();

  std::uint64_t m_state[4];
  double m_spareNormal = 0.0;
  bool m_hasSpareNormal = false;
};
