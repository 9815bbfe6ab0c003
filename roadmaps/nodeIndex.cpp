#include "roadmaps/nodeIndex.h"

#include "kinematics/orvConfigSpace.h"
#include "metrics/orvMetricEuclidean.h"

#include <algorithm>
#include <cmath>

namespace
{
bool getFlatFormOf(const CorvMetric& i_metric, const CorvConfigSpace& i_space, CorvFlatForm& o_form)
{
  const CorvMetricEuclidean* euclidean = dynamic_cast<const CorvMetricEuclidean*>(&i_metric);
  return euclidean && euclidean->getFlatForm(i_space, o_form);
}
} // namespace

std::unique_ptr<CorvNodeIndex> CorvNodeIndex::create(const CorvConfigSpaceShPtr& i_space)
{
  if (!i_space || !i_space->metric() || i_space->isSteeringOriented())
    return nullptr;
  CNodeMetric metric;
  metric.metric = i_space->metric();
  metric.isFlat = getFlatFormOf(*metric.metric, *i_space, metric.form);
  std::unique_ptr<CorvNodeIndex> index(new CorvNodeIndex(std::move(metric)));
  index->m_version = i_space->version();
  index->m_metricRevision = CorvMetric::revision();
  return index;
}

bool CorvNodeIndex::isCurrent(const CorvConfigSpace& i_space) const
{
  const CNodeMetric& used = m_tree.metric();
  if (i_space.metric() != used.metric || i_space.version() != m_version || !used.form.isCurrent())
    return false;
  if (CorvMetric::revision() == m_metricRevision)
    return true;
  CorvFlatForm form;
  if (!used.isFlat || !getFlatFormOf(*used.metric, i_space, form) || !(form == used.form))
    return false;
  m_metricRevision = CorvMetric::revision();
  return true;
}

CorvNodeIndex::CorvNodeIndex(CNodeMetric i_metric) : m_tree(std::move(i_metric))
{
  const CNodeMetric& used = m_tree.metric();
  if (used.isFlat && used.form.canMeasureBlocks())
    m_blocks.reset(new CorvNodeBlocks(used.form));
}

bool CorvNodeIndex::insert(const CorvNodeShPtr& i_node)
{
  return m_blocks ? insertInBlocks(*i_node) : insertInTree(i_node);
}

bool CorvNodeIndex::insertInBlocks(const CorvNode& i_node)
{
  const CQuery query = queryFrom(i_node.config());
  if (!std::all_of(m_queryPoint.begin(), m_queryPoint.end(), [](double number) { return std::isfinite(number); }))
    return false;
  m_blocks->insert(i_node, query.point);
  return true;
}

bool CorvNodeIndex::insertInTree(const CorvNodeShPtr& i_node)
{
  if (m_tree.size() != 0 && !m_tree.metric().isFlat && !isMeasuredAlikeBothWays(*i_node))
    return false;
  return m_tree.insert(i_node, queryFrom(i_node->config())) != m_tree.UNDEFINED;
}

std::size_t CorvNodeIndex::memorySize() const
{
  return sizeof(*this) + m_tree.allocatedBytes() + (m_blocks ? sizeof(*m_blocks) + m_blocks->allocatedBytes() : 0);
}

CorvNodeShPtr CorvNodeIndex::nearest(const CorvConfig& i_config, double i_bound) const
{
  if (m_blocks)
  {
    const CorvNode* const node = m_blocks->nearest(queryFrom(i_config).point, i_bound);
    return node ? node->self() : CorvNodeShPtr();
  }
  const CorvNodeShPtr* found = m_tree.nearest(queryFrom(i_config), i_bound);
  return found ? *found : CorvNodeShPtr();
}

CorvNodeIndex::CQuery CorvNodeIndex::queryFrom(const CorvConfig& i_config) const
{
  const CNodeMetric& used = m_tree.metric();
  if (!used.isFlat)
    return CQuery{i_config, nullptr};
  m_queryPoint.resize(used.form.pointSize());
  used.form.makePoint(i_config.beginPtr(), m_queryPoint.data());
  return CQuery{i_config, m_queryPoint.data()};
}

bool CorvNodeIndex::isMeasuredAlikeBothWays(const CorvNode& i_node) const
{
  const CorvMetric& metric = *m_tree.metric().metric;
  const CorvConfig& root = m_tree.root()->config();
  const double there = metric.distance(i_node.config(), root);
  const double back = metric.distance(root, i_node.config());
  return std::fabs(there - back) <= 1e-9 * (there + back);
}

void CorvNodeIndex::CNodeMetric::add(const CorvNodeShPtr& i_node, const CQuery& i_query)
{
  if (isFlat)
    m_points.insert(m_points.end(), i_query.point, i_query.point + form.pointSize());
  else
    m_configs.push_back(&i_node->config());
}

void CorvNodeIndex::CNodeMetric::replace(unsigned int i_rank, const CorvNodeShPtr& i_node, const CQuery& i_query)
{
  if (isFlat)
    std::copy_n(i_query.point, form.pointSize(), m_points.begin() + std::ptrdiff_t(i_rank) * form.pointSize());
  else
    m_configs[i_rank] = &i_node->config();
}

double CorvNodeIndex::CNodeMetric::squaredDistance(const CQuery& i_query, unsigned int i_rank) const
{
  if (isFlat)
    return form.squaredDistance(i_query.point, &m_points[std::size_t(i_rank) * form.pointSize()]);
  return metric->squaredDistance(i_query.config, *m_configs[i_rank]);
}

std::size_t CorvNodeIndex::CNodeMetric::allocatedBytes() const
{
  return m_points.capacity() * sizeof(double) + m_configs.capacity() * sizeof(const CorvConfig*);
}
