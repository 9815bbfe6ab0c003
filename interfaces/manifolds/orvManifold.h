#pragma once

#include "foundation/lumCodable.h"
#include "kinematics/handles.h"
#include "manifolds/handles.h"

/// A set of configurations inside an ambient configuration space, with what a planner needs of such a set: draw an
/// element, step from one, test membership, project onto it.
///
/// Manifolds are handled as const once they are shared. A configuration of another space is no element of a manifold.
class LUM_API CorvManifold : public ClumMutableCodable
{
  LUM_ABSTRACT(CorvManifold, ClumMutableCodable);

public:
  /// Cardinalities: up to `MAX_FINITE_CARDINALITY` a count, above it a kind.
  static const unsigned int MAX_FINITE_CARDINALITY;
  static const unsigned int FINITE_CARDINALITY; ///< finite, the count unknown
  static const unsigned int COUNTABLE_INFINITE_CARDINALITY;
  static const unsigned int UNCOUNTABLE_CARDINALITY; ///< a continuum

  ~CorvManifold() override;

  virtual CorvManifoldShPtr clone() const = 0;
  virtual unsigned int dimension() const = 0;
  virtual unsigned int cardinality() const = 0;
  virtual CorvConfigSpaceShPtr ambientSpace() const = 0;
  /// The smallest interval known to hold dof `i_dof` of every element; empty (infinity, -infinity) without an element.
  virtual void getAmbientBounds(unsigned int i_dof, double& o_min, double& o_max) const = 0;
  /// The period of a dof that is an angle on a circle; infinity for any other.
  virtual void getOrbitPeriod(unsigned int i_dof, double& o_period) const = 0;
  /// Moves an element by about `i_step` inside the manifold.
  virtual lmStatus makeRandomStep(CorvConfig& io_cfg, double i_step) const = 0;
  virtual lmStatus getRandomElement(CorvConfig& o_cfg) const = 0;
  /// @return -1 if the element drawn is not valid: nothing is tried again.
  virtual lmStatus getRandomValidElement(CorvConfig& o_cfg, const ClumParameterMapConstShPtr& i_parameters) const = 0;
  /// Element `i_rank` of a countable manifold. @return -1 out of range or if the manifold is not countable.
  virtual lmStatus getCountableElement(unsigned int i_rank, CorvConfig& o_cfg) const = 0;
  virtual bool isElement(const CorvConfig& i_cfg) const = 0;
  /// True if both are elements and a motion inside the manifold leads from one to the other.
  virtual bool areConnected(const CorvConfig& i_a, const CorvConfig& i_b) const = 0;
  virtual bool isValidElement(const CorvConfig& i_cfg, const ClumParameterMapConstShPtr& i_parameters) const = 0;
  /// The element nearest to a configuration.
  virtual lmStatus project(const CorvConfig& i_cfg, CorvConfig& o_cfg) const = 0;

  bool isEmpty() const { return cardinality() == 0; }
  static unsigned int sumCardinalities(unsigned int i_a, unsigned int i_b);

protected:
  CorvManifold() = default;
  CorvManifold(const CorvManifold&) = default;
  lmStatus init(const CorvManifoldWkPtr& i_weakPtr);
};
