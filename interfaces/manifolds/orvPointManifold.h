#pragma once

#include "kinematics/orvConfig.h"
#include "manifolds/orvManifold.h"

/// The manifold of one configuration.
///
/// The configuration may be of another space than the ambient one: whatever is drawn, stepped to or projected is the
/// stored configuration converted to the ambient space.
class LUM_API CorvPointManifold : public CorvManifold
{
  LUM_CONCRETE(CorvPointManifold, CorvManifold);

public:
  /// @return null for a null space or a configuration without a space.
  static CorvPointManifoldShPtr create(const CorvConfig& i_config, const CorvConfigSpaceShPtr& i_ambientSpace);
  static CorvPointManifoldShPtr createCopy(const CorvPointManifoldConstShPtr& i_objectToCopy);
  ~CorvPointManifold() override;
  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

  /// The configuration as it was given.
  const CorvConfig& configuration() const { return m_config; }

  CorvManifoldShPtr clone() const override;
  unsigned int dimension() const override { return 0; }
  unsigned int cardinality() const override { return 1; }
  CorvConfigSpaceShPtr ambientSpace() const override { return m_ambientSpace; }
  void getAmbientBounds(unsigned int i_dof, double& o_min, double& o_max) const override;
  void getOrbitPeriod(unsigned int i_dof, double& o_period) const override;
  lmStatus makeRandomStep(CorvConfig& io_cfg, double i_step) const override;
  lmStatus getRandomElement(CorvConfig& o_cfg) const override;
  lmStatus getRandomValidElement(CorvConfig& o_cfg, const ClumParameterMapConstShPtr& i_parameters) const override;
  lmStatus getCountableElement(unsigned int i_rank, CorvConfig& o_cfg) const override;
  bool isElement(const CorvConfig& i_cfg) const override;
  bool areConnected(const CorvConfig& i_a, const CorvConfig& i_b) const override;
  bool isValidElement(const CorvConfig& i_cfg, const ClumParameterMapConstShPtr& i_parameters) const override;
  lmStatus project(const CorvConfig& i_cfg, CorvConfig& o_cfg) const override;

protected:
  CorvPointManifold() = default;
  CorvPointManifold(const CorvConfig& i_config, const CorvConfigSpaceShPtr& i_ambientSpace);
  CorvPointManifold(const CorvPointManifold&) = default;
  lmStatus init(const CorvPointManifoldWkPtr& i_weakPtr);

private:
  lmStatus getPoint(CorvConfig& o_cfg) const;

  CorvConfig m_config;
  CorvConfigSpaceShPtr m_ambientSpace;
};
