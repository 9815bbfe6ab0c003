#pragma once

#include "paths/orvDirectPath.h"

#include <vector>

/// The motion of `CorvSMSequence`: the motions of sub-spaces one after the other. Sub-spaces before the one that moves
/// stand at their ends, those after it at their starts.
class LUM_API CorvDPSequence : public CorvDirectPath
{
  LUM_CONCRETE(CorvDPSequence, CorvDirectPath);

public:
  ~CorvDPSequence() override;
  /// @return null if some direct path is null or of a space that does not lie in that of the ends.
  static CorvDPSequenceShPtr create(const CorvConfig& i_start, const CorvConfig& i_end,
                                    const std::vector<CorvDirectPathShPtr>& i_directPaths,
                                    const CorvSteeringMethodShPtr& i_steeringMethod);
  static CorvDPSequenceShPtr createCopy(const CorvDPSequenceConstShPtr& i_objectToCopy);
  CorvAbstractPathShPtr clone() const override;

  unsigned int countDirectPaths() const { return static_cast<unsigned int>(m_directPaths.size()); }
  /// Null out of range.
  CorvDirectPathConstShPtr directPath(unsigned int i_rank) const;

  /// Describes the part of each child that lies in the window, in the order and the sense in which it is run through.
  void describe(const CorvPathVisitorShPtr& i_visitor) const override;
  /// The rates of those children that move between the two distances; infinite for a child that changes without a
  /// length.
  void maxAbsoluteDerivative(double i_from, double i_to, std::vector<double>& o_derivatives) const override;
  lmStatus convert(const CorvConfigSpaceShPtr& i_space) override;

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

protected:
  CorvDPSequence() = default;
  CorvDPSequence(const CorvConfig& i_start, const CorvConfig& i_end,
                 const std::vector<CorvDirectPathShPtr>& i_directPaths,
                 const CorvSteeringMethodShPtr& i_steeringMethod);
  /// The copy owns copies of the children.
  CorvDPSequence(const CorvDPSequence& i_other);
  lmStatus init(const CorvDPSequenceWkPtr& i_weakPtr);

  void interpolate(double i_distance, CorvConfig& io_cfg) const override;
  double computePrivateLength() const override;

private:
  lmStatus checkChildren() const;
  CorvDirectPathConstShPtr childInWindow(const CorvDirectPathShPtr& i_child, double i_offset) const;

  std::vector<CorvDirectPathShPtr> m_directPaths;
};
