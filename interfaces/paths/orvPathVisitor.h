#pragma once

#include "foundation/lumObject.h"
#include "kinematics/handles.h"
#include "paths/handles.h"

/// What walks the structure of a path: `CorvAbstractPath::describe` calls it.
class LUM_API CorvPathVisitor : public ClumObject
{
  LUM_ABSTRACT(CorvPathVisitor, ClumObject);

public:
  ~CorvPathVisitor() override;

  virtual void beginHybridPath(const CorvHybridPathConstShPtr& i_path) = 0;
  virtual void endHybridPath(const CorvHybridPathConstShPtr& i_path) = 0;
  virtual void beginPath(const CorvPathConstShPtr& i_path) = 0;
  virtual void endPath(const CorvPathConstShPtr& i_path) = 0;
  virtual void beginCompositeDirectPath(const CorvDirectPathConstShPtr& i_directPath) = 0;
  virtual void endCompositeDirectPath(const CorvDirectPathConstShPtr& i_directPath) = 0;
  virtual void beginSequenceDirectPath(const CorvDirectPathConstShPtr& i_directPath) = 0;
  virtual void endSequenceDirectPath(const CorvDirectPathConstShPtr& i_directPath) = 0;
  virtual void reachConfiguration(const CorvConfig& i_cfg) = 0;
  virtual void executeDirectPath(const CorvDirectPathConstShPtr& i_directPath) = 0;
  virtual void executeLinearDirectPath(const CorvDirectPathConstShPtr& i_directPath) = 0;
  virtual void executeSlerpDirectPath(const CorvDPSolidMotionConstShPtr& i_directPath) = 0;

protected:
  CorvPathVisitor() = default;
  lmStatus init(const CorvPathVisitorWkPtr& i_weakPtr);
};
