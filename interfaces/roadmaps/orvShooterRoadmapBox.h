#pragma once

#include "roadmaps/orvDiffusionShooter.h"

#include <utility>

/// Shoots into the bounding box of the tree, widened by about the deviation, so that the box grows with the tree.
class LUM_API CorvShooterRoadmapBox : public CorvDiffusionShooter
{
  LUM_CONCRETE(CorvShooterRoadmapBox, CorvDiffusionShooter);

public:
  static CorvShooterRoadmapBoxShPtr create();
  static CorvShooterRoadmapBoxShPtr createCopy(const CorvShooterRoadmapBoxConstShPtr& i_objectToCopy);
  ~CorvShooterRoadmapBox() override;

  /// @return -1 for a deviation that is not above 0, a node without a component, or an unknown type.
  lmStatus shoot(const CorvNodeShPtr& i_node, EDiffusionNodeType i_type, double i_standardDeviation, TTrace& io_trace,
                 CorvConfig& o_config) override;

protected:
  CorvShooterRoadmapBox() = default;
  CorvShooterRoadmapBox(const CorvShooterRoadmapBox&) = default;
  lmStatus init(const CorvShooterRoadmapBoxWkPtr& i_weakPtr);

private:
  // Scratch of `shoot`.
  std::vector<std::pair<double, double>> m_box;
  std::vector<double> m_values;
};
