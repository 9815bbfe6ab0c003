#pragma once

#include "foundation/lumObject.h"
#include "kinematics/handles.h"

/// The one random source of the library, and its version. Static only.
///
/// A run repeats exactly if it is seeded and the same calls come in the same order. The generator has no lock: a thread
/// beside the main one draws from a generator of its own for as long as a `CWorkerGenerator` of that thread lives.
class LUM_API CorvUtility : public ClumObject
{
  LUM_ABSTRACT(CorvUtility, ClumObject);

public:
  /// Puts a generator in force for this thread, until the end of the scope. Scopes nest.
  class LUM_API CWorkerGenerator
  {
  public:
    /// @param i_generator made by the starting thread, from its own: `prng()->makeWorkerGenerator()`.
    explicit CWorkerGenerator(const ClumPRNGShPtr& i_generator);
    ~CWorkerGenerator();
    CWorkerGenerator(const CWorkerGenerator&) = delete;
    CWorkerGenerator& operator=(const CWorkerGenerator&) = delete;

  private:
    ClumPRNGShPtr m_generator;
    const ClumPRNGShPtr* m_outer;
  };

  CorvUtility() = delete;

  /// The generator in force for this thread: the process-wide one, made on first use, unless a scope puts its own.
  static const ClumPRNGShPtr& prng();
  static void randomSeed(unsigned int i_seed);
  /// An integer of the range, both ends included.
  static int random(int i_min, int i_max);
  static double random(double i_min, double i_max);
  /// A normal draw of mean 0.
  static double normalRand(double i_standardDeviation);

  /// The library's version as coders store it: a negative number whose magnitude grows with each release.
  static int orvaneVersion();
};
