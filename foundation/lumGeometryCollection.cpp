#include "foundation/lumGeometryCollection.h"

#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"

#include <algorithm>

LUM_DESCRIBE(ClumGeometryCollection)
{
  i_class.creates("()", &Self::create);
}

ClumGeometryCollection::~ClumGeometryCollection() = default;

ClumGeometryCollectionShPtr ClumGeometryCollection::create()
{
  return lumCreate<ClumGeometryCollection>();
}

ClumGeometryCollectionShPtr ClumGeometryCollection::createCopy(const ClumGeometryCollectionConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

ClumGeometryShPtr ClumGeometryCollection::clone() const
{
  return createCopy(self());
}

lmStatus ClumGeometryCollection::init(const ClumGeometryCollectionWkPtr& i_weakPtr)
{
  return ClumGeometry::init(i_weakPtr);
}

lmStatus ClumGeometryCollection::init(const ClumGeometryCollectionWkPtr& i_weakPtr,
                                      const ClumGeometryCollectionConstShPtr&)
{
  const lmStatus status = init(i_weakPtr);
  for (ClumGeometryShPtr& member : m_members)
    member = member->clone();
  return status;
}

lmStatus ClumGeometryCollection::addMember(const ClumGeometryShPtr& i_member)
{
  return i_member ? addMember(i_member, position().inverse() * i_member->position()) : lmStatus(NULL_MEMBER_ERROR);
}

lmStatus ClumGeometryCollection::addMember(const ClumGeometryShPtr& i_member, const ClumMat4& i_frame)
{
  return insertMember(i_member, i_frame, countMembers());
}

lmStatus ClumGeometryCollection::insertMember(const ClumGeometryShPtr& i_member, const ClumMat4& i_frame,
                                              unsigned int i_rank)
{
  if (!i_member)
    return NULL_MEMBER_ERROR;
  if (i_rank > countMembers())
    return NOT_MEMBER_ERROR;
  if (std::find(m_members.begin(), m_members.end(), i_member) != m_members.end())
    return ALREADY_MEMBER_ERROR;
  if (i_member->contains(*this))
    return MEMBER_CYCLE_ERROR;
  notifyCollectionWillChange("members", COLLECTION_INSERTION, static_cast<int>(i_rank));
  m_members.insert(m_members.begin() + i_rank, i_member);
  m_frames.insert(m_frames.begin() + i_rank, i_frame);
  structureDidChange();
  i_member->position(position() * i_frame);
  i_member->applyPositionToMembers();
  notifyCollectionDidChange("members", COLLECTION_INSERTION, static_cast<int>(i_rank));
  return lmStatus();
}

lmStatus ClumGeometryCollection::removeMember(const ClumGeometryShPtr& i_member)
{
  const auto found = std::find(m_members.begin(), m_members.end(), i_member);
  if (found == m_members.end())
    return NOT_MEMBER_ERROR;
  const int rank = static_cast<int>(found - m_members.begin());
  notifyCollectionWillChange("members", COLLECTION_REMOVAL, rank);
  m_members.erase(found);
  m_frames.erase(m_frames.begin() + rank);
  structureDidChange();
  notifyCollectionDidChange("members", COLLECTION_REMOVAL, rank);
  return lmStatus();
}

lmStatus ClumGeometryCollection::memberFrame(unsigned int i_rank, const ClumMat4& i_frame)
{
  if (i_rank >= m_members.size())
    return NOT_MEMBER_ERROR;
  if (m_frames[i_rank] == i_frame)
    return lmStatus();
  notifyCollectionWillChange("members", COLLECTION_CHANGE, static_cast<int>(i_rank));
  m_frames[i_rank] = i_frame;
  structureDidChange();
  m_members[i_rank]->position(position() * i_frame);
  m_members[i_rank]->applyPositionToMembers();
  notifyCollectionDidChange("members", COLLECTION_CHANGE, static_cast<int>(i_rank));
  return lmStatus();
}

ClumGeometryShPtr ClumGeometryCollection::member(unsigned int i_rank) const
{
  return i_rank < m_members.size() ? m_members[i_rank] : ClumGeometryShPtr();
}

ClumMat4 ClumGeometryCollection::memberFrame(unsigned int i_rank) const
{
  return i_rank < m_frames.size() ? m_frames[i_rank] : ClumMat4();
}

bool ClumGeometryCollection::hasCapability(ECapability i_capability) const
{
  return i_capability == MEMBERS_CAPABILITY;
}

std::uint64_t ClumGeometryCollection::stamp() const
{
  std::uint64_t latest = ClumGeometry::stamp();
  for (const ClumGeometryShPtr& member : m_members)
    latest = std::max(latest, member->stamp());
  return latest;
}

void ClumGeometryCollection::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  ClumGeometry::encodeWithCoder(i_coder);
  i_coder->encodeObjects(m_members, "members");
  i_coder->encodeMat4Vector(m_frames, "frames");
}

lmStatus ClumGeometryCollection::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = ClumGeometry::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  i_coder->decodeObjects("members", m_members);
  i_coder->decodeMat4Vector("frames", m_frames);
  const bool isWhole = std::find(m_members.begin(), m_members.end(), ClumGeometryShPtr()) == m_members.end();
  return isWhole && m_members.size() == m_frames.size() ? status : lmStatus(NULL_MEMBER_ERROR);
}
