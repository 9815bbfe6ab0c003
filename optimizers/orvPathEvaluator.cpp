#include "optimizers/orvPathEvaluator.h"

#include "foundation/lumDescribe.h"

LUM_DESCRIBE(CorvPathEvaluator)
{
}

CorvPathEvaluator::~CorvPathEvaluator() = default;
