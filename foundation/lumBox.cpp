#include "foundation/lumBox.h"

#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"

LUM_DESCRIBE(ClumBox)
{
  i_class.creates("(double i_sizeX, double i_sizeY, double i_sizeZ)", &Self::create);
}

ClumBox::ClumBox(double i_sizeX, double i_sizeY, double i_sizeZ) : m_size{i_sizeX, i_sizeY, i_sizeZ}
{
}

ClumBox::~ClumBox() = default;

ClumBoxShPtr ClumBox::create(double i_sizeX, double i_sizeY, double i_sizeZ)
{
  return lumCreate<ClumBox>(i_sizeX, i_sizeY, i_sizeZ);
}

ClumBoxShPtr ClumBox::createCopy(const ClumBoxConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

ClumGeometryShPtr ClumBox::clone() const
{
  return createCopy(self());
}

lmStatus ClumBox::init(const ClumBoxWkPtr& i_weakPtr)
{
  const lmStatus status = ClumLeafGeometry::init(i_weakPtr);
  if (status.failed())
    return status;
  return areSizesSound() ? status : lmStatus(lmStatus::FAILURE);
}

bool ClumBox::areSizesSound() const
{
  return std::isfinite(m_size[0] + m_size[1] + m_size[2]) && m_size[0] > 0.0 && m_size[1] > 0.0 && m_size[2] > 0.0;
}

void ClumBox::getBoundingBox(ClumPoint3& o_lowest, ClumPoint3& o_highest) const
{
  o_highest = ClumPoint3(0.5 * m_size[0], 0.5 * m_size[1], 0.5 * m_size[2]);
  o_lowest = ClumPoint3(-o_highest.toVect3());
}

void ClumBox::getSweptTriangles(ClumSweptTriangles& o_shape) const
{
  o_shape = ClumSweptTriangles();
  // Bit k of a corner's rank tells its side along axis k.
  for (unsigned int corner = 0; corner < 8; ++corner)
    o_shape.vertices.emplace_back((corner & 1 ? 0.5 : -0.5) * m_size[0], (corner & 2 ? 0.5 : -0.5) * m_size[1],
                                  (corner & 4 ? 0.5 : -0.5) * m_size[2]);
  o_shape.triangles = {{0, 2, 1}, {1, 2, 3}, {4, 5, 6}, {5, 7, 6}, {0, 1, 4}, {1, 5, 4},
                       {2, 6, 3}, {3, 6, 7}, {0, 4, 2}, {2, 4, 6}, {1, 3, 5}, {3, 7, 5}};
}

void ClumBox::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  ClumLeafGeometry::encodeWithCoder(i_coder);
  i_coder->encodeDouble(m_size[0], "sizeX");
  i_coder->encodeDouble(m_size[1], "sizeY");
  i_coder->encodeDouble(m_size[2], "sizeZ");
}

lmStatus ClumBox::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = ClumLeafGeometry::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  m_size[0] = i_coder->decodeDouble("sizeX");
  m_size[1] = i_coder->decodeDouble("sizeY");
  m_size[2] = i_coder->decodeDouble("sizeZ");
  return areSizesSound() ? status : lmStatus(lmStatus::FAILURE);
}
