#include "foundation/lumGeometry.h"

#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "foundation/lumStamp.h"

LUM_DESCRIBE(ClumGeometry)
{
  i_class.property<ClumMat4>("position", &Self::position, &Self::position);
  i_class.collection<ClumGeometryShPtr>("members", "ClumGeometryShPtr", &Self::countMembers, &Self::member);
  i_class.enumeration("ECapability", "COLLISION_CAPABILITY, MEMBERS_CAPABILITY, LIVE_MEMBERS_CAPABILITY");
  i_class.dynamicProperty("orvane.next.lock-position", false);
}
LUM_STATUS_CODE(ClumGeometry, ALREADY_CONTROLLED_ERROR, 10100, "The position of the geometry is already controlled.");
LUM_STATUS_CODE(ClumGeometry, NOT_CONTROLLED_ERROR, 10101, "The position of the geometry is not controlled.");
LUM_STATUS_CODE(ClumGeometry, NULL_MEMBER_ERROR, 10102, "The geometry or owner is null.");
LUM_STATUS_CODE(ClumGeometry, ALREADY_MEMBER_ERROR, 10103, "The geometry is already a member of the group.");
LUM_STATUS_CODE(ClumGeometry, NOT_MEMBER_ERROR, 10104, "The geometry is not a member of the group.");
LUM_STATUS_CODE(ClumGeometry, MEMBER_CYCLE_ERROR, 10105, "The geometry contains the group.");

ClumGeometry::ClumGeometry() : m_poseStamp(lumNextStamp()), m_stamp(m_poseStamp)
{
}

ClumGeometry::ClumGeometry(const ClumGeometry& i_other)
  : ClumMutableCodable(i_other), m_position(i_other.m_position), m_poseStamp(lumNextStamp()), m_stamp(m_poseStamp)
{
}

ClumGeometry::~ClumGeometry() = default;

lmStatus ClumGeometry::init(const ClumGeometryWkPtr& i_weakPtr)
{
  return ClumMutableCodable::init(i_weakPtr);
}

void ClumGeometry::position(const ClumMat4& i_position)
{
  if (i_position == m_position)
    return;
  notifyPropertyWillChange("position");
  m_position = i_position;
  m_poseStamp = lumNextStamp();
  notifyPropertyDidChange("position");
}

void ClumGeometry::applyPositionToMembers()
{
  for (unsigned int i = 0; i < countMembers(); ++i)
  {
    const ClumGeometryShPtr placed = member(i);
    placed->position(m_position * memberFrame(i));
    placed->applyPositionToMembers();
  }
}

unsigned int ClumGeometry::countMembers() const
{
  return 0;
}

ClumGeometryShPtr ClumGeometry::member(unsigned int) const
{
  return ClumGeometryShPtr();
}

ClumMat4 ClumGeometry::memberFrame(unsigned int) const
{
  return ClumMat4();
}

bool ClumGeometry::hasCapability(ECapability) const
{
  return false;
}

void ClumGeometry::appendLeaves(const ClumMat4& i_frame, std::vector<ClumPlacedLeaf>& io_leaves) const
{
  const unsigned int count = countMembers();
  for (unsigned int i = 0; i < count; ++i)
    member(i)->appendLeaves(i_frame * memberFrame(i), io_leaves);
}

bool ClumGeometry::contains(const ClumGeometry& i_geometry) const
{
  if (&i_geometry == this)
    return true;
  for (unsigned int i = 0; i < countMembers(); ++i)
    if (member(i)->contains(i_geometry))
      return true;
  return false;
}

lmStatus ClumGeometry::takeExclusivePositionControl(const ClumObjectShPtr& i_owner)
{
  if (!i_owner)
    return NULL_MEMBER_ERROR;
  const ClumObjectShPtr controller = m_controller.lock();
  if (controller && controller != i_owner)
    return ALREADY_CONTROLLED_ERROR;
  m_controller = i_owner;
  return lmStatus();
}

lmStatus ClumGeometry::releaseExclusivePositionControl()
{
  if (m_controller.expired())
    return NOT_CONTROLLED_ERROR;
  m_controller.reset();
  return lmStatus();
}

void ClumGeometry::structureDidChange() const
{
  m_stamp = lumNextStamp();
}

void ClumGeometry::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  ClumMutableCodable::encodeWithCoder(i_coder);
  i_coder->encodeMat4(m_position, "position");
}

lmStatus ClumGeometry::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = ClumMutableCodable::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  m_position = i_coder->decodeMat4("position");
  return status;
}
