#include "paths/orvDPReedsNShepp.h"

#include "foundation/lumDescribe.h"
#include "paths/orvSMReedsNShepp.h"

#include <limits>

LUM_DESCRIBE(CorvDPReedsNShepp)
{
  i_class.creates("(const CorvConfig& i_start, const CorvConfig& i_end, const CorvSMCurveShPtr& i_steeringMethod)",
                  &Self::create);
}

CorvDPReedsNShepp::~CorvDPReedsNShepp() = default;

lmStatus CorvDPReedsNShepp::init(const CorvDPReedsNSheppWkPtr& i_weakPtr)
{
  return CorvDPCurve::init(i_weakPtr);
}

CorvDPReedsNSheppShPtr CorvDPReedsNShepp::create(const CorvConfig& i_start, const CorvConfig& i_end,
                                                 const CorvSMCurveShPtr& i_steeringMethod)
{
  return lumCreate<CorvDPReedsNShepp>(i_start, i_end, i_steeringMethod);
}

CorvDPReedsNSheppShPtr CorvDPReedsNShepp::createCopy(const CorvDPReedsNSheppConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvAbstractPathShPtr CorvDPReedsNShepp::clone() const
{
  return createCopy(self());
}

const std::vector<CorvDPCurve::CWord>& CorvDPReedsNShepp::words()
{
  const CCurve::EDirection on = CCurve::FORWARD, back = CCurve::BACKWARD;
  const CCurve::EType left = CCurve::LEFT_TURN, right = CCurve::RIGHT_TURN, line = CCurve::STRAIGHT_LINE;
  static const CWord s_bases[] = {
    {3, {{left, on, T}, {right, back, U}, {left, on, V}}},
    {3, {{left, on, T}, {right, back, U}, {left, back, V}}},
    {3, {{left, on, T}, {line, on, U}, {left, on, V}}},
    {3, {{left, on, T}, {line, on, U}, {right, on, V}}},
    {4, {{left, on, T}, {right, on, U}, {left, back, U}, {right, back, V}}},
    {4, {{left, on, T}, {right, back, U}, {left, back, U}, {right, on, V}}},
    {4, {{left, on, T}, {right, back, QUARTER}, {line, back, U}, {left, back, V}}},
    {4, {{left, on, T}, {right, back, QUARTER}, {line, back, U}, {right, back, V}}},
    {5, {{left, on, T}, {right, back, QUARTER}, {line, back, U}, {left, back, QUARTER}, {right, on, V}}},
    {3, {{left, on, T}, {right, on, U}, {left, back, V}}},
    {4, {{left, on, T}, {line, on, U}, {right, on, QUARTER}, {left, back, V}}},
    {4, {{left, on, T}, {line, on, U}, {left, on, QUARTER}, {right, back, V}}}};
  static const std::vector<CWord> s_words = []
  {
    std::vector<CWord> all;
    for (const CWord& base : s_bases)
      for (int k = 0; k < 4; ++k)
      {
        // Of the two images of a word the first two groups have the change of direction first, the others that of side.
        const bool isEarly = all.size() < 8;
        const bool isTimeFlipped = k == 3 || k == (isEarly ? 1 : 2);
        const bool isReflected = k == 3 || k == (isEarly ? 2 : 1);
        CWord word = base;
        for (CWordCurve& curve : word.curves)
        {
          if (isTimeFlipped)
            curve.direction = curve.direction == CCurve::FORWARD ? CCurve::BACKWARD : CCurve::FORWARD;
          if (isReflected && curve.type != CCurve::STRAIGHT_LINE)
            curve.type = curve.type == CCurve::LEFT_TURN ? CCurve::RIGHT_TURN : CCurve::LEFT_TURN;
        }
        all.push_back(word);
      }
    return all;
  }();
  return s_words;
}

double CorvDPReedsNShepp::computeParams(const CCurveCoordinates& i_start, const CCurveCoordinates& i_end, int& o_word,
                                        double& o_t, double& o_u, double& o_v) const
{
  const std::vector<CWord>& all = words();
  const CGoals goals = goalsFrom(i_start, i_end);
  CBest best;
  static constexpr TWordSolver s_solvers[] = {&c_c_c,   &c_cc,    &csca,      &cscb, &ccu_cuc, &c_cucu_c,
                                              &c_c2sca, &c_c2scb, &c_c2sc2_c, &cc_c, &csc2_ca, &csc2_cb};
  for (int group = 0; group < 12; ++group)
  {
    const bool isEarly = group < 2;
    const CGoal* const images[] = {&goals.base, isEarly ? &goals.timeFlip : &goals.reflection,
                                   isEarly ? &goals.reflection : &goals.timeFlip, &goals.both};
    for (int k = 0; k < 4; ++k)
    {
      const int rank = 4 * group + k;
      tryWord(rank + 1, all[rank], s_solvers[group], *images[k], goals.base, best);
    }
  }
  if (best.word == 0)
    return std::numeric_limits<double>::infinity();
  o_word = best.word;
  o_t = best.t;
  o_u = best.u;
  o_v = best.v;
  return best.length;
}

lmStatus CorvDPReedsNShepp::createCurvesWithParams(int i_word, double i_t, double i_u, double i_v,
                                                   const CCurveCoordinates& i_start, double i_radius,
                                                   std::vector<CCurve>& o_curves) const
{
  const std::vector<CWord>& all = words();
  if (i_word < 1 || i_word > static_cast<int>(all.size()))
    return lmStatus(lmStatus::FAILURE);
  return appendWord(all[i_word - 1], i_t, i_u, i_v, i_start, i_radius, o_curves);
}
