#pragma once

#include "foundation/lumCodable.h"
#include "foundation/lumCollisionModel.h"
#include "foundation/lumMat4.h"

#include <atomic>
#include <cstdint>
#include <vector>

struct ClumPlacedLeaf;

/// A triangle of each of two models, by their ranks there: where a query looks first, or what it found.
struct ClumTrianglePair
{
  static constexpr unsigned int NO_TRIANGLE = ~0u;

  unsigned int a = NO_TRIANGLE;
  unsigned int b = NO_TRIANGLE;
};

/// The answer to a distance query.
struct ClumDistanceResult
{
  static constexpr unsigned int NO_TRIANGLE = ClumTrianglePair::NO_TRIANGLE;

  double lower = 0.0;        ///< the true distance is at least this: always sound; 0 for a contact
  double upper = 0.0;        ///< the distance of two points that were found, or infinity if none were needed
  bool hasTriangles = false; ///< whether the two nearest triangles are told
  bool hasPoints = false;    ///< whether their nearest points are, in world coordinates
  ClumPoint3 pointA;
  ClumPoint3 pointB;
  unsigned int triangleA = NO_TRIANGLE;
  unsigned int triangleB = NO_TRIANGLE;
};

/// The collision detection provider: makes models of shapes and asks about two placed models.
///
/// Poses are rigid frames. The shapes are solids where they bound a volume: a shape wholly inside another one collides
/// with it. A shape that touches another one collides. All queries may be made by several threads at once, and a query
/// allocates nothing. A pose that is not finite, or a model of another toolkit, answers as a contact.
///
/// Pairs, groups, parameters and tolerances live above, in `ClumScene` and the validators, the same for every toolkit.
class LUM_API ClumCollisionToolkit : public ClumMutableCodable
{
  LUM_ABSTRACT(ClumCollisionToolkit, ClumMutableCodable);

public:
  static const unsigned int PENETRATION_UNSUPPORTED_ERROR;

  ~ClumCollisionToolkit() override;
  virtual ClumCollisionToolkitShPtr clone() const = 0;

  /// The process-wide default, made on first use.
  static const ClumCollisionToolkitShPtr& defaultCollisionToolkit();

  /// What `ClumCollisionModel::kind` of its models says. Toolkits of one kind share models.
  virtual const void* kind() const = 0;
  /// @return null for a shape that it cannot take.
  virtual ClumCollisionModelConstShPtr makeModel(const ClumLeafGeometry& i_leaf) const = 0;
  /// One model for shapes that keep their frames to each other, where nothing has to tell them apart. Its triangles are
  /// numbered through, in the order given. @return null if the toolkit cannot join these shapes.
  virtual ClumCollisionModelConstShPtr makeJoinedModel(const std::vector<ClumPlacedLeaf>& i_leaves) const = 0;

  /// @param io_pair two triangles to look at first, in any poses; may be null or empty. Where two triangles were found
  ///   to touch, they are written here; a contact that is told without any (one shape inside the other, or deep in it)
  ///   leaves it as it was.
  bool areTouching(const ClumCollisionModel& i_a, const ClumMat4& i_poseA, const ClumCollisionModel& i_b,
                   const ClumMat4& i_poseB, ClumTrianglePair* io_pair = nullptr) const;

  /// A lower bound of the distance, as good as asked for.
  ///
  /// `lower` is sound in every case. It is at least min(cap, (1 - relativeAccuracy) times the true distance), less a
  /// slack of rounding, unless the search ended because a distance not above `i_stopBelow` was found.
  /// @param i_cap what lies beyond is not worth finding out: a proof that the distance is at least that much will do.
  /// @param i_relativeAccuracy in [0, 1).
  /// @param i_stopBelow once two points are found that are not farther apart than this, the search may end.
  /// @param i_hint a former answer for the two models in any poses, where to look first; may be null.
  /// @param i_wantsPoints without, the triangles are told, and the points only where they cost nothing.
  ClumDistanceResult boundedDistance(const ClumCollisionModel& i_a, const ClumMat4& i_poseA,
                                     const ClumCollisionModel& i_b, const ClumMat4& i_poseB, double i_cap,
                                     double i_relativeAccuracy = 0.0, double i_stopBelow = 0.0,
                                     const ClumDistanceResult* i_hint = nullptr, bool i_wantsPoints = true) const;

  /// The distance with the two nearest points; 0 for a contact.
  /// @param i_hint as for `boundedDistance`.
  ClumDistanceResult exactDistance(const ClumCollisionModel& i_a, const ClumMat4& i_poseA,
                                   const ClumCollisionModel& i_b, const ClumMat4& i_poseB,
                                   const ClumDistanceResult* i_hint = nullptr) const;

  /// How far the second must be moved to part the two, and where to: by `o_depth` along `o_direction`, a unit vector in
  /// world coordinates. There may be a shorter way out. Both are 0 if the two are apart.
  /// @return PENETRATION_UNSUPPORTED_ERROR if the toolkit cannot tell it for this pair; nothing is written then.
  lmStatus penetration(const ClumCollisionModel& i_a, const ClumMat4& i_poseA, const ClumCollisionModel& i_b,
                       const ClumMat4& i_poseB, double& o_depth, ClumVect3& o_direction) const;

  /// The queries made so far, of all kinds.
  std::uint64_t countQueries() const { return m_countQueries.load(std::memory_order_relaxed); }

protected:
  ClumCollisionToolkit() = default;
  ClumCollisionToolkit(const ClumCollisionToolkit& i_other);
  lmStatus init(const ClumCollisionToolkitWkPtr& i_weakPtr);

  // The queries, with models of this toolkit's kind and finite poses.
  virtual bool doAreTouching(const ClumCollisionModel& i_a, const ClumMat4& i_poseA, const ClumCollisionModel& i_b,
                             const ClumMat4& i_poseB, ClumTrianglePair* io_pair) const = 0;
  virtual void doBoundedDistance(const ClumCollisionModel& i_a, const ClumMat4& i_poseA, const ClumCollisionModel& i_b,
                                 const ClumMat4& i_poseB, double i_cap, double i_relativeAccuracy, double i_stopBelow,
                                 const ClumDistanceResult* i_hint, bool i_wantsPoints,
                                 ClumDistanceResult& o_result) const = 0;
  virtual lmStatus doPenetration(const ClumCollisionModel& i_a, const ClumMat4& i_poseA, const ClumCollisionModel& i_b,
                                 const ClumMat4& i_poseB, double& o_depth, ClumVect3& o_direction) const = 0;

private:
  bool canAsk(const ClumCollisionModel& i_a, const ClumMat4& i_poseA, const ClumCollisionModel& i_b,
              const ClumMat4& i_poseB) const;

  mutable std::atomic<std::uint64_t> m_countQueries{0};
};
