#pragma once

#include "foundation/lumGeometry.h"

/// A group of geometries that move as one. It owns their frames relative to itself: what a member's own position says
/// is overwritten when the group applies its position.
class LUM_API ClumGeometryCollection : public ClumGeometry
{
  LUM_CONCRETE(ClumGeometryCollection, ClumGeometry);

public:
  ~ClumGeometryCollection() override;
  static ClumGeometryCollectionShPtr create();
  /// Copies the members too.
  static ClumGeometryCollectionShPtr createCopy(const ClumGeometryCollectionConstShPtr& i_objectToCopy);
  ClumGeometryShPtr clone() const override;

  /// Appends a member; it keeps its absolute position, or takes the frame given, relative to the group.
  /// @return NULL_MEMBER_ERROR, ALREADY_MEMBER_ERROR, or MEMBER_CYCLE_ERROR if the member contains this group.
  lmStatus addMember(const ClumGeometryShPtr& i_member);
  lmStatus addMember(const ClumGeometryShPtr& i_member, const ClumMat4& i_frame);
  lmStatus insertMember(const ClumGeometryShPtr& i_member, const ClumMat4& i_frame, unsigned int i_rank);
  /// @return NOT_MEMBER_ERROR.
  lmStatus removeMember(const ClumGeometryShPtr& i_member);
  /// @return NOT_MEMBER_ERROR beyond the last member.
  lmStatus memberFrame(unsigned int i_rank, const ClumMat4& i_frame);

  unsigned int countMembers() const override { return static_cast<unsigned int>(m_members.size()); }
  ClumGeometryShPtr member(unsigned int i_rank) const override;
  ClumMat4 memberFrame(unsigned int i_rank) const override;
  bool hasCapability(ECapability i_capability) const override;
  std::uint64_t stamp() const override;

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

protected:
  ClumGeometryCollection() = default;
  ClumGeometryCollection(const ClumGeometryCollection& i_other) = default;
  lmStatus init(const ClumGeometryCollectionWkPtr& i_weakPtr);
  lmStatus init(const ClumGeometryCollectionWkPtr& i_weakPtr, const ClumGeometryCollectionConstShPtr& i_source);

private:
  std::vector<ClumGeometryShPtr> m_members;
  std::vector<ClumMat4> m_frames;
};
