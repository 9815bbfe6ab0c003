#include "foundation/lumCollectionAdapterGeometry.h"

#include "foundation/lumAssert.h"
#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "foundation/lumNotificator.h"
#include "foundation/lumScene.h"

#include <algorithm>

LUM_DESCRIBE(ClumCollectionAdapterGeometry)
{
  i_class.creates(
    "(const ClumObjectShPtr& i_object, const std::string& i_collection, const std::string& i_framesCollection)",
    &Self::create);
}

namespace
{
template <class T>
std::vector<T> readReflectedCollection(const ClumObject& i_object, const std::string& i_name)
{
  std::vector<T> items;
  const ClumCollectionDescriptorShPtr descriptor = i_object.classObject()->collectionNamed(i_name);
  unsigned int count = 0;
  if (!descriptor || descriptor->count(i_object, count).failed())
    return items;
  for (unsigned int i = 0; i < count; ++i)
  {
    ClumValue value;
    T item;
    if (descriptor->item(i_object, i, value).succeeded() && lumFromValue(value, item))
      items.push_back(item);
  }
  return items;
}
} // namespace

ClumCollectionAdapterGeometry::ClumCollectionAdapterGeometry(const ClumObjectShPtr& i_object,
                                                             const std::string& i_collection,
                                                             const std::string& i_framesCollection)
  : m_object(i_object), m_collection(i_collection), m_framesCollection(i_framesCollection)
{
}

ClumCollectionAdapterGeometry::ClumCollectionAdapterGeometry(const ClumCollectionAdapterGeometry& i_other)
  : ClumGeometry(i_other), m_object(i_other.m_object), m_collection(i_other.m_collection),
    m_framesCollection(i_other.m_framesCollection), m_appliedPosition(i_other.m_appliedPosition)
{
}

ClumCollectionAdapterGeometry::~ClumCollectionAdapterGeometry()
{
  const ClumObjectShPtr object = m_object.lock();
  if (object && object->isObjectNotificatorInitialized())
    object->objectNotificator()->unsubscribe(this);
}

ClumCollectionAdapterGeometryShPtr ClumCollectionAdapterGeometry::create(const ClumObjectShPtr& i_object,
                                                                         const std::string& i_collection,
                                                                         const std::string& i_framesCollection)
{
  return lumCreate<ClumCollectionAdapterGeometry>(i_object, i_collection, i_framesCollection);
}

ClumCollectionAdapterGeometryShPtr
ClumCollectionAdapterGeometry::createCopy(const ClumCollectionAdapterGeometryConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

ClumGeometryShPtr ClumCollectionAdapterGeometry::clone() const
{
  return createCopy(self());
}

lmStatus ClumCollectionAdapterGeometry::init(const ClumCollectionAdapterGeometryWkPtr& i_weakPtr)
{
  const lmStatus status = ClumGeometry::init(i_weakPtr);
  if (status.failed())
    return status;
  const ClumObjectShPtr object = m_object.lock();
  if (!object)
    return NULL_MEMBER_ERROR;
  if (!areCollectionsOf(*object))
    return lmStatus::FAILURE;
  subscribe();
  return status;
}

bool ClumCollectionAdapterGeometry::areCollectionsOf(const ClumObject& i_object) const
{
  const ClumClassShPtr objectClass = i_object.classObject();
  return objectClass->collectionNamed(m_collection) &&
         (hasOwnFrames() || objectClass->collectionNamed(m_framesCollection));
}

void ClumCollectionAdapterGeometry::subscribe()
{
  const ClumObjectShPtr object = m_object.lock();
  if (!object)
    return;
  LUM_ASSERT_SUCCESS(object->objectNotificator()->subscribe(DID_CHANGE_COLLECTION, self(), this,
                                                            &ClumCollectionAdapterGeometry::objectDidChange));
  LUM_ASSERT_SUCCESS(object->objectNotificator()->subscribe(DID_CHANGE_PROPERTY, self(), this,
                                                            &ClumCollectionAdapterGeometry::objectDidChange));
}

void ClumCollectionAdapterGeometry::objectDidChange(const ShPtr<const ClumNotification>& i_notification)
{
  const std::string name = i_notification->stringValue(ELEMENT_NAME_KEY);
  const bool isProperty = i_notification->id() == DID_CHANGE_PROPERTY;
  if (isProperty ? name == "version" : name == m_collection || name == m_framesCollection)
    collectionDidChange();
}

void ClumCollectionAdapterGeometry::collectionDidChange()
{
  m_isUpToDate = false;
  structureDidChange();
}

ClumSceneShPtr ClumCollectionAdapterGeometry::scene() const
{
  return m_scene.lock();
}

void ClumCollectionAdapterGeometry::scene(const ClumSceneWkPtr& i_scene)
{
  m_scene = i_scene;
}

void ClumCollectionAdapterGeometry::update() const
{
  if (m_isUpToDate)
    return;
  m_members.clear();
  m_frames.clear();
  const ClumObjectShPtr object = m_object.lock();
  if (!object)
    return;
  m_isUpToDate = true;
  const auto members = readReflectedCollection<ClumGeometryShPtr>(*object, m_collection);
  const auto frames = hasOwnFrames() ? std::vector<ClumMat4>(members.size())
                                     : readReflectedCollection<ClumMat4>(*object, m_framesCollection);
  for (std::size_t i = 0; i < members.size(); ++i)
  {
    const bool isExtracted = std::find(m_extracted.begin(), m_extracted.end(), members[i]) != m_extracted.end();
    if (!members[i] || isExtracted || members[i]->contains(*this))
      continue;
    m_members.push_back(members[i]);
    m_frames.push_back(i < frames.size() ? frames[i] : ClumMat4());
  }
}

void ClumCollectionAdapterGeometry::applyPositionToMembers()
{
  update();
  const std::vector<ClumGeometryShPtr> members = m_members;
  for (unsigned int i = 0; i < members.size(); ++i)
  {
    ClumMat4 placed = position() * memberFrame(i);
    members[i]->position(placed.repair());
    members[i]->applyPositionToMembers();
  }
  m_appliedPosition = position();
}

unsigned int ClumCollectionAdapterGeometry::countMembers() const
{
  update();
  return static_cast<unsigned int>(m_members.size());
}

ClumGeometryShPtr ClumCollectionAdapterGeometry::member(unsigned int i_rank) const
{
  update();
  return i_rank < m_members.size() ? m_members[i_rank] : ClumGeometryShPtr();
}

ClumMat4 ClumCollectionAdapterGeometry::memberFrame(unsigned int i_rank) const
{
  update();
  if (i_rank >= m_members.size())
    return ClumMat4();
  if (!hasOwnFrames())
    return m_frames[i_rank];
  const ClumMat4& frame = m_members[i_rank]->position();
  return m_appliedPosition == ClumMat4::IDENTITY ? frame : m_appliedPosition.inverse() * frame;
}

bool ClumCollectionAdapterGeometry::hasCapability(ECapability i_capability) const
{
  return i_capability == MEMBERS_CAPABILITY || i_capability == LIVE_MEMBERS_CAPABILITY;
}

std::uint64_t ClumCollectionAdapterGeometry::stamp() const
{
  update();
  std::uint64_t latest = ClumGeometry::stamp();
  for (const ClumGeometryShPtr& member : m_members)
  {
    latest = std::max(latest, member->stamp());
    if (hasOwnFrames())
      latest = std::max(latest, member->poseStamp());
  }
  return latest;
}

bool ClumCollectionAdapterGeometry::extract(const ClumGeometryShPtr& i_member)
{
  update();
  if (std::find(m_members.begin(), m_members.end(), i_member) == m_members.end())
    return false;
  m_extracted.push_back(i_member);
  collectionDidChange();
  return true;
}

bool ClumCollectionAdapterGeometry::reintegrate(const ClumGeometryShPtr& i_member)
{
  const auto found = std::find(m_extracted.begin(), m_extracted.end(), i_member);
  if (found == m_extracted.end())
    return false;
  m_extracted.erase(found);
  collectionDidChange();
  return true;
}

void ClumCollectionAdapterGeometry::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  ClumGeometry::encodeWithCoder(i_coder);
  i_coder->encodeWeakObjectWkPtr(boost::dynamic_pointer_cast<ClumCodable>(m_object.lock()), "object");
  i_coder->encodeString(m_collection, "collection");
  i_coder->encodeString(m_framesCollection, "framesCollection");
  i_coder->encodeWeakObjectWkPtr(m_scene, "scene");
  i_coder->encodeObjects(m_extracted, "extracted");
  i_coder->encodeMat4(m_appliedPosition, "appliedPosition");
}

lmStatus ClumCollectionAdapterGeometry::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = ClumGeometry::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  m_object = i_coder->decodeWeak<ClumObject>("object");
  m_collection = i_coder->decodeString("collection");
  m_framesCollection = i_coder->decodeString("framesCollection");
  m_scene = i_coder->decodeWeak<ClumScene>("scene");
  i_coder->decodeObjects("extracted", m_extracted);
  m_appliedPosition = i_coder->decodeMat4("appliedPosition");
  const ClumObjectShPtr object = m_object.lock();
  return !object || areCollectionsOf(*object) ? status : lmStatus(lmStatus::FAILURE);
}

void ClumCollectionAdapterGeometry::awake()
{
  ClumGeometry::awake();
  collectionDidChange();
  subscribe();
}
