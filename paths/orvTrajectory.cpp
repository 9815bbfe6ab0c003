#include "paths/orvTrajectory.h"

CorvTrajectory::~CorvTrajectory() = default;

lmStatus CorvTrajectory::init(const CorvTrajectoryWkPtr& i_weakPtr)
{
  return ClumMutableCodable::init(i_weakPtr);
}
