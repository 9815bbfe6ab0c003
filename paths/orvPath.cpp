#include "paths/orvPath.h"

#include "foundation/lumAssert.h"
#include "foundation/lumCoder.h"
#include "foundation/lumDescribe.h"
#include "foundation/lumParameterMap.h"
#include "kinematics/orvConfigSpace.h"
#include "kinematics/orvDevice.h"
#include "paths/orvDirectPath.h"
#include "paths/orvPathVisitor.h"
#include "paths/orvSteeringMethod.h"
#include "validation/orvReportDPCollision.h"
#include "validation/orvValidator.h"
#include "validation/orvValidatorDPCollision.h"
#include "validation/orvValidatorSet.h"

#include <algorithm>

LUM_DESCRIBE(CorvPath)
{
  i_class.creates("(const CorvConfigSpaceShPtr& i_cfgSpace)",
                  static_cast<CorvPathShPtr (*)(const CorvConfigSpaceShPtr&)>(&Self::create));
  i_class.collection<CorvDirectPathConstShPtr>("directPaths", "CorvDirectPathConstShPtr", &Self::countDirectPaths,
                                               &Self::directPath);
  const ClumMethodShPtr assignment =
    ClumMethod::create("CorvPath", "CorvPath&", "operator=", "(const CorvPath& i_other)", "");
  assignment->setMetaAttribute("orvane.next.clr-name", "Assign");
  i_class.object()->addMethod(assignment);
}

LUM_NOTIFICATION(CorvPath, WILL_CHANGE_CONFIGURATION_COUNT);
LUM_NOTIFICATION(CorvPath, DID_CHANGE_CONFIGURATION_COUNT);
const std::string CorvPath::AFFECTED_INDEX_KEY = "affectedIndex";
const std::string CorvPath::NEW_COUNT_KEY = "newCount";
const std::string CorvPath::OLD_COUNT_KEY = "oldCount";

LUM_STATUS_CODE(CorvPath, INVALID_DIRECT_PATH_ERROR, 20800,
                "Cannot get a valid direct path from the given configurations.");
LUM_STATUS_CODE(CorvPath, NULL_DIRECT_PATH_ERROR, 20801, "A direct path is required.");
LUM_STATUS_CODE(CorvPath, INCONSISTENT_CONFIG_SPACE_ERROR, 20802,
                "The configuration space of the given path is inconsistent.");
LUM_STATUS_CODE(CorvPath, EQUAL_PATHS_ERROR, 20803, "The path and the one passed by parameter shouldn't be equal.");
LUM_STATUS_CODE(CorvPath, GET_START_CONFIG_ERROR, 20804, "Cannot get start configuration from the given path.");
LUM_STATUS_CODE(CorvPath, GET_END_CONFIG_ERROR, 20805, "Cannot get end configuration from the given path.");
LUM_STATUS_CODE(CorvPath, NON_EQUIVALENT_CONFIGS_ERROR, 20806,
                "Start and end configurations of the given path are not equivalent.");
LUM_STATUS_CODE(CorvPath, SET_INITIAL_CONFIG_ERROR, 20807, "Cannot set the initial configuration of the path.");
LUM_STATUS_CODE(CorvPath, EMPTY_PATH_ERROR, 20808, "The path doesn't have any configuration.");
LUM_STATUS_CODE(CorvPath, DIRECT_PATH_ALREADY_EXIST_ERROR, 20809,
                "There's already at least a direct path in the path.");

/// How a change is announced.
struct CorvPath::CNotice
{
  bool isCountAnnounced = true;
  ECollectionChangeAction action = COLLECTION_CHANGE;
  int directPathIndex = -1;
  int configurationIndex = -1;
};

/// The content that a path is to get.
struct CorvPath::CEdit
{
  TDirectPaths directPaths;
  CorvConfig initialCfg;
  bool hasInitialCfg = false;
  CNotice notice;
};

CorvPath::CorvPath(const CorvConfigSpaceShPtr& i_cfgSpace) : m_configSpace(i_cfgSpace)
{
  if (i_cfgSpace)
    m_initialCfg = CorvConfig(i_cfgSpace);
}

CorvPath::CorvPath(const CorvPath& i_other)
  : CorvAbstractPath(i_other), CorvValidable(i_other), m_configSpace(i_other.m_configSpace),
    m_initialCfg(i_other.m_initialCfg), m_directPaths(i_other.m_directPaths), m_hasInitialCfg(i_other.m_hasInitialCfg)
{
}

CorvPath::~CorvPath() = default;

lmStatus CorvPath::init(const CorvPathWkPtr& i_weakPtr)
{
  return m_configSpace ? CorvAbstractPath::init(i_weakPtr) : lmStatus(lmStatus::FAILURE);
}

CorvPathShPtr CorvPath::create(const CorvConfigSpaceShPtr& i_cfgSpace)
{
  return lumCreate<CorvPath>(i_cfgSpace);
}

CorvPathShPtr CorvPath::create(const CorvDeviceShPtr& i_device)
{
  return create(i_device ? i_device->configSpace() : CorvConfigSpaceShPtr());
}

CorvPathShPtr CorvPath::createWithConfig(const CorvConfig& i_cfg)
{
  const CorvPathShPtr path = create(i_cfg.configSpace());
  return path && path->setInitialConfig(i_cfg).succeeded() ? path : CorvPathShPtr();
}

CorvPathShPtr CorvPath::createWithDirectPath(const CorvDirectPathConstShPtr& i_directPath)
{
  const CorvPathShPtr path = i_directPath ? create(i_directPath->configSpace()) : CorvPathShPtr();
  return path && path->appendDirectPath(i_directPath).succeeded() ? path : CorvPathShPtr();
}

CorvPathShPtr CorvPath::createWithDirectPath(const CorvConfig& i_start, const CorvConfig& i_end)
{
  const CorvPathShPtr path = create(i_start.configSpace());
  return path && path->appendDirectPath(i_start, i_end).succeeded() ? path : CorvPathShPtr();
}

CorvPathShPtr CorvPath::createCopy(const CorvPathConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvPathShPtr CorvPath::createDeepCopy(const CorvPathConstShPtr& i_path)
{
  const CorvPathShPtr path = createCopy(i_path);
  if (path)
    for (CorvDirectPathConstShPtr& directPath : path->m_directPaths)
      directPath = CorvDirectPath::createCopy(directPath);
  return path;
}

CorvPathShPtr CorvPath::createByExtractingDirectPaths(const CorvPathConstShPtr& i_path, unsigned int i_first,
                                                      unsigned int i_last)
{
  const CorvPathShPtr path = createCopy(i_path);
  return path && path->extractDirectPaths(i_first, i_last).succeeded() ? path : CorvPathShPtr();
}

CorvPathShPtr CorvPath::createByExtracting(const CorvPathConstShPtr& i_path, double i_from, double i_to)
{
  return boost::dynamic_pointer_cast<CorvPath>(CorvAbstractPath::createByExtracting(i_path, i_from, i_to));
}

CorvPathShPtr CorvPath::createByExtractingFrom(const CorvPathConstShPtr& i_path, double i_from)
{
  return boost::dynamic_pointer_cast<CorvPath>(CorvAbstractPath::createByExtractingFrom(i_path, i_from));
}

CorvPathShPtr CorvPath::createByExtractingTo(const CorvPathConstShPtr& i_path, double i_to)
{
  return boost::dynamic_pointer_cast<CorvPath>(CorvAbstractPath::createByExtractingTo(i_path, i_to));
}

CorvPathShPtr CorvPath::createReversed(const CorvPathConstShPtr& i_path)
{
  return boost::dynamic_pointer_cast<CorvPath>(CorvAbstractPath::createReversed(i_path));
}

CorvAbstractPathShPtr CorvPath::clone() const
{
  return createCopy(self());
}

CorvPath& CorvPath::operator=(const CorvPath& i_other)
{
  if (this == &i_other)
    return *this;
  const bool isOtherDevice = i_other.device() != device();
  if (isOtherDevice)
    notifyPropertyWillChange("device");
  m_configSpace = i_other.m_configSpace;
  CEdit edit;
  edit.directPaths = i_other.m_directPaths;
  edit.initialCfg = i_other.m_initialCfg;
  edit.hasInitialCfg = i_other.m_hasInitialCfg;
  exchange(edit);
  CorvValidable::operator=(i_other);
  if (isOtherDevice)
    notifyPropertyDidChange("device");
  return *this;
}

void CorvPath::notifyCount(unsigned int i_id, const std::string& i_key, unsigned int i_count, int i_index) const
{
  if (!hasListeners(i_id))
    return;
  const ClumNotificationShPtr notification = ClumNotification::create(i_id, self());
  notification->intValue(i_key, static_cast<int>(i_count));
  notification->intValue(AFFECTED_INDEX_KEY, i_index);
  notify(notification);
}

/// @param i_ifNoneLeft the single configuration of the path if there is no direct path.
CorvPath::CEdit CorvPath::makeEdit(TDirectPaths&& io_directPaths, const CorvConfig& i_ifNoneLeft) const
{
  CEdit edit;
  edit.initialCfg = io_directPaths.empty() ? i_ifNoneLeft : io_directPaths.front()->startConfiguration();
  edit.hasInitialCfg = true;
  edit.directPaths.swap(io_directPaths);
  return edit;
}

/// Everything that changes the content goes through here: the change is announced, made, announced.
template <class CHANGE>
void CorvPath::changeContent(const CNotice& i_notice, unsigned int i_newCount, const CHANGE& i_change)
{
  const unsigned int oldCount = countConfigurations();
  notifyPropertyWillChange("length");
  if (i_notice.isCountAnnounced)
    notifyCount(WILL_CHANGE_CONFIGURATION_COUNT, NEW_COUNT_KEY, i_newCount, i_notice.configurationIndex);
  notifyCollectionWillChange("directPaths", i_notice.action, i_notice.directPathIndex);
  i_change();
  // The findings on the path as a whole are void; those on the direct paths go with these, which are shared.
  clearReports();
  notifyCollectionDidChange("directPaths", i_notice.action, i_notice.directPathIndex);
  if (i_notice.isCountAnnounced)
    notifyCount(DID_CHANGE_CONFIGURATION_COUNT, OLD_COUNT_KEY, oldCount, i_notice.configurationIndex);
  notifyPropertyDidChange("length");
  notify(DID_CHANGE);
}

/// The old content is left in the edit.
void CorvPath::exchange(CEdit& io_edit)
{
  const unsigned int newCount = io_edit.directPaths.empty() ? (io_edit.hasInitialCfg ? 1 : 0)
                                                            : static_cast<unsigned int>(io_edit.directPaths.size()) + 1;
  changeContent(io_edit.notice, newCount,
                [&]
                {
                  m_directPaths.swap(io_edit.directPaths);
                  std::swap(m_initialCfg, io_edit.initialCfg);
                  std::swap(m_hasInitialCfg, io_edit.hasInitialCfg);
                });
}

lmStatus CorvPath::setInitialConfig(const CorvConfig& i_cfg)
{
  if (!m_directPaths.empty())
    return lmStatus(DIRECT_PATH_ALREADY_EXIST_ERROR);
  if (i_cfg.space() != m_configSpace)
    return lmStatus(INCONSISTENT_CONFIG_SPACE_ERROR);
  m_initialCfg = i_cfg;
  m_hasInitialCfg = true;
  clearReports();
  notify(DID_CHANGE);
  return lmStatus();
}

lmStatus CorvPath::addConfiguration(const CorvConfig& i_cfg)
{
  if (isEmpty())
    return setInitialConfig(i_cfg);
  return appendDirectPath(configuration(countConfigurations() - 1), i_cfg);
}

lmStatus CorvPath::appendDirectPath(const CorvConfig& i_start, const CorvConfig& i_end)
{
  const CorvSteeringMethodShPtr method = m_configSpace->steeringMethod();
  const CorvDirectPathShPtr directPath = method ? method->makeDirectPath(i_start, i_end) : CorvDirectPathShPtr();
  return directPath ? appendDirectPath(directPath) : lmStatus(INVALID_DIRECT_PATH_ERROR);
}

lmStatus CorvPath::appendDirectPath(const CorvConfigConstShPtr& i_start, const CorvConfigConstShPtr& i_end)
{
  return i_start && i_end ? appendDirectPath(*i_start, *i_end) : lmStatus(INVALID_DIRECT_PATH_ERROR);
}

lmStatus CorvPath::appendDirectPath(const CorvDirectPathConstShPtr& i_directPath)
{
  if (!i_directPath)
    return lmStatus(NULL_DIRECT_PATH_ERROR);
  if (i_directPath->configSpace() != m_configSpace)
    return lmStatus(INCONSISTENT_CONFIG_SPACE_ERROR);
  const unsigned int count = countConfigurations();
  if (count > 0 && !configuration(count - 1).isEquivalent(i_directPath->startConfiguration()))
    return lmStatus(lmStatus::FAILURE);
  CNotice notice;
  notice.action = COLLECTION_INSERTION;
  notice.directPathIndex = static_cast<int>(m_directPaths.size());
  notice.configurationIndex = count > 0 ? static_cast<int>(count) : -1;
  changeContent(notice, countDirectPaths() + 2,
                [&]
                {
                  if (m_directPaths.empty())
                    m_initialCfg = i_directPath->startConfiguration();
                  m_hasInitialCfg = true;
                  m_directPaths.push_back(i_directPath);
                });
  return lmStatus();
}

lmStatus CorvPath::appendPath(const CorvPathConstShPtr& i_path)
{
  if (!i_path)
    return lmStatus(NULL_DIRECT_PATH_ERROR);
  if (i_path->m_configSpace != m_configSpace)
    return lmStatus(INCONSISTENT_CONFIG_SPACE_ERROR);
  if (i_path.get() == this)
    return lmStatus(EQUAL_PATHS_ERROR);
  if (i_path->isEmpty())
    return lmStatus();
  CorvConfig start(m_configSpace), end(m_configSpace);
  lmStatus status = i_path->getConfigAtStart(start);
  if (status.failed())
    status.push(GET_START_CONFIG_ERROR);
  else if (!isEmpty() && (status = getConfigAtEnd(end)).failed())
    status.push(GET_END_CONFIG_ERROR);
  else if (!isEmpty() && !end.isEquivalent(start))
    status = NON_EQUIVALENT_CONFIGS_ERROR;
  if (status.failed())
    return status;
  if (i_path->m_directPaths.empty())
  {
    if (isEmpty() && (status = setInitialConfig(start)).failed())
      status.push(SET_INITIAL_CONFIG_ERROR);
    return status;
  }
  TDirectPaths directPaths = m_directPaths;
  directPaths.insert(directPaths.end(), i_path->m_directPaths.begin(), i_path->m_directPaths.end());
  CEdit edit = makeEdit(std::move(directPaths), start);
  exchange(edit);
  return lmStatus();
}

void CorvPath::clear()
{
  CEdit edit;
  edit.initialCfg = CorvConfig(m_configSpace);
  exchange(edit);
}

CorvDirectPathConstShPtr CorvPath::directPath(unsigned int i_rank) const
{
  return i_rank < m_directPaths.size() ? m_directPaths[i_rank] : CorvDirectPathConstShPtr();
}

CorvDirectPathConstShPtr CorvPath::directPathAtDistance(double& io_distance, unsigned int& o_rank) const
{
  const double distance = io_distance > 0.0 ? io_distance : 0.0;
  io_distance = 0.0;
  if (m_directPaths.empty())
    return CorvDirectPathConstShPtr();
  // The sums are those of `length()`: a junction, and the end, are met exactly.
  double passed = 0.0;
  for (o_rank = 0; o_rank < m_directPaths.size(); ++o_rank)
  {
    const double directPathLength = m_directPaths[o_rank]->length();
    const double next = passed + directPathLength;
    if (distance <= next)
    {
      io_distance = distance == next ? directPathLength : std::min(distance - passed, directPathLength);
      return m_directPaths[o_rank];
    }
    passed = next;
  }
  --o_rank;
  io_distance = m_directPaths[o_rank]->length();
  return m_directPaths[o_rank];
}

unsigned int CorvPath::countConfigurations() const
{
  if (m_directPaths.empty())
    return m_hasInitialCfg ? 1 : 0;
  return countDirectPaths() + 1;
}

const CorvConfig& CorvPath::configuration(unsigned int i_rank) const
{
  LUM_ASSERT(i_rank < countConfigurations());
  if (m_directPaths.empty() || i_rank > m_directPaths.size())
    return m_initialCfg;
  return i_rank < m_directPaths.size() ? m_directPaths[i_rank]->startConfiguration()
                                       : m_directPaths.back()->endConfiguration();
}

lmStatus CorvPath::getConfiguration(unsigned int i_rank, CorvConfig& o_cfg) const
{
  if (i_rank >= countConfigurations())
    return lmStatus(lmStatus::FAILURE);
  o_cfg = configuration(i_rank);
  return lmStatus();
}

lmStatus CorvPath::setConfiguration(unsigned int i_rank, const CorvConfig& i_cfg)
{
  if (i_rank >= countConfigurations())
    return lmStatus(lmStatus::FAILURE);
  if (i_cfg.space() != m_configSpace)
    return lmStatus(INCONSISTENT_CONFIG_SPACE_ERROR);
  TDirectPaths directPaths = m_directPaths;
  const auto remake = [&](unsigned int i_directPath, const CorvConfig& i_start, const CorvConfig& i_end)
  {
    directPaths[i_directPath] = m_directPaths[i_directPath]->steeringMethod()->makeDirectPath(i_start, i_end);
    return directPaths[i_directPath] && directPaths[i_directPath]->startConfiguration().isEquivalent(i_start) &&
           directPaths[i_directPath]->endConfiguration().isEquivalent(i_end);
  };
  if (i_rank > 0 && !remake(i_rank - 1, configuration(i_rank - 1), i_cfg))
    return lmStatus(lmStatus::FAILURE);
  if (i_rank < m_directPaths.size() && !remake(i_rank, i_cfg, configuration(i_rank + 1)))
    return lmStatus(lmStatus::FAILURE);
  CEdit edit = makeEdit(std::move(directPaths), i_cfg);
  edit.notice.isCountAnnounced = false;
  exchange(edit);
  return lmStatus();
}

lmStatus CorvPath::extractDirectPaths(unsigned int i_first, unsigned int i_last)
{
  if (i_first > m_directPaths.size() || i_last > m_directPaths.size())
    return lmStatus(lmStatus::FAILURE);
  CEdit edit;
  edit.initialCfg = CorvConfig(m_configSpace);
  if (i_first < i_last)
    edit = makeEdit(TDirectPaths(m_directPaths.begin() + i_first, m_directPaths.begin() + i_last), edit.initialCfg);
  exchange(edit);
  return lmStatus();
}

lmStatus CorvPath::extractFromDirectPath(unsigned int i_first)
{
  return extractDirectPaths(i_first, countDirectPaths());
}

lmStatus CorvPath::extractToDirectPath(unsigned int i_last)
{
  return extractDirectPaths(0, i_last);
}

lmStatus CorvPath::checkReplacement(const CorvPathConstShPtr& i_path) const
{
  if (!i_path || i_path->isEmpty() || isEmpty())
    return lmStatus(lmStatus::FAILURE);
  return i_path->m_configSpace == m_configSpace ? lmStatus() : lmStatus(INCONSISTENT_CONFIG_SPACE_ERROR);
}

lmStatus CorvPath::replacePart(unsigned int i_first, unsigned int i_last, const CorvPathConstShPtr& i_path)
{
  const lmStatus status = checkReplacement(i_path);
  if (status.failed())
    return status;
  if (i_last > m_directPaths.size() || i_first > i_last)
    return lmStatus(lmStatus::FAILURE);
  if ((i_first > 0 && !i_path->startsWith(configuration(i_first))) ||
      (i_last < m_directPaths.size() && !i_path->endsWith(configuration(i_last))))
    return lmStatus(NON_EQUIVALENT_CONFIGS_ERROR);
  TDirectPaths directPaths(m_directPaths.begin(), m_directPaths.begin() + i_first);
  directPaths.insert(directPaths.end(), i_path->m_directPaths.begin(), i_path->m_directPaths.end());
  directPaths.insert(directPaths.end(), m_directPaths.begin() + i_last, m_directPaths.end());
  CEdit edit = makeEdit(std::move(directPaths), configuration(0));
  exchange(edit);
  return lmStatus();
}

lmStatus CorvPath::replacePart(double i_from, double i_to, const CorvPathConstShPtr& i_path)
{
  lmStatus status = checkReplacement(i_path);
  if (status.failed())
    return status;
  if (!(i_from <= i_to))
    return lmStatus(lmStatus::FAILURE);
  TDirectPaths directPaths;
  const double whole = length();
  if (i_from > 0.0)
    status = makeHead(std::min(i_from, whole), i_path->configuration(0), directPaths);
  directPaths.insert(directPaths.end(), i_path->m_directPaths.begin(), i_path->m_directPaths.end());
  if (status.succeeded() && i_to < whole)
    status = makeTail(std::max(i_to, 0.0), i_path->configuration(i_path->countConfigurations() - 1), directPaths);
  if (status.failed())
    return status;
  CEdit edit = makeEdit(std::move(directPaths), i_path->configuration(0));
  exchange(edit);
  return lmStatus();
}

/// Appends what lies before a distance. Fails if it does not end where `i_junction` is.
lmStatus CorvPath::makeHead(double i_to, const CorvConfig& i_junction, TDirectPaths& io_directPaths) const
{
  double local = i_to;
  unsigned int rank = 0;
  const CorvDirectPathConstShPtr cut = directPathAtDistance(local, rank);
  io_directPaths.insert(io_directPaths.end(), m_directPaths.begin(), m_directPaths.begin() + rank);
  if (cut && local >= cut->length())
    io_directPaths.push_back(cut);
  else if (const CorvDirectPathShPtr piece = CorvDirectPath::createByExtractingTo(cut, local))
    io_directPaths.push_back(piece);
  const CorvConfig& end = io_directPaths.empty() ? configuration(0) : io_directPaths.back()->endConfiguration();
  return end.isEquivalent(i_junction) ? lmStatus() : lmStatus(NON_EQUIVALENT_CONFIGS_ERROR);
}

/// Appends what lies after a distance. Fails if it does not start where `i_junction` is.
lmStatus CorvPath::makeTail(double i_from, const CorvConfig& i_junction, TDirectPaths& io_directPaths) const
{
  double local = i_from;
  unsigned int rank = 0;
  const CorvDirectPathConstShPtr cut = directPathAtDistance(local, rank);
  const std::size_t before = io_directPaths.size();
  if (cut && local <= 0.0)
    io_directPaths.push_back(cut);
  else if (const CorvDirectPathShPtr piece = CorvDirectPath::createByExtractingFrom(cut, local))
    io_directPaths.push_back(piece);
  if (cut)
    io_directPaths.insert(io_directPaths.end(), m_directPaths.begin() + rank + 1, m_directPaths.end());
  const CorvConfig& start = io_directPaths.size() == before ? configuration(countConfigurations() - 1)
                                                            : io_directPaths[before]->startConfiguration();
  return start.isEquivalent(i_junction) ? lmStatus() : lmStatus(NON_EQUIVALENT_CONFIGS_ERROR);
}

double CorvPath::length() const
{
  double total = 0.0;
  for (const CorvDirectPathConstShPtr& directPath : m_directPaths)
    total += directPath->length();
  return total;
}

lmStatus CorvPath::getConfigAtDistance(double i_distance, CorvConfig& io_cfg) const
{
  double local = i_distance;
  unsigned int rank = 0;
  if (const CorvDirectPathConstShPtr directPath = directPathAtDistance(local, rank))
    return directPath->getConfigAtDistance(local, io_cfg);
  if (i_distance != 0.0 || !m_hasInitialCfg)
    return lmStatus(lmStatus::FAILURE);
  io_cfg = m_initialCfg;
  return lmStatus();
}

lmStatus CorvPath::getConfigAtStart(CorvConfig& io_cfg) const
{
  if (isEmpty())
    return lmStatus(EMPTY_PATH_ERROR);
  io_cfg = configuration(0);
  return lmStatus();
}

lmStatus CorvPath::getConfigAtEnd(CorvConfig& io_cfg) const
{
  if (isEmpty())
    return lmStatus(EMPTY_PATH_ERROR);
  io_cfg = configuration(countConfigurations() - 1);
  return lmStatus();
}

CorvDeviceShPtr CorvPath::device() const
{
  return m_configSpace ? m_configSpace->device() : CorvDeviceShPtr();
}

CorvConfigSpaceShPtr CorvPath::configSpace() const
{
  return m_configSpace;
}

bool CorvPath::isOriented() const
{
  return std::any_of(m_directPaths.begin(), m_directPaths.end(),
                     [](const CorvDirectPathConstShPtr& i_directPath) { return i_directPath->isOriented(); });
}

void CorvPath::describe(const CorvPathVisitorShPtr& i_visitor) const
{
  if (!i_visitor)
    return;
  const CorvPathConstShPtr me = self();
  i_visitor->beginPath(me);
  if (!isEmpty())
    i_visitor->reachConfiguration(configuration(0));
  for (const CorvDirectPathConstShPtr& directPath : m_directPaths)
  {
    if (!(directPath->length() > 0.0))
      continue;
    directPath->describe(i_visitor);
    i_visitor->reachConfiguration(directPath->endConfiguration());
  }
  i_visitor->endPath(me);
}

lmStatus CorvPath::boundedMoveByBody(double i_tStart, EDirection i_direction, double& o_tGoal, bool& o_hitsEnd,
                                     std::vector<double>& io_maxDistances) const
{
  if (isEmpty())
    return lmStatus(EMPTY_PATH_ERROR);
  const bool isForward = i_direction == FORWARD;
  double local = i_tStart;
  unsigned int rank = 0;
  o_tGoal = 0.0;
  o_hitsEnd = true;
  if (!directPathAtDistance(local, rank))
    return lmStatus();
  const unsigned int countBefore = isForward ? rank : rank + 1;
  for (unsigned int i = 0; i < countBefore; ++i)
    o_tGoal += m_directPaths[i]->length();
  while (true)
  {
    const CorvDirectPath& current = *m_directPaths[rank];
    const double whole = current.length();
    double localGoal = 0.0;
    const lmStatus status = current.boundedMoveByBody(local, i_direction, localGoal, o_hitsEnd, io_maxDistances);
    if (status.failed())
      return status;
    if (!o_hitsEnd)
    {
      o_tGoal += isForward ? localGoal : localGoal - whole;
      return lmStatus();
    }
    o_tGoal += isForward ? whole : -whole;
    if (isForward ? rank + 1 == m_directPaths.size() : rank == 0)
      break;
    rank = isForward ? rank + 1 : rank - 1;
    local = isForward ? 0.0 : m_directPaths[rank]->length();
  }
  o_tGoal = isForward ? o_tGoal : 0.0;
  return lmStatus();
}

lmStatus CorvPath::extractFrom(double i_from)
{
  if (i_from != i_from)
    return lmStatus(lmStatus::FAILURE);
  if (m_directPaths.empty())
  {
    notify(DID_CHANGE);
    return lmStatus();
  }
  // A cut at the start itself moves nothing: short motions at the start stay.
  TDirectPaths directPaths;
  if (!(i_from > 0.0))
    directPaths = m_directPaths;
  else
    makeRest(i_from, directPaths);
  CEdit edit = makeEdit(std::move(directPaths), configuration(countConfigurations() - 1));
  exchange(edit);
  return lmStatus();
}

/// What lies after a distance within the path; empty where nothing does.
void CorvPath::makeRest(double i_from, TDirectPaths& o_directPaths) const
{
  double passed = 0.0;
  for (const CorvDirectPathConstShPtr& directPath : m_directPaths)
  {
    const double next = passed + directPath->length();
    if (!o_directPaths.empty() || passed > i_from)
      o_directPaths.push_back(directPath);
    else if (i_from < next)
    {
      const double local = i_from - passed;
      const CorvDirectPathConstShPtr piece =
        local > 0.0 ? CorvDirectPath::createByExtractingFrom(directPath, local) : directPath;
      if (piece)
        o_directPaths.push_back(piece);
    }
    passed = next;
  }
}

lmStatus CorvPath::extractTo(double i_to)
{
  if (i_to != i_to)
    return lmStatus(lmStatus::FAILURE);
  if (m_directPaths.empty())
  {
    notify(DID_CHANGE);
    return lmStatus();
  }
  TDirectPaths directPaths;
  double passed = 0.0;
  for (const CorvDirectPathConstShPtr& directPath : m_directPaths)
  {
    const double next = passed + directPath->length();
    if (i_to < next)
    {
      if (const CorvDirectPathShPtr piece = CorvDirectPath::createByExtractingTo(directPath, i_to - passed))
        directPaths.push_back(piece);
      break;
    }
    directPaths.push_back(directPath);
    passed = next;
  }
  CEdit edit = makeEdit(std::move(directPaths), configuration(0));
  exchange(edit);
  return lmStatus();
}

lmStatus CorvPath::extract(double i_from, double i_to)
{
  if (!(i_from <= i_to))
  {
    ClumLogManager::addError("CorvPath::extract(): end located before start.");
    return lmStatus(lmStatus::FAILURE);
  }
  const double whole = length();
  const double from = std::max(i_from, 0.0);
  const double to = std::min(i_to, whole);
  double local = from;
  unsigned int rank = 0;
  const CorvDirectPathConstShPtr directPath = directPathAtDistance(local, rank);
  if (!directPath)
  {
    notify(DID_CHANGE);
    return lmStatus();
  }
  const bool reachesEnd = to >= whole;
  const double localTo = reachesEnd ? directPath->length() : local + to - from;
  const bool isWithinOne = reachesEnd ? rank + 1 == m_directPaths.size() : localTo <= directPath->length();
  if (isWithinOne && from <= whole)
  {
    TDirectPaths directPaths(1, CorvDirectPath::createByExtracting(directPath, local, localTo));
    if (!directPaths[0])
    {
      ClumLogManager::addError("CorvPath::extract(): unable to extract direct path.");
      return lmStatus(lmStatus::FAILURE);
    }
    CEdit edit = makeEdit(std::move(directPaths), m_initialCfg);
    exchange(edit);
    return lmStatus();
  }
  const lmStatus status = extractTo(to);
  return status.succeeded() ? extractFrom(from) : status;
}

lmStatus CorvPath::reverse()
{
  TDirectPaths directPaths;
  for (auto directPath = m_directPaths.rbegin(); directPath != m_directPaths.rend(); ++directPath)
  {
    directPaths.push_back(CorvDirectPath::createReversed(*directPath));
    if (!directPaths.back())
      return lmStatus(lmStatus::FAILURE);
  }
  CEdit edit = makeEdit(std::move(directPaths), m_initialCfg);
  edit.hasInitialCfg = !isEmpty();
  edit.notice.isCountAnnounced = false;
  exchange(edit);
  return lmStatus();
}

lmStatus CorvPath::convert(const CorvConfigSpaceShPtr& i_space)
{
  if (!i_space)
    return lmStatus(lmStatus::FAILURE);
  CorvConfig initialCfg(m_initialCfg);
  const lmStatus status = m_hasInitialCfg && m_directPaths.empty() ? initialCfg.convert(i_space) : lmStatus();
  if (status.failed())
    return status;
  TDirectPaths directPaths;
  for (const CorvDirectPathConstShPtr& directPath : m_directPaths)
  {
    directPaths.push_back(CorvDirectPath::createByConvertingToSpace(directPath, i_space));
    if (!directPaths.back())
      return lmStatus(lmStatus::FAILURE);
  }
  const bool isOtherDevice = i_space->device() != device();
  if (isOtherDevice)
    notifyPropertyWillChange("device");
  m_configSpace = i_space;
  CEdit edit = makeEdit(std::move(directPaths), m_hasInitialCfg ? initialCfg : CorvConfig(i_space));
  edit.hasInitialCfg = !isEmpty();
  edit.notice.isCountAnnounced = false;
  exchange(edit);
  if (isOtherDevice)
    notifyPropertyDidChange("device");
  return lmStatus();
}

void CorvPath::deviceVersionChanged()
{
  LUM_ASSERT_SUCCESS(convert(configSpace()));
}

double CorvPath::maxPenetration() const
{
  const CorvValidatorSetShPtr validators = m_configSpace->directPathValidators();
  const CorvValidatorShPtr validator =
    validators ? validators->validatorNamed(CorvValidatorDPCollision::DEFAULT_NAME, true) : CorvValidatorShPtr();
  if (!validator || !validator->isActivated())
    return -1.0;
  double largest = -1.0;
  for (const CorvDirectPathConstShPtr& directPath : m_directPaths)
  {
    const auto report = boost::dynamic_pointer_cast<const CorvReportDPCollision>(directPath->report(validator->name()));
    if (!report)
      return -1.0;
    largest = std::max(largest, report->penetration());
  }
  return largest;
}

bool CorvPath::validateWithPenetration(double i_penetration, bool i_exhaustive) const
{
  static const ClumStringKey s_penetrationKey("orvane.core.validator.dp.collision.penetration");
  static const ClumStringKey s_exhaustiveKey("orvane.core.validator.path.direct-paths.exhaustive");
  const ClumParameterMapShPtr params = ClumParameterMap::create();
  params->setDouble(s_penetrationKey, i_penetration);
  params->setBool(s_exhaustiveKey, i_exhaustive);
  return validate(params);
}

void CorvPath::didUnvalidate() const
{
  m_initialCfg.unvalidate();
  for (const CorvDirectPathConstShPtr& directPath : m_directPaths)
    directPath->unvalidate();
}

bool CorvPath::needsRevalidationWith(const CorvValidator& i_validator, const ClumParameterMapConstShPtr& i_params,
                                     const CorvValidationReportConstShPtr& i_report) const
{
  return i_validator.shouldRevalidatePath(*this, i_params, i_report);
}

CorvValidatorShPtr CorvPath::designatedValidator() const
{
  return m_configSpace ? m_configSpace->pathValidators() : CorvValidatorSetShPtr();
}

bool CorvPath::doValidateWith(const CorvValidator& i_validator, const ClumParameterMapConstShPtr& i_params,
                              const CorvValidationReportConstShPtr& i_report, CorvValidationReportShPtr& o_report)
{
  return i_validator.doValidatePath(*this, i_params, i_report, o_report);
}

void CorvPath::encodeWithCoder(const ClumCoderShPtr& i_coder) const
{
  CorvAbstractPath::encodeWithCoder(i_coder);
  i_coder->encodeObjectShPtr(m_configSpace, "m_configSpace");
  m_initialCfg.encodeValueWithCoder(*i_coder, "m_initialCfg");
  i_coder->encodeObjects(m_directPaths, "m_directPaths");
  i_coder->encodeBool(m_hasInitialCfg, "m_hasInitialCfg");
}

lmStatus CorvPath::initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self)
{
  const lmStatus status = CorvAbstractPath::initWithCoder(i_coder, i_self);
  if (status.failed())
    return status;
  m_configSpace = i_coder->decode<CorvConfigSpace>("m_configSpace");
  m_initialCfg = CorvConfig(i_coder, "m_initialCfg");
  std::vector<CorvDirectPathShPtr> directPaths;
  i_coder->decodeObjects("m_directPaths", directPaths);
  m_directPaths.assign(directPaths.begin(), directPaths.end());
  m_hasInitialCfg = i_coder->decodeBool("m_hasInitialCfg");
  const bool isUsable = std::all_of(m_directPaths.begin(), m_directPaths.end(),
                                    [&](const CorvDirectPathConstShPtr& i_directPath)
                                    { return i_directPath && i_directPath->configSpace() == m_configSpace; });
  const bool isStartUsable = m_initialCfg.space() ? m_initialCfg.hasSoundValues() : !m_hasInitialCfg;
  return m_configSpace && isUsable && isStartUsable ? lmStatus() : lmStatus(lmStatus::FAILURE);
}
