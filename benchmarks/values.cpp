#include "harness.h"

#include "foundation/lumMat4.h"
#include "kinematics/orvCSComposite.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvDof.h"
#include "kinematics/orvUtility.h"
#include "metrics/orvMetric.h"
#include "metrics/orvMetricEuclidean.h"

#include <cmath>
#include <cstdlib>
#include <new>

namespace
{
std::size_t g_allocations = 0;

CorvConfigSpaceShPtr sixDofs()
{
  const CorvCSCompositeShPtr space = CorvCSComposite::create("orvane.bench.six-dofs");
  for (int i = 0; i < 6; ++i)
    space->appendSubspace(CorvDof::create(i >= 3));
  space->metric(CorvMetricEuclidean::create());
  return space;
}

CorvConfig randomConfig(const CorvConfigSpaceShPtr& i_space)
{
  CorvConfig config(i_space);
  for (unsigned int i = 0; i < 6; ++i)
    config.dofValue(i, CorvUtility::random(-3.0, 3.0));
  return config;
}

void benchmarkCopy()
{
  const CorvConfig config = randomConfig(sixDofs());
  const std::vector<double> values = config.dofValues();
  const Comparison copy = compare(
    [&]
    {
      const CorvConfig other(config);
      keep(other);
    },
    [&]
    {
      const std::vector<double> other(values);
      keep(other);
    });
  report("copy of a six-dof configuration / copy of a std::vector<double> of six", copy.ratio(), "at most 1");

  CorvConfig written(config);
  const std::size_t before = g_allocations;
  written.beginChange();
  for (int i = 0; i < 1000; ++i)
    written.dofValue(i % 6, 0.001 * i);
  written.endChange();
  report("allocations in 1,000 dof writes inside a change pair", static_cast<double>(g_allocations - before), "0");
}

/// What a user would write by hand for three lengths and three angles.
double handWrittenDistance(const double* i_a, const double* i_b)
{
  double sum = 0.0;
  for (int i = 0; i < 3; ++i)
    sum += (i_b[i] - i_a[i]) * (i_b[i] - i_a[i]);
  for (int i = 3; i < 6; ++i)
  {
    double turn = std::fmod(i_b[i] - i_a[i], 2.0 * M_PI);
    if (turn >= M_PI)
      turn -= 2.0 * M_PI;
    else if (turn < -M_PI)
      turn += 2.0 * M_PI;
    sum += turn * turn;
  }
  return std::sqrt(sum);
}

void benchmarkDistance()
{
  const CorvConfigSpaceShPtr space = sixDofs();
  std::vector<CorvConfig> configs;
  std::vector<std::vector<double>> arrays;
  for (int i = 0; i < 64; ++i)
  {
    configs.push_back(randomConfig(space));
    arrays.push_back(configs.back().dofValues());
  }
  const CorvMetricShPtr metric = space->metric();
  const Comparison distance = compare(
    [&]
    {
      for (int i = 0; i < 63; ++i)
        keep(metric->distance(configs[i], configs[i + 1]));
    },
    [&]
    {
      for (int i = 0; i < 63; ++i)
        keep(handWrittenDistance(arrays[i].data(), arrays[i + 1].data()));
    });
  report("Euclidean distance of two six-dof configurations / a loop on two arrays", distance.ratio(), "at most 5");
}

const Section s_copy("copy", benchmarkCopy);
const Section s_distance("distance", benchmarkDistance);
} // namespace

// Counts what the program allocates.
void* operator new(std::size_t i_size)
{
  ++g_allocations;
  if (void* memory = std::malloc(i_size ? i_size : 1))
    return memory;
  throw std::bad_alloc();
}

void operator delete(void* i_memory) noexcept
{
  std::free(i_memory);
}

void operator delete(void* i_memory, std::size_t) noexcept
{
  std::free(i_memory);
}
