#pragma once

#include "paths/orvDPSolidMotion.h"

/// The motion of `CorvSMSlerp`: the origin goes straight, the orientation by the shortest rotation, about one axis, at
/// a constant rate. Other dofs go as in `CorvDPLinear`.
///
/// Its length is that of the space's metric. A frame has many names in angles; the values follow the name of the start
/// without a jump (an angle may pass pi, and ry a quarter turn). The ends are given as they are: where the end goes by
/// another name of the same frame, the name changes there, and only there. A rotation about an axis that is close to,
/// but not in, a coordinate plane can pass near ry = ± pi/2; rx and rz then turn fast, although the frame does not.
class LUM_API CorvDPSlerp : public CorvDPSolidMotion
{
  LUM_CONCRETE(CorvDPSlerp, CorvDPSolidMotion);

public:
  ~CorvDPSlerp() override;
  /// @return null if the orientations, or another unbounded rotation, are half a turn apart within 1e-7, the space does
  /// not hold one free-flying joint, an angle of the joint is passive, or a bounded one would change its name at the
  /// end.
  static CorvDPSlerpShPtr create(const CorvConfig& i_start, const CorvConfig& i_end,
                                 const CorvSteeringMethodShPtr& i_steeringMethod);
  static CorvDPSlerpShPtr createCopy(const CorvDPSlerpConstShPtr& i_objectToCopy);
  CorvAbstractPathShPtr clone() const override;

  double linearSpeed() const override;
  double angularSpeed() const override;
  /// The largest rates of the dofs on the interval, exact up to rounding. A change of name at the very end is not
  /// counted; where it could mislead the bound on bodies, rx and ry get at least the angular speed, which bounds them.
  void maxAbsoluteDerivative(double i_from, double i_to, std::vector<double>& o_derivatives) const override;
  lmStatus convert(const CorvConfigSpaceShPtr& i_space) override;

protected:
  CorvDPSlerp() = default;
  CorvDPSlerp(const CorvConfig& i_start, const CorvConfig& i_end, const CorvSteeringMethodShPtr& i_steeringMethod);
  CorvDPSlerp(const CorvDPSlerp&) = default;
  lmStatus init(const CorvDPSlerpWkPtr& i_weakPtr);
  lmStatus init(const CorvDPSlerpWkPtr& i_weakPtr, const CorvDPSlerpConstShPtr& i_source);

  void interpolate(double i_distance, CorvConfig& io_cfg) const override;
  double computePrivateLength() const override;

private:
  static const double s_halfTurnTolerance;

  /// One of the two planes into which the quaternion of Rx(a)·Ry(b)·Rz(c) falls: the first turns by (a + c)/2, the
  /// second by (a - c)/2, and their radii tell b. In each the motion is a weighted sum of two vectors.
  struct CPlane
  {
    double start[2] = {0.0, 0.0};
    double end[2] = {0.0, 0.0};
    double angle = 0.0;  ///< of the start
    double radius = 0.0; ///< of the start, negative if the start points against the angle
    double moment = 0.0; ///< radius squared times rate of the angle, by parameter: constant
    double straightEnd = 0.0;
    bool isStraight = false; ///< the vector stays on one line, on which it ends at `straightEnd`
  };
  struct CMotion
  {
    CPlane sum;
    CPlane difference;
    double halfAngle = 0.0; ///< of the whole rotation
    double sineOfHalf = 0.0;
    double startB = 0.0; ///< half of ry at the start
    bool isStartRenamed = false;
    bool isEndRenamed = false;
  };

  unsigned int solidRank() const;
  const CMotion& motion() const;
  double differenceOf(unsigned int i_rank) const;
  bool isAngleOfSolid(unsigned int i_rank) const;
  bool hasHalfTurn() const;
  static void fillMotion(const double* i_start, const double* i_end, CMotion& o_motion);
  static void startPlane(double i_angle, double i_radius, CPlane& o_plane);
  static void finishPlane(double i_momentScale, CPlane& io_plane);
  static void weights(const CMotion& i_motion, double i_param, double& o_start, double& o_end);
  static void polarAt(const CPlane& i_plane, double i_startWeight, double i_endWeight, double& o_angle,
                      double& o_radius);
  static void anglesAt(const CMotion& i_motion, double i_param, double* o_angles);
  static void sideOf(const CPlane& i_plane, double i_halfAngle, double* o_side);
  static unsigned int placesOfExtremes(const CMotion& i_motion, double i_from, double i_to, double* o_places);
  static double steepestInside(const CMotion& i_motion, double i_lowest, double i_highest, double i_atPlaces);
  static void angleRates(const CMotion& i_motion, double i_from, double i_to, double* o_rates);
  bool breaksABoundedRotation() const;

  mutable CMotion m_motion; ///< at `m_motionVersion` of the space, as the rank
  mutable unsigned int m_solidRank = 0;
  mutable unsigned int m_motionVersion = 0;
};
