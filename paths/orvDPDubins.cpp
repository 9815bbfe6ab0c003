#include "paths/orvDPDubins.h"

#include "foundation/lumDescribe.h"
#include "paths/orvSMDubins.h"

#include <limits>

LUM_DESCRIBE(CorvDPDubins)
{
  i_class.creates("(const CorvConfig& i_start, const CorvConfig& i_end, const CorvSMCurveShPtr& i_steeringMethod)",
                  &Self::create);
}

CorvDPDubins::~CorvDPDubins() = default;

lmStatus CorvDPDubins::init(const CorvDPDubinsWkPtr& i_weakPtr)
{
  return CorvDPCurve::init(i_weakPtr);
}

CorvDPDubinsShPtr CorvDPDubins::create(const CorvConfig& i_start, const CorvConfig& i_end,
                                       const CorvSMCurveShPtr& i_steeringMethod)
{
  return lumCreate<CorvDPDubins>(i_start, i_end, i_steeringMethod);
}

CorvDPDubinsShPtr CorvDPDubins::createCopy(const CorvDPDubinsConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvAbstractPathShPtr CorvDPDubins::clone() const
{
  return createCopy(self());
}

const std::vector<CorvDPCurve::CWord>& CorvDPDubins::words()
{
  const auto word = [](CCurve::EType i_first, CCurve::EType i_second, CCurve::EType i_third) {
    return CWord{3, {{i_first, CCurve::FORWARD, T}, {i_second, CCurve::FORWARD, U}, {i_third, CCurve::FORWARD, V}}};
  };
  const CCurve::EType left = CCurve::LEFT_TURN, right = CCurve::RIGHT_TURN, line = CCurve::STRAIGHT_LINE;
  static const std::vector<CWord> s_words = {word(left, right, left), word(right, left, right),
                                             word(left, line, left),  word(left, line, right),
                                             word(right, line, left), word(right, line, right)};
  return s_words;
}

double CorvDPDubins::computeParams(const CCurveCoordinates& i_start, const CCurveCoordinates& i_end, int& o_word,
                                   double& o_t, double& o_u, double& o_v) const
{
  const std::vector<CWord>& all = words();
  const CGoals goals = goalsFrom(i_start, i_end);
  CBest best;
  tryWord(1, all[0], &ccc, goals.base, goals.base, best);
  tryWord(2, all[1], &ccc, goals.reflection, goals.base, best);
  tryWord(3, all[2], &csca, goals.base, goals.base, best);
  tryWord(4, all[3], &cscb, goals.base, goals.base, best);
  tryWord(5, all[4], &cscb, goals.reflection, goals.base, best);
  tryWord(6, all[5], &csca, goals.reflection, goals.base, best);
  if (best.word == 0)
    return std::numeric_limits<double>::infinity();
  o_word = best.word;
  o_t = best.t;
  o_u = best.u;
  o_v = best.v;
  return best.length;
}

lmStatus CorvDPDubins::createCurvesWithParams(int i_word, double i_t, double i_u, double i_v,
                                              const CCurveCoordinates& i_start, double i_radius,
                                              std::vector<CCurve>& o_curves) const
{
  const std::vector<CWord>& all = words();
  if (i_word < 1 || i_word > static_cast<int>(all.size()))
    return lmStatus(lmStatus::FAILURE);
  return appendWord(all[i_word - 1], i_t, i_u, i_v, i_start, i_radius, o_curves);
}
