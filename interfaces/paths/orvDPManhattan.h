#pragma once

#include "paths/orvDirectPath.h"

#include <vector>

/// The motion of `CorvSMManhattan`: one dof after the other, each measured by its own metric.
///
/// An unbounded rotation goes the short way. The order of the dofs belongs to the motion; when the space changes, its
/// dofs are found again by their identity and new ones come last.
class LUM_API CorvDPManhattan : public CorvDirectPath
{
  LUM_CONCRETE(CorvDPManhattan, CorvDirectPath);

public:
  ~CorvDPManhattan() override;
  /// @return null if the space has no device, or an unbounded rotation is half a turn apart, within 1e-7.
  static CorvDPManhattanShPtr create(const CorvConfig& i_start, const CorvConfig& i_end, bool i_randomize,
                                     const CorvSteeringMethodShPtr& i_steeringMethod);
  static CorvDPManhattanShPtr createCopy(const CorvDPManhattanConstShPtr& i_objectToCopy);
  CorvAbstractPathShPtr clone() const override;

  /// Tells one straight motion for each dof.
  void describe(const CorvPathVisitorShPtr& i_visitor) const override;
  /// Always refused, these motions being oriented; the order that `retrieveDofMotionOrder` tells is turned all the
  /// same.
  lmStatus reverse() override;
  /// For each dof the rate at which it moves when it does; infinite where it moves but its metric gives no distance.
  void maxAbsoluteDerivative(double i_from, double i_to, std::vector<double>& o_derivatives) const override;
  lmStatus convert(const CorvConfigSpaceShPtr& i_space) override;

  /// The ranks of the dofs as they move when the path is run through.
  void retrieveDofMotionOrder(std::vector<unsigned int>& o_order) const;
  /// True if a dof that changes by `i_delta` goes towards smaller values: by the sign for a translation, the short way
  /// round for a rotation.
  bool goLeft(unsigned int i_dof, double i_delta) const;

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

protected:
  CorvDPManhattan() = default;
  CorvDPManhattan(const CorvConfig& i_start, const CorvConfig& i_end, bool i_randomize,
                  const CorvSteeringMethodShPtr& i_steeringMethod);
  CorvDPManhattan(const CorvDPManhattan&) = default;
  lmStatus init(const CorvDPManhattanWkPtr& i_weakPtr);
  lmStatus init(const CorvDPManhattanWkPtr& i_weakPtr, const CorvDPManhattanConstShPtr& i_source);

  void interpolate(double i_distance, CorvConfig& io_cfg) const override;
  double computePrivateLength() const override;
  /// The order of the motion that is neither cut nor reversed.
  void retrievePrivateMotionOrder(std::vector<unsigned int>& o_order) const;

private:
  static const double s_halfTurnTolerance;

  bool hasHalfTurn() const;
  const std::vector<unsigned int>& dofOrder() const;
  double dofWay(unsigned int i_rank) const;
  double dofLength(unsigned int i_rank) const;

  mutable std::vector<unsigned int> m_dofOrder; ///< ranks at `m_orderVersion` of the space
  mutable unsigned int m_orderVersion = 0;      ///< 0 until the space is asked
  bool m_isReversed = false;
};
