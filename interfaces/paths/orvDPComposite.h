#pragma once

#include "paths/orvDirectPath.h"

#include <vector>

/// Motions of sub-spaces in parallel, all stretched to the one length that the space's metric gives.
///
/// There is one child for each moving sub-space, in rank order; null stands for a sub-space that is wholly passive.
/// Children are sampled by parameter. Dofs that no child covers are passive.
///
/// The straight motion of a whole space, which most motions are, computes itself and makes its one child when somebody
/// asks for it.
class LUM_API CorvDPComposite : public CorvDirectPath
{
  LUM_CONCRETE(CorvDPComposite, CorvDirectPath);

public:
  ~CorvDPComposite() override;
  static CorvDPCompositeShPtr create(const CorvConfig& i_start, const CorvConfig& i_end,
                                     const std::vector<CorvDirectPathShPtr>& i_directPaths,
                                     const CorvSteeringMethodShPtr& i_steeringMethod);
  /// The motion whose one child is the straight motion of the whole space.
  /// @return null if there is none, see `CorvDPLinear`.
  static CorvDPCompositeShPtr createStraight(const CorvConfig& i_start, const CorvConfig& i_end,
                                             const CorvSteeringMethodShPtr& i_steeringMethod);
  static CorvDPCompositeShPtr createCopy(const CorvDPCompositeConstShPtr& i_objectToCopy);
  CorvAbstractPathShPtr clone() const override;

  unsigned int countDirectPaths() const { return static_cast<unsigned int>(directPaths().size()); }
  CorvDirectPathConstShPtr directPath(unsigned int i_rank) const;

  /// Describes the part of each child that lies in the window, as it is run through.
  void describe(const CorvPathVisitorShPtr& i_visitor) const override;
  void maxAbsoluteDerivative(double i_from, double i_to, std::vector<double>& o_derivatives) const override;
  bool getStraightVelocity(std::vector<double>& o_velocity) const override;
  lmStatus convert(const CorvConfigSpaceShPtr& i_space) override;

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

protected:
  CorvDPComposite();
  CorvDPComposite(const CorvConfig& i_start, const CorvConfig& i_end,
                  const std::vector<CorvDirectPathShPtr>& i_directPaths,
                  const CorvSteeringMethodShPtr& i_steeringMethod);
  /// The copy owns copies of the children.
  CorvDPComposite(const CorvDPComposite& i_other);
  lmStatus init(const CorvDPCompositeWkPtr& i_weakPtr);

  void interpolate(double i_distance, CorvConfig& io_cfg) const override;
  double computePrivateLength() const override;

private:
  bool isStraight() const;
  bool hasOnlyStraightChild() const;
  const std::vector<CorvDirectPathShPtr>& directPaths() const;
  bool isMovingChild(const CorvDirectPathShPtr& i_child) const;
  CorvDirectPathConstShPtr childInWindow(const CorvDirectPathShPtr& i_child) const;
  double computeMaxAbsoluteDerivativeForPassiveDof(double i_from, double i_to, unsigned int i_dof) const;
  void fillChildDerivatives(const CorvDirectPath& i_child, unsigned int i_rank,
                            std::vector<double>& io_derivatives) const;
  bool addChildVelocity(const CorvDirectPath& i_child, double i_stretch, std::vector<double>& o_scratch,
                        std::vector<double>& io_velocity) const;

  enum EKind : unsigned char
  {
    UNKNOWN,
    STRAIGHT,
    GENERAL
  };

  mutable std::vector<CorvDirectPathShPtr> m_directPaths; ///< empty in a straight motion until it is asked for
  mutable EKind m_kind = UNKNOWN;                         ///< found out on first use, from the children
};
