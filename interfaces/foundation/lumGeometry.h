#pragma once

#include "foundation/lumCodable.h"
#include "foundation/lumMat4.h"

#include <cstdint>
#include <vector>

/// A leaf of a geometry, with its frame in the coordinates of that geometry.
struct ClumPlacedLeaf
{
  ClumLeafGeometryConstShPtr leaf;
  ClumMat4 frame;
};

/// A shape with a position: a leaf, or a group of members that move as one.
///
/// `position` is the absolute frame. Setting the position of a group moves the group alone; `applyPositionToMembers`
/// brings the members after it. Collision tests never read the positions of members: they take the leaves with their
/// frames relative to the group, from `getLeaves`.
///
/// Two stamps tell what changed, without notification: `poseStamp` is a new value whenever the position was set,
/// `stamp` whenever `getLeaves` would give something else. Stamps are process-wide, grow, and are compared for equality
/// only.
///
/// Exclusive control is a token for those who drive geometries: one owner at a time, held weakly.
class LUM_API ClumGeometry : public ClumMutableCodable
{
  LUM_ABSTRACT(ClumGeometry, ClumMutableCodable);

public:
  enum ECapability
  {
    COLLISION_CAPABILITY,   ///< has a shape of its own that can be tested
    MEMBERS_CAPABILITY,     ///< has members
    LIVE_MEMBERS_CAPABILITY ///< its members follow a collection of another object
  };

  static const unsigned int ALREADY_CONTROLLED_ERROR;
  static const unsigned int NOT_CONTROLLED_ERROR;
  static const unsigned int NULL_MEMBER_ERROR;
  static const unsigned int ALREADY_MEMBER_ERROR;
  static const unsigned int NOT_MEMBER_ERROR;
  static const unsigned int MEMBER_CYCLE_ERROR;

  ~ClumGeometry() override;
  virtual ClumGeometryShPtr clone() const = 0;

  /// The absolute frame.
  const ClumMat4& position() const { return m_position; }
  void position(const ClumMat4& i_position);
  /// Sets the position of every member, at every depth, so that all keep their frames relative to this geometry.
  virtual void applyPositionToMembers();

  virtual unsigned int countMembers() const;
  /// @return null beyond the last.
  virtual ClumGeometryShPtr member(unsigned int i_rank) const;
  /// The frame of a member in this geometry's coordinates; the identity beyond the last.
  virtual ClumMat4 memberFrame(unsigned int i_rank) const;
  virtual bool hasCapability(ECapability i_capability) const;

  /// Appends all leaves, in depth-first order, with their frames relative to this geometry.
  void getLeaves(std::vector<ClumPlacedLeaf>& io_leaves) const { appendLeaves(ClumMat4(), io_leaves); }
  /// True for this geometry and for every geometry below it.
  bool contains(const ClumGeometry& i_geometry) const;

  std::uint64_t poseStamp() const { return m_poseStamp; }
  virtual std::uint64_t stamp() const { return m_stamp; }

  /// @return NULL_MEMBER_ERROR for a null owner, ALREADY_CONTROLLED_ERROR if another object that lives has control.
  lmStatus takeExclusivePositionControl(const ClumObjectShPtr& i_owner);
  /// @return NOT_CONTROLLED_ERROR if nobody has control.
  lmStatus releaseExclusivePositionControl();
  bool canTakeExclusivePositionControl() const { return m_controller.expired(); }

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

protected:
  ClumGeometry();
  /// The copy is controlled by nobody.
  ClumGeometry(const ClumGeometry& i_other);
  lmStatus init(const ClumGeometryWkPtr& i_weakPtr);

  /// Appends the leaves with their frames times `i_frame` on the left.
  virtual void appendLeaves(const ClumMat4& i_frame, std::vector<ClumPlacedLeaf>& io_leaves) const;
  /// To be called when what `getLeaves` gives has changed.
  void structureDidChange() const;

private:
  ClumMat4 m_position;
  std::uint64_t m_poseStamp;
  mutable std::uint64_t m_stamp;
  ClumObjectWkPtr m_controller;
};
