#pragma once

#include "manifolds/orvManifold.h"

#include <vector>

/// The union of manifolds of one ambient space, in the order in which they were added.
///
/// Members are shared and not changed through the union; each stands in it once.
class LUM_API CorvManifoldUnion : public CorvManifold
{
  LUM_CONCRETE(CorvManifoldUnion, CorvManifold);

public:
  /// An empty union. @return null for a null space.
  static CorvManifoldUnionShPtr create(const CorvConfigSpaceShPtr& i_ambientSpace);
  /// A union of the same members.
  static CorvManifoldUnionShPtr createCopy(const CorvManifoldUnionConstShPtr& i_objectToCopy);
  ~CorvManifoldUnion() override;
  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

  /// @return -1 for a null manifold, this union, one of another ambient space or one that is a member.
  lmStatus addManifold(const CorvManifoldConstShPtr& i_manifold);
  /// @return -1 if it is no member.
  lmStatus removeManifold(const CorvManifoldConstShPtr& i_manifold);
  void clear() { m_manifolds.clear(); }
  unsigned int countManifolds() const { return static_cast<unsigned int>(m_manifolds.size()); }
  /// @return null out of range.
  CorvManifoldConstShPtr manifold(unsigned int i_rank) const;
  void getManifolds(std::vector<CorvManifoldConstShPtr>& o_manifolds) const { o_manifolds = m_manifolds; }

  CorvManifoldShPtr clone() const override;
  /// The largest dimension of a member.
  unsigned int dimension() const override;
  /// The sum over the members: an element of two of them counts twice.
  unsigned int cardinality() const override;
  CorvConfigSpaceShPtr ambientSpace() const override { return m_ambientSpace; }
  void getAmbientBounds(unsigned int i_dof, double& o_min, double& o_max) const override;
  void getOrbitPeriod(unsigned int i_dof, double& o_period) const override;
  /// A member drawn at random makes the step; that the configuration is its element is not tested.
  lmStatus makeRandomStep(CorvConfig& io_cfg, double i_step) const override;
  lmStatus getRandomElement(CorvConfig& o_cfg) const override;
  lmStatus getRandomValidElement(CorvConfig& o_cfg, const ClumParameterMapConstShPtr& i_parameters) const override;
  /// The elements of the first member, then those of the second. Only where the members' counts are known.
  lmStatus getCountableElement(unsigned int i_rank, CorvConfig& o_cfg) const override;
  bool isElement(const CorvConfig& i_cfg) const override;
  /// True if one member connects them: ways through several members are not sought.
  bool areConnected(const CorvConfig& i_a, const CorvConfig& i_b) const override;
  bool isValidElement(const CorvConfig& i_cfg, const ClumParameterMapConstShPtr& i_parameters) const override;
  /// The nearest of the members' projections, the first among equals.
  lmStatus project(const CorvConfig& i_cfg, CorvConfig& o_cfg) const override;

protected:
  CorvManifoldUnion() = default;
  explicit CorvManifoldUnion(const CorvConfigSpaceShPtr& i_ambientSpace);
  CorvManifoldUnion(const CorvManifoldUnion&) = default;
  lmStatus init(const CorvManifoldUnionWkPtr& i_weakPtr);

private:
  CorvManifoldConstShPtr drawMember() const;

  CorvConfigSpaceShPtr m_ambientSpace;
  std::vector<CorvManifoldConstShPtr> m_manifolds;
};
