#include "paths/orvHybridPath.h"

#include "foundation/lumAssert.h"
#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "foundation/lumLogManager.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvConfigSpace.h"
#include "kinematics/orvDevice.h"
#include "paths/orvPath.h"
#include "paths/orvPathVisitor.h"

#include <algorithm>

LUM_DESCRIBE(CorvHybridPath)
{
  i_class.creates("(const CorvConfigSpaceShPtr& i_ambientSpace)", &Self::create);
  i_class.collection<CorvPathConstShPtr>("paths", "CorvPathConstShPtr", &Self::countPaths, &Self::path);
}
LUM_STATUS_CODE(CorvHybridPath, NULL_PATH_ERROR, 20750, "Cannot use a null pointer as path.");
LUM_STATUS_CODE(CorvHybridPath, GET_START_CONFIG_ERROR, 20751, "Cannot get start configuration.");
LUM_STATUS_CODE(CorvHybridPath, GET_END_CONFIG_ERROR, 20752, "Cannot get end configuration.");
LUM_STATUS_CODE(CorvHybridPath, CONFIG_CONVERSION_ERROR, 20753, "There's been an error converting the configuration.");
LUM_STATUS_CODE(CorvHybridPath, INVALID_CONFIG_SPACE_SIZE_ERROR, 20754, "The configuration space has an invalid size.");
LUM_STATUS_CODE(CorvHybridPath, NON_EQUIVALENT_CONFIGS_ERROR, 20755,
                "Start and end configurations of the given path are not equivalent.");
LUM_STATUS_CODE(CorvHybridPath, EMPTY_PATH_ERROR, 20756, "The given path is empty.");

CorvHybridPath::CorvHybridPath(const CorvConfigSpaceShPtr& i_ambientSpace) : m_ambientSpace(i_ambientSpace)
{
}

CorvHybridPath::~CorvHybridPath() = default;

lmStatus CorvHybridPath::init(const CorvHybridPathWkPtr& i_weakPtr)
{
  return m_ambientSpace ? CorvAbstractPath::init(i_weakPtr) : lmStatus(lmStatus::FAILURE);
}

CorvHybridPathShPtr CorvHybridPath::create(const CorvConfigSpaceShPtr& i_ambientSpace)
{
  return lumCreate<CorvHybridPath>(i_ambientSpace);
}

CorvHybridPathShPtr CorvHybridPath::createCopy(const CorvHybridPathConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvAbstractPathShPtr CorvHybridPath::clone() const
{
  return createCopy(self());
}

namespace
{
/// A copy on which an edit has run, null if it fails.
template <class EDIT>
CorvHybridPathShPtr editedHybridCopy(const CorvHybridPathConstShPtr& i_path, const EDIT& i_edit)
{
  const CorvHybridPathShPtr copy = CorvHybridPath::createCopy(i_path);
  return copy && i_edit(*copy).succeeded() ? copy : CorvHybridPathShPtr();
}
} // namespace

CorvHybridPathShPtr CorvHybridPath::createByExtracting(const CorvHybridPathConstShPtr& i_path, double i_from,
                                                       double i_to)
{
  return editedHybridCopy(i_path, [&](CorvHybridPath& io_path) { return io_path.extract(i_from, i_to); });
}

CorvHybridPathShPtr CorvHybridPath::createByExtractingFrom(const CorvHybridPathConstShPtr& i_path, double i_from)
{
  return editedHybridCopy(i_path, [&](CorvHybridPath& io_path) { return io_path.extractFrom(i_from); });
}

CorvHybridPathShPtr CorvHybridPath::createByExtractingTo(const CorvHybridPathConstShPtr& i_path, double i_to)
{
  return editedHybridCopy(i_path, [&](CorvHybridPath& io_path) { return io_path.extractTo(i_to); });
}

CorvHybridPathShPtr CorvHybridPath::createByExtractingPaths(const CorvHybridPathConstShPtr& i_path,
                                                            unsigned int i_first, unsigned int i_last)
{
  return editedHybridCopy(i_path, [&](CorvHybridPath& io_path) { return io_path.extractPaths(i_first, i_last); });
}

CorvHybridPathShPtr CorvHybridPath::createReversed(const CorvHybridPathConstShPtr& i_path)
{
  return editedHybridCopy(i_path, [](CorvHybridPath& io_path) { return io_path.reverse(); });
}

CorvPathConstShPtr CorvHybridPath::path(unsigned int i_rank) const
{
  return i_rank < m_paths.size() ? m_paths[i_rank] : CorvPathConstShPtr();
}

CorvPathConstShPtr CorvHybridPath::pathAtDistance(double& io_distance, unsigned int& o_rank) const
{
  if (!(io_distance > 0.0))
    io_distance = 0.0;
  for (unsigned int i = 0; i < m_paths.size(); ++i)
  {
    const double pathLength = m_paths[i]->length();
    const bool isLast = i + 1 == m_paths.size();
    if (io_distance <= pathLength || isLast)
    {
      io_distance = std::min(io_distance, pathLength);
      o_rank = i;
      return m_paths[i];
    }
    io_distance -= pathLength;
  }
  return CorvPathConstShPtr();
}

lmStatus CorvHybridPath::getConvertedEnd(const CorvPath& i_path, EDirection i_direction, CorvConfig& o_cfg) const
{
  CorvConfig cfg(i_path.configSpace());
  lmStatus status = i_direction == FORWARD ? i_path.getConfigAtEnd(cfg) : i_path.getConfigAtStart(cfg);
  if (status.failed())
  {
    status.push(i_direction == FORWARD ? GET_END_CONFIG_ERROR : GET_START_CONFIG_ERROR);
    return status;
  }
  status = cfg.convert(m_ambientSpace);
  if (status.failed())
    status.push(CONFIG_CONVERSION_ERROR);
  else
    o_cfg = cfg;
  return status;
}

lmStatus CorvHybridPath::addPath(const CorvPathConstShPtr& i_path, EDirection i_end)
{
  if (!i_path)
    return lmStatus(NULL_PATH_ERROR);
  if (i_path->isEmpty())
    return lmStatus(EMPTY_PATH_ERROR);
  CorvConfig joined(m_ambientSpace), own(m_ambientSpace);
  lmStatus status = getConvertedEnd(*i_path, i_end == FORWARD ? BACKWARD : FORWARD, joined);
  if (status.failed())
    return status;
  if (!isEmpty())
  {
    status = i_end == FORWARD ? getConfigAtEnd(own) : getConfigAtStart(own);
    if (status.failed())
    {
      status.push(i_end == FORWARD ? GET_END_CONFIG_ERROR : GET_START_CONFIG_ERROR);
      return status;
    }
  }
  if (i_path->configSpace()->size() != m_ambientSpace->size())
    return lmStatus(INVALID_CONFIG_SPACE_SIZE_ERROR);
  if (!isEmpty() && !own.isEquivalent(joined))
    return lmStatus(NON_EQUIVALENT_CONFIGS_ERROR);
  m_paths.insert(i_end == FORWARD ? m_paths.end() : m_paths.begin(), CorvPath::createCopy(i_path));
  notify(DID_CHANGE);
  return lmStatus();
}

lmStatus CorvHybridPath::appendPath(const CorvPathConstShPtr& i_path)
{
  return addPath(i_path, FORWARD);
}

lmStatus CorvHybridPath::prependPath(const CorvPathConstShPtr& i_path)
{
  return addPath(i_path, BACKWARD);
}

lmStatus CorvHybridPath::appendHybridPath(const CorvHybridPathConstShPtr& i_path)
{
  if (!i_path)
    return lmStatus(lmStatus::FAILURE);
  const unsigned int initialSize = countPaths();
  // The other path may be this one: what it holds now is appended.
  const TPaths others = i_path->m_paths;
  for (const CorvPathConstShPtr& other : others)
  {
    const lmStatus status = appendPath(other);
    if (status.failed())
    {
      LUM_ASSERT_SUCCESS(extractPaths(0, initialSize));
      return status;
    }
  }
  return lmStatus();
}

void CorvHybridPath::exchangePaths(TPaths& io_paths)
{
  m_paths.swap(io_paths);
  notify(DID_CHANGE);
}

lmStatus CorvHybridPath::extractPaths(unsigned int i_first, unsigned int i_last)
{
  if (i_first > i_last || i_last > countPaths())
    return lmStatus(lmStatus::FAILURE);
  TPaths kept(m_paths.begin() + i_first, m_paths.begin() + i_last);
  exchangePaths(kept);
  return lmStatus();
}

void CorvHybridPath::clear()
{
  TPaths none;
  exchangePaths(none);
}

double CorvHybridPath::length() const
{
  double sum = 0.0;
  for (const CorvPathConstShPtr& held : m_paths)
    sum += held->length();
  return sum;
}

lmStatus CorvHybridPath::getConfigAtDistance(double i_distance, CorvConfig& o_cfg) const
{
  unsigned int rank = 0;
  if (!isEmpty() && i_distance >= length())
    return getConfigAtEnd(o_cfg);
  const CorvPathConstShPtr held = pathAtDistance(i_distance, rank);
  if (!held)
    return lmStatus(lmStatus::FAILURE);
  CorvConfig cfg(held->configSpace());
  lmStatus status = held->getConfigAtDistance(i_distance, cfg);
  if (status.succeeded())
    status = cfg.convert(m_ambientSpace);
  if (status.succeeded())
    o_cfg = cfg;
  return status;
}

lmStatus CorvHybridPath::getConfigAtStart(CorvConfig& o_cfg) const
{
  return isEmpty() ? lmStatus(EMPTY_PATH_ERROR) : getConvertedEnd(*m_paths.front(), BACKWARD, o_cfg);
}

lmStatus CorvHybridPath::getConfigAtEnd(CorvConfig& o_cfg) const
{
  return isEmpty() ? lmStatus(EMPTY_PATH_ERROR) : getConvertedEnd(*m_paths.back(), FORWARD, o_cfg);
}

CorvConfigSpaceShPtr CorvHybridPath::configSpace() const
{
  return m_ambientSpace;
}

bool CorvHybridPath::isOriented() const
{
  return std::any_of(m_paths.begin(), m_paths.end(),
                     [](const CorvPathConstShPtr& i_held) { return i_held->isOriented(); });
}

void CorvHybridPath::describe(const CorvPathVisitorShPtr& i_visitor) const
{
  if (!i_visitor)
    return;
  i_visitor->beginHybridPath(self());
  for (const CorvPathConstShPtr& held : m_paths)
    held->describe(i_visitor);
  i_visitor->endHybridPath(self());
}

lmStatus CorvHybridPath::boundedMoveByBody(double, EDirection, double&, bool&, std::vector<double>&) const
{
  return lmStatus(lmStatus::FAILURE);
}

lmStatus CorvHybridPath::extractFrom(double i_from)
{
  unsigned int first = 0;
  const CorvPathConstShPtr held = pathAtDistance(i_from, first);
  const CorvPathShPtr head = CorvPath::createByExtractingFrom(held, i_from);
  if (!head)
  {
    ClumLogManager::addError(__FILE__, __LINE__, "CorvHybridPath::extract(): unable to extract direct path.");
    return lmStatus(lmStatus::FAILURE);
  }
  TPaths kept(m_paths.begin() + first, m_paths.end());
  kept.front() = head;
  exchangePaths(kept);
  return lmStatus();
}

lmStatus CorvHybridPath::extractTo(double i_to)
{
  unsigned int last = 0;
  const CorvPathConstShPtr held = pathAtDistance(i_to, last);
  const CorvPathShPtr tail = CorvPath::createByExtractingTo(held, i_to);
  if (!tail)
  {
    ClumLogManager::addError(__FILE__, __LINE__, "CorvHybridPath::extract(): unable to extract direct path.");
    return lmStatus(lmStatus::FAILURE);
  }
  TPaths kept(m_paths.begin(), m_paths.begin() + last + 1);
  kept.back() = tail;
  exchangePaths(kept);
  return lmStatus();
}

lmStatus CorvHybridPath::extract(double i_from, double i_to)
{
  if (!(i_from <= i_to))
  {
    ClumLogManager::addError(__FILE__, __LINE__, "CorvHybridPath::extract(): end located before start.");
    return lmStatus(lmStatus::FAILURE);
  }
  unsigned int first = 0, last = 0;
  const CorvPathConstShPtr firstPath = pathAtDistance(i_from, first);
  const CorvPathConstShPtr lastPath = pathAtDistance(i_to, last);
  const bool isOne = first == last;
  const CorvPathShPtr head =
    isOne ? CorvPath::createByExtracting(firstPath, i_from, i_to) : CorvPath::createByExtractingFrom(firstPath, i_from);
  const CorvPathShPtr tail = isOne ? head : CorvPath::createByExtractingTo(lastPath, i_to);
  if (!head || !tail)
  {
    ClumLogManager::addError(__FILE__, __LINE__, "CorvHybridPath::extract(): unable to extract direct path.");
    return lmStatus(lmStatus::FAILURE);
  }
  TPaths kept(m_paths.begin() + first, m_paths.begin() + last + 1);
  kept.front() = head;
  kept.back() = tail;
  exchangePaths(kept);
  return lmStatus();
}

lmStatus CorvHybridPath::reverse()
{
  TPaths reversed;
  for (auto held = m_paths.rbegin(); held != m_paths.rend(); ++held)
  {
    reversed.push_back(CorvPath::createReversed(*held));
    if (!reversed.back())
      return lmStatus(lmStatus::FAILURE);
  }
  exchangePaths(reversed);
  return lmStatus();
}

void CorvHybridPath::deviceVersionChanged()
{
}

void CorvHybridPath::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  CorvAbstractPath::encodeWithCoder(i_coder);
  i_coder->encodeObjectShPtr(m_ambientSpace, "ambientSpace");
  i_coder->encodeObjects(m_paths, "paths");
  i_coder->encodeObjectShPtr(m_ambientSpace->device(), "deviceOfAmbientSpace");
  std::vector<CorvDeviceShPtr> devices;
  for (const CorvPathConstShPtr& held : m_paths)
    devices.push_back(held->device());
  i_coder->encodeObjects(devices, "devicesOfPaths");
}

lmStatus CorvHybridPath::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = CorvAbstractPath::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  m_ambientSpace = i_coder->decode<CorvConfigSpace>("ambientSpace");
  i_coder->decodeObjects("paths", m_paths);
  i_coder->decodeObjects("devicesOfPaths", m_decodedDevices);
  m_decodedDevices.push_back(i_coder->decode<CorvDevice>("deviceOfAmbientSpace"));
  const bool isWhole =
    m_ambientSpace && std::find(m_paths.begin(), m_paths.end(), CorvPathConstShPtr()) == m_paths.end();
  return lmStatus(isWhole ? lmStatus::SUCCESS : lmStatus::FAILURE);
}
