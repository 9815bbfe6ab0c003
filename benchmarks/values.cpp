#include "harness.h"

#include "foundation/lumMat4.h"
#include "kinematics/orvCSComposite.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvDof.h"
#include "kinematics/orvUtility.h"
#include "metrics/orvMetric.h"
#include "metrics/orvMetricEuclidean.h"
#include "metrics/orvMetricManhattan.h"

#include <cmath>
#include <cstdlib>
#include <new>

namespace
{
std::size_t g_allocations = 0;

CorvConfigSpaceShPtr sixDofs(const CorvMetricShPtr& i_metric = CorvMetricEuclidean::create())
{
  const CorvCSCompositeShPtr space = CorvCSComposite::create("orvane.bench.six-dofs");
  for (int i = 0; i < 6; ++i)
    space->appendSubspace(CorvDof::create(i >= 3));
  space->metric(i_metric);
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

double handWrittenTurn(double i_a, double i_b)
{
  const double turn = std::fmod(i_b - i_a, 2.0 * M_PI);
  if (turn >= M_PI)
    return turn - 2.0 * M_PI;
  return turn < -M_PI ? turn + 2.0 * M_PI : turn;
}

/// What a user would write by hand for three lengths and three angles.
double handWrittenEuclidean(const double* i_a, const double* i_b)
{
  double sum = 0.0;
  for (int i = 0; i < 3; ++i)
    sum += (i_b[i] - i_a[i]) * (i_b[i] - i_a[i]);
  for (int i = 3; i < 6; ++i)
  {
    const double turn = handWrittenTurn(i_a[i], i_b[i]);
    sum += turn * turn;
  }
  return std::sqrt(sum);
}

double handWrittenManhattan(const double* i_a, const double* i_b)
{
  double sum = 0.0;
  for (int i = 0; i < 3; ++i)
    sum += std::fabs(i_b[i] - i_a[i]);
  for (int i = 3; i < 6; ++i)
    sum += std::fabs(handWrittenTurn(i_a[i], i_b[i]));
  return sum;
}

template <class HAND>
Comparison compareDistances(const CorvMetricShPtr& i_metric, const HAND& i_hand)
{
  const CorvConfigSpaceShPtr space = sixDofs(i_metric);
  std::vector<CorvConfig> configs;
  std::vector<std::vector<double>> arrays;
  for (int i = 0; i < 64; ++i)
  {
    configs.push_back(randomConfig(space));
    arrays.push_back(configs.back().dofValues());
  }
  return compare(
    [&]
    {
      for (int i = 0; i < 63; ++i)
        keep(i_metric->distance(configs[i], configs[i + 1]));
    },
    [&]
    {
      for (int i = 0; i < 63; ++i)
        keep(i_hand(arrays[i].data(), arrays[i + 1].data()));
    });
}

void benchmarkDistance()
{
  report("Euclidean distance of two six-dof configurations / a loop on two arrays",
         compareDistances(CorvMetricEuclidean::create(), handWrittenEuclidean).ratio(), "at most 5");
  report("Manhattan distance of two six-dof configurations / a loop on two arrays",
         compareDistances(CorvMetricManhattan::create(), handWrittenManhattan).ratio(), "at most 5");
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
