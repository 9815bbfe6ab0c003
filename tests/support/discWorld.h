#pragma once

#include "kinematics/orvConfig.h"
#include "roadmaps/handles.h"
#include "validation/handles.h"

#include <vector>

/// A square [0, 10] x [0, 10] of two dofs with forbidden discs, steered straight, without a device: what is free can be
/// told exactly, so that roadmap builders are tested apart from collision.
class DiscWorld
{
public:
  struct Disc
  {
    double x, y, radius;
  };
  using Discs = std::vector<Disc>;

  explicit DiscWorld(const Discs& i_discs = Discs(), bool i_oriented = false, double i_penetration = 0.05);

  CorvConfig at(double i_x, double i_y) const;
  /// Random, free.
  CorvConfig randomFree() const;
  bool isFree(const CorvConfig& i_config) const { return isFree(i_config, i_config); }
  /// The straight motion touches no disc.
  bool isFree(const CorvConfig& i_start, const CorvConfig& i_end) const;
  /// Every edge is free and leads from its start node to its end node.
  bool isSound(const CorvRoadmap& i_roadmap) const;

  const CorvConfigSpaceShPtr space;
  const CorvRoadmapShPtr roadmap;

private:
  ShPtr<Discs> m_discs;
};
