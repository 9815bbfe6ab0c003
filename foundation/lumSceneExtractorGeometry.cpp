#include "foundation/lumSceneExtractorGeometry.h"

#include "foundation/lumCoder.h"
#include "foundation/lumCollectionAdapterGeometry.h"
#include "foundation/lumDescribe.h"

#include <algorithm>

LUM_DESCRIBE(ClumSceneExtractorGeometry)
{
  i_class.creates("(const ClumGeometryShPtr& i_extracted, const ClumCollectionAdapterGeometryShPtr& i_adapter)",
                  &Self::create);
}

ClumSceneExtractorGeometry::ClumSceneExtractorGeometry(const ClumGeometryShPtr& i_extracted,
                                                       const ClumCollectionAdapterGeometryShPtr& i_adapter)
  : m_extracted(i_extracted), m_adapter(i_adapter)
{
}

ClumSceneExtractorGeometry::~ClumSceneExtractorGeometry() = default;

ClumSceneExtractorGeometryShPtr ClumSceneExtractorGeometry::create(const ClumGeometryShPtr& i_extracted,
                                                                   const ClumCollectionAdapterGeometryShPtr& i_adapter)
{
  return lumCreate<ClumSceneExtractorGeometry>(i_extracted, i_adapter);
}

ClumSceneExtractorGeometryShPtr
ClumSceneExtractorGeometry::createCopy(const ClumSceneExtractorGeometryConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

ClumGeometryShPtr ClumSceneExtractorGeometry::clone() const
{
  return createCopy(self());
}

lmStatus ClumSceneExtractorGeometry::init(const ClumSceneExtractorGeometryWkPtr& i_weakPtr)
{
  const lmStatus status = ClumGeometry::init(i_weakPtr);
  if (status.failed())
    return status;
  if (!m_extracted || m_adapter.expired())
    return NULL_MEMBER_ERROR;
  position(m_extracted->position());
  return status;
}

ClumGeometryShPtr ClumSceneExtractorGeometry::member(unsigned int i_rank) const
{
  return i_rank == 0 ? m_extracted : ClumGeometryShPtr();
}

bool ClumSceneExtractorGeometry::hasCapability(ECapability i_capability) const
{
  return i_capability == MEMBERS_CAPABILITY;
}

std::uint64_t ClumSceneExtractorGeometry::stamp() const
{
  return m_extracted ? std::max(ClumGeometry::stamp(), m_extracted->stamp()) : ClumGeometry::stamp();
}

void ClumSceneExtractorGeometry::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  ClumGeometry::encodeWithCoder(i_coder);
  i_coder->encodeObjectShPtr(m_extracted, "extracted");
  i_coder->encodeWeakObjectWkPtr(m_adapter, "adapter");
}

lmStatus ClumSceneExtractorGeometry::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = ClumGeometry::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  m_extracted = i_coder->decode<ClumGeometry>("extracted");
  m_adapter = i_coder->decodeWeak<ClumCollectionAdapterGeometry>("adapter");
  return m_extracted ? status : lmStatus(NULL_MEMBER_ERROR);
}
