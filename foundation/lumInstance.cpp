#include "foundation/lumInstance.h"

#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"

#include <algorithm>

LUM_DESCRIBE(ClumInstance)
{
  i_class.creates("(const ClumGeometryShPtr& i_instanced)", &Self::create);
}

ClumInstance::ClumInstance(const ClumGeometryShPtr& i_instanced) : m_instanced(i_instanced)
{
}

ClumInstance::~ClumInstance() = default;

ClumInstanceShPtr ClumInstance::create(const ClumGeometryShPtr& i_instanced)
{
  return lumCreate<ClumInstance>(i_instanced);
}

ClumInstanceShPtr ClumInstance::createCopy(const ClumInstanceConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

ClumGeometryShPtr ClumInstance::clone() const
{
  return createCopy(self());
}

lmStatus ClumInstance::init(const ClumInstanceWkPtr& i_weakPtr)
{
  const lmStatus status = ClumGeometry::init(i_weakPtr);
  return status.failed() || m_instanced ? status : lmStatus(NULL_MEMBER_ERROR);
}

ClumGeometryShPtr ClumInstance::member(unsigned int i_rank) const
{
  return i_rank == 0 ? m_instanced : ClumGeometryShPtr();
}

bool ClumInstance::hasCapability(ECapability i_capability) const
{
  return i_capability == MEMBERS_CAPABILITY;
}

std::uint64_t ClumInstance::stamp() const
{
  return m_instanced ? std::max(ClumGeometry::stamp(), m_instanced->stamp()) : ClumGeometry::stamp();
}

void ClumInstance::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  ClumGeometry::encodeWithCoder(i_coder);
  i_coder->encodeObjectShPtr(m_instanced, "instanced");
}

lmStatus ClumInstance::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = ClumGeometry::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  m_instanced = i_coder->decode<ClumGeometry>("instanced");
  return m_instanced ? status : lmStatus(NULL_MEMBER_ERROR);
}
