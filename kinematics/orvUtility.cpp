#include "kinematics/orvUtility.h"

#include "foundation/lumDescribe.h"
#include "foundation/lumPRNGGameRand.h"
#include "foundation/lumUtilityMultithread.h"
#include "foundation/lumVersion.h"

#include <memory>

namespace
{
/// Gives a worker thread a generator of its own, made from that of the thread that starts it.
class CGeneratorContext : public ClumWorkerContext
{
public:
  static ClumWorkerContextShPtr create() { return ClumWorkerContextShPtr(new CGeneratorContext); }
  CGeneratorContext() : m_generator(CorvUtility::prng()->makeWorkerGenerator()) {}
  void enter() override { m_scope.reset(new CorvUtility::CWorkerGenerator(m_generator)); }
  void leave() override { m_scope.reset(); }

private:
  ClumPRNGShPtr m_generator;
  std::unique_ptr<CorvUtility::CWorkerGenerator> m_scope;
};
} // namespace

LUM_DESCRIBE(CorvUtility)
{
  ClumUtilityMultithread::addWorkerContext(&CGeneratorContext::create);
  i_class.method("static void", "randomSeed", "(unsigned int i_seed)", "", &Self::randomSeed, "SetRandomSeed");
}

namespace
{
/// The generator of the innermost scope of this thread.
thread_local const ClumPRNGShPtr* t_workerGenerator = nullptr;
} // namespace

CorvUtility::CWorkerGenerator::CWorkerGenerator(const ClumPRNGShPtr& i_generator)
  : m_generator(i_generator), m_outer(t_workerGenerator)
{
  if (m_generator)
    t_workerGenerator = &m_generator;
}

CorvUtility::CWorkerGenerator::~CWorkerGenerator()
{
  t_workerGenerator = m_outer;
}

const ClumPRNGShPtr& CorvUtility::prng()
{
  static const ClumPRNGShPtr s_prng = ClumPRNGGameRand::create();
  return t_workerGenerator ? *t_workerGenerator : s_prng;
}

void CorvUtility::randomSeed(unsigned int i_seed)
{
  prng()->seed(i_seed);
}

int CorvUtility::random(int i_min, int i_max)
{
  return prng()->random(i_min, i_max);
}

double CorvUtility::random(double i_min, double i_max)
{
  return prng()->random(i_min, i_max);
}

double CorvUtility::normalRand(double i_standardDeviation)
{
  return prng()->normalRand(i_standardDeviation);
}

int CorvUtility::orvaneVersion()
{
  return LUM_CODING_VERSION;
}
