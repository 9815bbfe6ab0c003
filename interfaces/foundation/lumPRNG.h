#pragma once

#include "foundation/handles.h"
#include "foundation/lumExport.h"

/// A source of random numbers. The same seed gives the same numbers on every machine. Used by one thread at a time.
class LUM_API ClumPRNG
{
public:
  virtual ~ClumPRNG() = default;

  virtual void seed(unsigned int i_seed) = 0;
  /// An integer of the range, both ends included, each with the same chance. The ends may come in any order.
  virtual int random(int i_min, int i_max) = 0;
  /// A uniform number in the range between two finite bounds.
  virtual double random(double i_min, double i_max) = 0;
  /// A draw from the normal distribution of mean 0.
  virtual double normalRand(double i_standardDeviation) = 0;
  /// A generator for another thread: its numbers are independent of this one's further numbers, and determined by this
  /// one's state, which moves on.
  virtual ClumPRNGShPtr makeWorkerGenerator() = 0;

protected:
  ClumPRNG() = default;
  ClumPRNG(const ClumPRNG&) = default;
  ClumPRNG& operator=(const ClumPRNG&) = default;
};
