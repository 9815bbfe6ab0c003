#include "support/discWorld.h"

#include "foundation/lumDescribe.h"
#include "foundation/lumParameterMap.h"
#include "kinematics/orvCSComposite.h"
#include "kinematics/orvDof.h"
#include "kinematics/orvUtility.h"
#include "paths/orvDirectPath.h"
#include "paths/orvSMLinear.h"
#include "roadmaps/orvRoadmap.h"
#include "validation/orvReportDPCollision.h"
#include "validation/orvValidatorDPCollision.h"
#include "validation/orvValidatorSet.h"

#include <algorithm>
#include <cmath>
#include <limits>

LUM_HANDLES(DiscConfigValidator)
LUM_HANDLES(DiscMotionValidator)

namespace
{
const double s_infinity = std::numeric_limits<double>::infinity();

/// The length along the straight motion at which it first touches a disc; infinity if it does not.
double firstTouch(const DiscWorld::Discs& i_discs, const CorvConfig& i_start, const CorvConfig& i_end)
{
  const double dx = i_end.dofValue(0) - i_start.dofValue(0);
  const double dy = i_end.dofValue(1) - i_start.dofValue(1);
  const double length = std::sqrt(dx * dx + dy * dy);
  double first = s_infinity;
  for (const DiscWorld::Disc& disc : i_discs)
  {
    const double cx = disc.x - i_start.dofValue(0);
    const double cy = disc.y - i_start.dofValue(1);
    if (cx * cx + cy * cy <= disc.radius * disc.radius)
      return 0.0;
    if (length == 0.0)
      continue;
    const double along = (cx * dx + cy * dy) / length;
    const double across = cx * cx + cy * cy - along * along;
    const double halfChord = disc.radius * disc.radius - across;
    if (halfChord < 0.0)
      continue;
    const double touch = along - std::sqrt(halfChord);
    if (touch >= 0.0 && touch <= length)
      first = std::min(first, touch);
  }
  return first;
}
} // namespace

class DiscConfigValidator : public CorvConfigValidator
{
  LUM_CONCRETE(DiscConfigValidator, CorvConfigValidator);

public:
  static DiscConfigValidatorShPtr create(const CorvConfigSpaceShPtr& i_space, const ShPtr<DiscWorld::Discs>& i_discs)
  {
    return lumCreate<DiscConfigValidator>(i_space, i_discs);
  }
  CorvValidatorShPtr clone() const override { return lumCreateCopy<DiscConfigValidator>(self()); }
  bool doValidateConfig(const CorvConfig& i_cfg, const ClumParameterMapConstShPtr&,
                        const CorvValidationReportConstShPtr&, CorvValidationReportShPtr& o_report) const override
  {
    o_report = CorvValidationReport::create();
    return firstTouch(*m_discs, i_cfg, i_cfg) == s_infinity;
  }

protected:
  DiscConfigValidator() = default;
  DiscConfigValidator(const CorvConfigSpaceShPtr& i_space, const ShPtr<DiscWorld::Discs>& i_discs)
    : CorvConfigValidator(i_space, "discs"), m_discs(i_discs)
  {
  }
  DiscConfigValidator(const DiscConfigValidator&) = default;
  lmStatus init(const DiscConfigValidatorWkPtr& i_weakPtr) { return CorvConfigValidator::init(i_weakPtr); }

private:
  ShPtr<DiscWorld::Discs> m_discs;
};

LUM_DESCRIBE(DiscConfigValidator)
{
}

/// Stands in for the collision validator: exact, with the marks of a progressive test short of the first touch.
class DiscMotionValidator : public CorvValidatorDPCollision
{
  LUM_CONCRETE(DiscMotionValidator, CorvValidatorDPCollision);

public:
  static DiscMotionValidatorShPtr create(const CorvConfigSpaceShPtr& i_space, double i_penetration,
                                         const ShPtr<DiscWorld::Discs>& i_discs)
  {
    return lumCreate<DiscMotionValidator>(i_space, i_penetration, i_discs);
  }
  CorvValidatorShPtr clone() const override { return lumCreateCopy<DiscMotionValidator>(self()); }
  bool doValidateDirectPath(const CorvDirectPath& i_dp, const ClumParameterMapConstShPtr& i_params,
                            const CorvValidationReportConstShPtr&, CorvValidationReportShPtr& o_report) const override
  {
    static const ClumStringKey s_algorithm("orvane.core.validator.dp.collision.algorithm");
    const CorvReportDPCollisionShPtr report = CorvReportDPCollision::create();
    report->length(i_dp.length());
    o_report = report;
    i_dp.deleteMark(minParamMark());
    i_dp.deleteMark(maxParamMark());
    const int used = i_params ? i_params->intValue(s_algorithm, algorithm()) : algorithm();
    const CorvConfig start(i_dp.startConfiguration());
    const CorvConfig end(i_dp.endConfiguration());
    const bool isBackward = used == PROGRESSIVE_BACKWARD;
    const double touch = isBackward ? firstTouch(*m_discs, end, start) : firstTouch(*m_discs, start, end);
    const double proved = touch - 0.01;
    if (used == PROGRESSIVE_FORWARD && proved > 0.0 && touch < s_infinity)
      i_dp.setMark(maxParamMark(), proved);
    if (isBackward && proved > 0.0 && touch < s_infinity)
      i_dp.setMark(minParamMark(), i_dp.length() - proved);
    return touch == s_infinity;
  }
  bool shouldRevalidateDirectPath(const CorvDirectPath& i_dp, const ClumParameterMapConstShPtr&,
                                  const CorvValidationReportConstShPtr& i_report) const override
  {
    return !i_report->isValid() || i_dp.length() <= 0.0;
  }

protected:
  DiscMotionValidator() = default;
  DiscMotionValidator(const CorvConfigSpaceShPtr& i_space, double i_penetration, const ShPtr<DiscWorld::Discs>& i_discs)
    : CorvValidatorDPCollision(i_space, CorvValidatorConstShPtr(), i_penetration, DICHOTOMY), m_discs(i_discs)
  {
  }
  DiscMotionValidator(const DiscMotionValidator&) = default;
  lmStatus init(const DiscMotionValidatorWkPtr& i_weakPtr) { return CorvValidatorDPCollision::init(i_weakPtr); }

private:
  ShPtr<DiscWorld::Discs> m_discs;
};

LUM_DESCRIBE(DiscMotionValidator)
{
}

namespace
{
CorvConfigSpaceShPtr makeSquare(bool i_oriented)
{
  const CorvCSCompositeShPtr square = CorvCSComposite::create("square");
  for (int rank = 0; rank < 2; ++rank)
  {
    const CorvDofShPtr dof = CorvDof::create(false);
    dof->boundWithin(0.0, 10.0);
    square->appendSubspace(dof);
  }
  square->steeringMethod(CorvSMLinear::create(i_oriented));
  return square;
}
} // namespace

DiscWorld::DiscWorld(const Discs& i_discs, bool i_oriented, double i_penetration)
  : space(makeSquare(i_oriented)), roadmap(CorvRoadmap::create(space)), m_discs(new Discs(i_discs))
{
  space->configValidators()->add(DiscConfigValidator::create(space, m_discs));
  space->pushDirectPathValidators(CorvValidatorSet::create(space));
  space->directPathValidators()->add(DiscMotionValidator::create(space, i_penetration, m_discs));
}

CorvConfig DiscWorld::at(double i_x, double i_y) const
{
  return CorvConfig(space, {i_x, i_y});
}

CorvConfig DiscWorld::randomFree() const
{
  CorvConfig config(space);
  do
    config.randomize();
  while (!isFree(config));
  return config;
}

bool DiscWorld::isFree(const CorvConfig& i_start, const CorvConfig& i_end) const
{
  // By the distance of each centre from the segment, apart from how the validator computes touches.
  for (const Disc& disc : *m_discs)
  {
    const double dx = i_end.dofValue(0) - i_start.dofValue(0);
    const double dy = i_end.dofValue(1) - i_start.dofValue(1);
    const double cx = disc.x - i_start.dofValue(0);
    const double cy = disc.y - i_start.dofValue(1);
    const double squaredLength = dx * dx + dy * dy;
    double at = squaredLength > 0.0 ? (cx * dx + cy * dy) / squaredLength : 0.0;
    at = std::min(std::max(at, 0.0), 1.0);
    if (std::hypot(cx - at * dx, cy - at * dy) <= disc.radius)
      return false;
  }
  return true;
}

bool DiscWorld::isSound(const CorvRoadmap& i_roadmap) const
{
  for (unsigned int rank = 0; rank < i_roadmap.countNodes(); ++rank)
  {
    const CorvNodeShPtr& node = i_roadmap.node(rank);
    for (unsigned int out = 0; out < node->countOutEdges(); ++out)
    {
      const CorvEdgeShPtr& edge = node->outEdge(out);
      const bool fits = edge->directPath()->startConfiguration().isEquivalent(node->config()) &&
                        edge->directPath()->endConfiguration().isEquivalent(edge->endNode()->config());
      if (!fits || !edge->directPath()->isValid() || !isFree(node->config(), edge->endNode()->config()))
        return false;
    }
  }
  return true;
}
