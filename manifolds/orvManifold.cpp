#include "manifolds/orvManifold.h"

#include "foundation/lumDescribe.h"

LUM_DESCRIBE(CorvManifold)
{
}

const unsigned int CorvManifold::MAX_FINITE_CARDINALITY = 4294967292u;
const unsigned int CorvManifold::FINITE_CARDINALITY = 4294967293u;
const unsigned int CorvManifold::COUNTABLE_INFINITE_CARDINALITY = 4294967294u;
const unsigned int CorvManifold::UNCOUNTABLE_CARDINALITY = 4294967295u;

CorvManifold::~CorvManifold()
{
}

lmStatus CorvManifold::init(const CorvManifoldWkPtr& i_weakPtr)
{
  return ClumMutableCodable::init(i_weakPtr);
}

/// From 0x7ffffffe on a count is not kept, so that no sum of two counts can run over.
unsigned int CorvManifold::sumCardinalities(unsigned int i_a, unsigned int i_b)
{
  constexpr unsigned int FIRST_UNCOUNTED = 0x7ffffffeu;
  for (const unsigned int kind : {UNCOUNTABLE_CARDINALITY, COUNTABLE_INFINITE_CARDINALITY})
  {
    if (i_a == kind || i_b == kind)
      return kind;
  }
  return i_a >= FIRST_UNCOUNTED || i_b >= FIRST_UNCOUNTED ? FINITE_CARDINALITY : i_a + i_b;
}
