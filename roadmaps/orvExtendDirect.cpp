#include "roadmaps/orvExtendDirect.h"

#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "foundation/lumParameterMap.h"
#include "kinematics/orvUtility.h"
#include "paths/orvDirectPath.h"
#include "paths/orvPath.h"
#include "roadmaps/linkSearch.h"
#include "validation/orvValidatorDPCollision.h"

std::atomic<unsigned int> CorvExtendDirect::s_extensionCount{0};

LUM_DESCRIBE(CorvExtendDirect)
{
  i_class.creates("()", &Self::create);
}

namespace
{
const ClumStringKey s_extendAlgorithmKey("orvane.core.validator.dp.collision.algorithm");
const ClumStringKey s_extendTestStartKey("orvane.core.validator.dp.collision.test-start");
const ClumStringKey s_extendTestGoalKey("orvane.core.validator.dp.collision.test-goal");
} // namespace

CorvExtendDirectShPtr CorvExtendDirect::create()
{
  return lumCreate<CorvExtendDirect>();
}

CorvExtendDirect::CorvExtendDirect() : m_testParameters(ClumParameterMap::create())
{
}

CorvExtendDirect::~CorvExtendDirect() = default;

lmStatus CorvExtendDirect::init(const CorvExtendDirectWkPtr& i_weakPtr)
{
  return CorvExtendMethod::init(i_weakPtr);
}

lmStatus CorvExtendDirect::restrictionBounds(double i_lower, double i_upper)
{
  const bool isUnset = i_lower < 0.0 && i_upper < 0.0;
  if (!isUnset && !(i_lower >= 0.0 && i_lower <= i_upper))
    return lmStatus(lmStatus::FAILURE);
  m_lowerRestrictionBound = i_lower;
  m_upperRestrictionBound = i_upper;
  return lmStatus();
}

void CorvExtendDirect::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  CorvExtendMethod::encodeWithCoder(i_coder);
  i_coder->encodeDouble(m_lowerRestrictionBound, "lowerRestrictionBound");
  i_coder->encodeDouble(m_upperRestrictionBound, "upperRestrictionBound");
}

lmStatus CorvExtendDirect::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = CorvExtendMethod::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  return restrictionBounds(i_coder->decodeDouble("lowerRestrictionBound"),
                           i_coder->decodeDouble("upperRestrictionBound"));
}

lmStatus CorvExtendDirect::doPlan(const CorvPathConstShPtr& i_inputPath, const std::vector<bool>&,
                                  const ClumParameterMapConstShPtr& i_parameters, CorvPathShPtr& o_path)
{
  o_path.reset();
  const bool isFromStart = stableStart();
  if (i_inputPath->countDirectPaths() != 1 || isFromStart == stableEnd())
    return lmStatus(lmStatus::FAILURE);
  ++s_extensionCount;
  CorvDirectPathConstShPtr directPath = restricted(i_inputPath->directPath(0), isFromStart);
  if (!directPath)
    return lmStatus(lmStatus::FAILURE);

  m_testParameters->setBase(i_parameters);
  m_testParameters->setInt(s_extendAlgorithmKey, isFromStart ? CorvValidatorDPCollision::PROGRESSIVE_FORWARD
                                                             : CorvValidatorDPCollision::PROGRESSIVE_BACKWARD);
  m_testParameters->setBool(s_extendTestStartKey, !isFromStart);
  m_testParameters->setBool(s_extendTestGoalKey, isFromStart);
  if (!directPath->validate(m_testParameters))
    directPath = orvProvedPart(directPath, m_testParameters);
  m_testParameters->setBase(ClumParameterMapConstShPtr());

  if (!directPath)
    return lmStatus(lmStatus::FAILURE);
  o_path = CorvPath::createWithDirectPath(directPath);
  return o_path ? lmStatus() : lmStatus(lmStatus::FAILURE);
}

/// The part of a direct path that is to be tested; null if it is too short to be one.
CorvDirectPathConstShPtr CorvExtendDirect::restricted(const CorvDirectPathConstShPtr& i_directPath,
                                                      bool i_fromStart) const
{
  if (m_upperRestrictionBound < 0.0)
    return i_directPath;
  const double bound = CorvUtility::random(m_lowerRestrictionBound, m_upperRestrictionBound);
  const double length = i_directPath->length();
  if (length <= bound)
    return i_directPath;
  return i_fromStart ? CorvDirectPath::createByExtractingTo(i_directPath, bound)
                     : CorvDirectPath::createByExtractingFrom(i_directPath, length - bound);
}
