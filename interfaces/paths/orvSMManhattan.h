#pragma once

#include "paths/orvSteeringMethod.h"

/// Moves one dof after the other. The way back starts with the last dof, so these motions are oriented.
class LUM_API CorvSMManhattan : public CorvSteeringMethod
{
  LUM_CONCRETE(CorvSMManhattan, CorvSteeringMethod);

public:
  ~CorvSMManhattan() override;
  static CorvSMManhattanShPtr create();
  static CorvSMManhattanShPtr createCopy(const CorvSMManhattanConstShPtr& i_objectToCopy);
  CorvSteeringMethodShPtr clone() const override;

  /// Whether each motion takes its dofs in an order of its own. That order is drawn from the C runtime's `rand`, not
  /// from the library's generator. False at first: ranks in their order.
  bool doesRandomizeDofOrder() const { return m_doesRandomizeDofOrder; }
  void doesRandomizeDofOrder(bool i_doesRandomize) { m_doesRandomizeDofOrder = i_doesRandomize; }

  /// @return a `CorvDPManhattan`, or null where that cannot be made.
  CorvDirectPathShPtr makeDirectPath(const CorvConfig& i_start, const CorvConfig& i_end) const override;
  bool isOriented(const CorvConfigSpaceConstShPtr& i_space) const override;
  bool operator==(const CorvSteeringMethod& i_other) const override;

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

protected:
  CorvSMManhattan() = default;
  CorvSMManhattan(const CorvSMManhattan&) = default;
  lmStatus init(const CorvSMManhattanWkPtr& i_weakPtr);

private:
  bool m_doesRandomizeDofOrder = false;
};
