#pragma once

#include "paths/orvDirectPath.h"

#include <vector>

/// The motion of a car: arcs of the smallest turning circle and straight lines, the shortest chain of a family of
/// words.
///
/// The curves are always those between the current ends: a cut or a reversal replaces an end and finds the shortest
/// word anew, which may have another shape than the stretch that it replaces. So the window of the base stays whole,
/// public and private distance are the same, and marks are dropped by each edit. The length is that of the curves, in
/// the unit of x and y. Dofs other than x, y and theta keep the values of the start.
class LUM_API CorvDPCurve : public CorvDirectPath
{
  LUM_ABSTRACT(CorvDPCurve, CorvDirectPath);

public:
  /// A place and a heading in the plane.
  class LUM_API CCurveCoordinates
  {
  public:
    CCurveCoordinates() = default;
    CCurveCoordinates(double i_x, double i_y, double i_theta) : m_x(i_x), m_y(i_y), m_theta(i_theta) {}

    double x() const { return m_x; }
    void x(double i_x) { m_x = i_x; }
    double y() const { return m_y; }
    void y(double i_y) { m_y = i_y; }
    double theta() const { return m_theta; }
    void theta(double i_theta) { m_theta = i_theta; }

  private:
    double m_x = 0.0;
    double m_y = 0.0;
    double m_theta = 0.0;
  };

  /// One arc or line.
  struct CCurve
  {
    enum EDirection
    {
      FORWARD,
      BACKWARD
    };
    enum EType
    {
      LEFT_TURN,
      RIGHT_TURN,
      STRAIGHT_LINE
    };

    CCurve() = default;
    CCurve(const CCurveCoordinates& i_start, const CCurveCoordinates& i_end, double i_centerX, double i_centerY,
           double i_length, double i_radius, EDirection i_direction, EType i_type)
      : startCoord(i_start), endCoord(i_end), centerX(i_centerX), centerY(i_centerY), length(i_length),
        radius(i_radius), direction(i_direction), type(i_type)
    {
    }

    CCurveCoordinates startCoord;
    CCurveCoordinates endCoord;
    double centerX = 0.0; ///< of an arc's circle
    double centerY = 0.0;
    double length = 0.0; ///< never negative
    double radius = 0.0;
    EDirection direction = FORWARD;
    EType type = STRAIGHT_LINE;
  };

  ~CorvDPCurve() override;

  unsigned int countCurves() const { return static_cast<unsigned int>(m_curves.size()); }
  /// @return -1 for a rank out of range.
  lmStatus getCurve(unsigned int i_rank, CCurve& o_curve) const;
  /// The place and heading of a configuration of the path's space.
  CCurveCoordinates curveCoordinatesFromConfig(const CorvConfig& i_cfg) const;
  /// The path's start, with another place and heading.
  CorvConfig configFromCurveCoordinates(const CCurveCoordinates& i_coordinates) const;

  double length() const override;
  const CorvConfig& startConfiguration() const override;
  const CorvConfig& endConfiguration() const override;
  /// Fail, with the path as it was, where the base's do, and where the new ends are equivalent.
  lmStatus extractFrom(double i_from) override;
  lmStatus extractTo(double i_to) override;
  lmStatus reverse() override;
  lmStatus convert(const CorvConfigSpaceShPtr& i_space) override;
  /// On an arc the rates of x and y are bounded by the full speed, whatever the heading.
  void maxAbsoluteDerivative(double i_from, double i_to, std::vector<double>& o_derivatives) const override;
  void didUnvalidate() const override;

  /// The shortest word between two poses for a circle of radius 1, with its parameters.
  /// @return its length, +infinity if no word leads there.
  virtual double computeParams(const CCurveCoordinates& i_start, const CCurveCoordinates& i_end, int& o_word,
                               double& o_t, double& o_u, double& o_v) const = 0;
  /// Appends the curves of a word. @return -1 for a word that does not exist.
  virtual lmStatus createCurvesWithParams(int i_word, double i_t, double i_u, double i_v,
                                          const CCurveCoordinates& i_start, double i_radius,
                                          std::vector<CCurve>& o_curves) const = 0;

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

protected:
  /// A goal as seen from the start, and what the solvers share: of the circles on the left and on the right of the
  /// goal, where the centre lies from the centre of the circle on the left of the start, in polar coordinates.
  struct CGoal
  {
    double phi = 0.0;
    double leftRadius = 0.0;
    double leftAngle = 0.0;
    double rightRadius = 0.0;
    double rightAngle = 0.0;
  };
  /// The goal and its images: itself, with time turned, reflected at the heading, both.
  struct CGoals
  {
    CGoal base;
    CGoal timeFlip;
    CGoal reflection;
    CGoal both;
  };
  /// Finds t, u and v of a word, each in [0, 2 pi) or, on a line, the length. @return the word's length, +infinity
  /// without a solution.
  using TWordSolver = double (*)(const CGoal& i_goal, double& o_t, double& o_u, double& o_v);

  /// What a parameter of a curve of a word is.
  enum EParameter : unsigned char
  {
    T,
    U,
    V,
    QUARTER ///< a quarter circle
  };
  struct CWordCurve
  {
    CCurve::EType type;
    CCurve::EDirection direction;
    EParameter parameter;
  };
  struct CWord
  {
    unsigned int count;
    CWordCurve curves[5];
  };
  /// The shortest word so far.
  struct CBest
  {
    int word = 0;
    double length = 0.0;
    double t = 0.0;
    double u = 0.0;
    double v = 0.0;
  };

  CorvDPCurve() = default;
  CorvDPCurve(const CorvConfig& i_start, const CorvConfig& i_end, const CorvSMCurveShPtr& i_steeringMethod);
  CorvDPCurve(const CorvDPCurve&) = default;
  /// Fails if the dofs are not in the space, are passive or of the wrong kind, if others differ at the ends, if the
  /// radius is not above 0, if an unbounded theta is half a turn apart within 1e-7, or if no word leads to the end.
  lmStatus init(const CorvDPCurveWkPtr& i_weakPtr);

  void interpolate(double i_distance, CorvConfig& io_cfg) const override;
  /// The sum of the curves' lengths.
  double computePrivateLength() const override;
  double privateLength() const override;

  lmStatus createCurves(const CCurveCoordinates& i_start, const CCurveCoordinates& i_end, double i_radius,
                        std::vector<CCurve>& o_curves) const;
  static CCurve createCurve(CCurve::EType i_type, CCurve::EDirection i_direction, double i_length,
                            CCurveCoordinates& io_coordinates, double i_radius);
  static CGoals goalsFrom(const CCurveCoordinates& i_start, const CCurveCoordinates& i_end);
  /// Takes a word over if it is shorter than the best and, replayed, leads to the goal: within 3e-6 of its distance,
  /// and of 1 for near goals, since a parameter within 1e-6 of 0 is taken for 0.
  static void tryWord(int i_rank, const CWord& i_word, TWordSolver i_solver, const CGoal& i_image, const CGoal& i_goal,
                      CBest& io_best);
  static lmStatus appendWord(const CWord& i_word, double i_t, double i_u, double i_v, const CCurveCoordinates& i_start,
                             double i_radius, std::vector<CCurve>& o_curves);

  /// Into [0, 2 pi), the second with all that is within 1e-6 of a full turn at 0. @{
  static double s_mod2pi(double i_angle);
  static double s_mod2pi_approx(double i_angle);
  /// @}
  /// The words that begin with a left turn forward; formulas of Reeds and Shepp (1990), 8.1 to 8.11, and for `ccc` of
  /// Dubins (1957). @{
  static double ccc(const CGoal& i_goal, double& o_t, double& o_u, double& o_v);
  static double csca(const CGoal& i_goal, double& o_t, double& o_u, double& o_v);
  static double cscb(const CGoal& i_goal, double& o_t, double& o_u, double& o_v);
  static double c_c_c(const CGoal& i_goal, double& o_t, double& o_u, double& o_v);
  static double c_cc(const CGoal& i_goal, double& o_t, double& o_u, double& o_v);
  static double cc_c(const CGoal& i_goal, double& o_t, double& o_u, double& o_v);
  static double ccu_cuc(const CGoal& i_goal, double& o_t, double& o_u, double& o_v);
  static double c_cucu_c(const CGoal& i_goal, double& o_t, double& o_u, double& o_v);
  static double c_c2sca(const CGoal& i_goal, double& o_t, double& o_u, double& o_v);
  static double c_c2scb(const CGoal& i_goal, double& o_t, double& o_u, double& o_v);
  static double c_c2sc2_c(const CGoal& i_goal, double& o_t, double& o_u, double& o_v);
  static double csc2_ca(const CGoal& i_goal, double& o_t, double& o_u, double& o_v);
  static double csc2_cb(const CGoal& i_goal, double& o_t, double& o_u, double& o_v);
  /// @}

private:
  static const double s_halfTurnTolerance;

  lmStatus checkDofs() const;
  lmStatus getDofRanks(unsigned int* o_ranks) const;
  lmStatus replaceEnds(const CorvConfig& i_start, const CorvConfig& i_end);
  static bool leadsTo(const CWord& i_word, double i_t, double i_u, double i_v, const CGoal& i_goal);
  static CCurveCoordinates coordinatesOnCurve(const CCurve& i_curve, double i_distance);

  CorvSMCurveShPtr m_SMCurve;
  std::vector<CCurve> m_curves;
  CorvConfig m_startConfig;
  CorvConfig m_endConfig;
};
