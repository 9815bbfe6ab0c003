#pragma once

#include "foundation/lumCodable.h"
#include "kinematics/handles.h"
#include "metrics/handles.h"

#include <string>

/// How far apart two configurations of a space are, and where a random step away from one leads.
///
/// Every space holds one metric. A metric never changes but for its random walk and what a subclass names (a scale, a
/// joint, a decorated metric); each such change raises `revision()`, a counter that all metrics share, by which
/// flattened copies of metrics know that they are stale.
///
/// Metrics fill caches in const operations and carry no lock: one thread at a time, or a clone for each worker.
class LUM_API CorvMetric : public ClumMutableCodable
{
  LUM_ABSTRACT(CorvMetric, ClumMutableCodable);

public:
  ~CorvMetric() override;
  virtual CorvMetricShPtr clone() const = 0;

  /// Distance of two configurations of one space. It has no status: see the subclasses for what they answer when they
  /// cannot tell.
  virtual double distance(const CorvConfig& i_a, const CorvConfig& i_b) const = 0;
  /// The distance squared unless a subclass has it cheaper.
  virtual double squaredDistance(const CorvConfig& i_a, const CorvConfig& i_b) const;
  /// Any monotone function of the distance: comparable only with other values of this metric.
  virtual double distanceForSorting(const CorvConfig& i_a, const CorvConfig& i_b) const;

  /// Puts into `o_config` the configuration that a random step of standard deviation `i_step`, in the unit of this
  /// metric, leads to from `i_from`. Both may be the same object.
  virtual void randomStep(const CorvConfig& i_from, double i_step, CorvConfig& o_config) const;

  /// This metric, or one that it decorates, of the given type; null if there is none.
  virtual CorvMetricShPtr find(const std::string& i_type) const;
  /// Replaces a decorated metric of the given type. @return -1 if there is none.
  virtual lmStatus substitute(const std::string& i_type, const CorvMetricShPtr& i_metric);

  virtual CorvRandomWalkConstShPtr randomWalk() const;
  /// Null is refused with a log entry.
  virtual void randomWalk(const CorvRandomWalkConstShPtr& i_randomWalk);

  /// True if the distance is `o_scale * |a - b|` of the one dof.
  virtual bool isScaledAbsolute(double& o_scale) const;
  /// True if the distance is `o_scale * |circular difference|` of the one dof.
  virtual bool isScaledCircular(double& o_scale) const;

  /// Equal types and equal random walks.
  virtual bool operator==(const CorvMetric& i_other) const;
  bool operator!=(const CorvMetric& i_other) const { return !(*this == i_other); }

  const std::string& type() const { return m_type; }

  /// Raised by every change inside any metric.
  static unsigned int revision();

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

protected:
  CorvMetric() = default;
  CorvMetric(const std::string& i_type, const CorvRandomWalkConstShPtr& i_randomWalk);
  CorvMetric(const CorvMetric& i_other);
  CorvMetric& operator=(const CorvMetric&) = delete;
  /// Fails if the type is empty or there is no random walk.
  lmStatus init(const CorvMetricWkPtr& i_weakPtr);

  static void raiseRevision();

private:
  std::string m_type;
  CorvRandomWalkConstShPtr m_randomWalk;
  mutable CorvRWCacheConstShPtr m_cachedWalk; ///< of the space that took the last step, never copied
};
