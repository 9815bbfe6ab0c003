#include "harness.h"

#include "foundation/lumMat4.h"
#include "kinematics/orvCSComposite.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvDof.h"
#include "kinematics/orvUtility.h"
#include "metrics/orvMetric.h"
#include "metrics/orvMetricEuclidean.h"
#include "paths/orvDirectPath.h"
#include "paths/orvSteeringMethod.h"
#include "roadmaps/orvConnectedComponent.h"
#include "roadmaps/orvEdge.h"
#include "roadmaps/orvNode.h"
#include "roadmaps/orvRoadmap.h"

#include <cstdio>
#include <fstream>
#include <limits>
#include <unistd.h>

namespace
{
/// Bytes of memory that the process holds.
double residentBytes()
{
  std::ifstream file("/proc/self/statm");
  double total = 0.0, resident = 0.0;
  file >> total >> resident;
  return resident * static_cast<double>(sysconf(_SC_PAGESIZE));
}

CorvConfigSpaceShPtr sixBoundedDofs()
{
  const CorvCSCompositeShPtr space = CorvCSComposite::create("orvane.bench.nearest");
  for (int i = 0; i < 6; ++i)
  {
    const CorvDofShPtr dof = CorvDof::create(i >= 3);
    if (i < 3)
      dof->boundWithin(0.0, 10.0);
    space->appendSubspace(dof);
  }
  space->metric(CorvMetricEuclidean::create());
  return space;
}

/// Grows one tree as a diffusion does: towards a random configuration, a short way from a node that is there.
void growTree(const CorvRoadmapShPtr& i_roadmap, unsigned int i_count)
{
  const CorvConfigSpaceShPtr space = i_roadmap->configSpace();
  CorvConfig config(space);
  if (i_roadmap->countNodes() == 0)
    i_roadmap->addNode(CorvNode::create(config));
  while (i_roadmap->countNodes() < i_count)
  {
    const unsigned int count = i_roadmap->countNodes();
    const CorvNodeShPtr from = i_roadmap->node(CorvUtility::random(0, static_cast<int>(count) - 1));
    CorvConfig target(space);
    target.randomize();
    const double step = 0.3 / from->config().distanceTo(target);
    const CorvNodeShPtr node = CorvNode::create(from->config() * (1.0 - step) + target * step);
    const CorvDirectPathShPtr there = space->steeringMethod()->makeDirectPath(from->config(), node->config());
    if (i_roadmap->addNode(node).succeeded())
      i_roadmap->addDoubleEdge(from, node, CorvEdge::create(there),
                               CorvEdge::create(CorvDirectPath::createReversed(there)));
  }
}

CorvNodeShPtr linearScan(const CorvRoadmap& i_roadmap, const CorvMetric& i_metric, const CorvConfig& i_config)
{
  CorvNodeShPtr nearest;
  double best = std::numeric_limits<double>::infinity();
  for (unsigned int i = 0; i < i_roadmap.countNodes(); ++i)
  {
    const double distance = i_metric.distanceForSorting(i_config, i_roadmap.node(i)->config());
    if (distance < best)
    {
      best = distance;
      nearest = i_roadmap.node(i);
    }
  }
  return nearest;
}

/// A scan as one would write it without a library: squared distances of the values, turns taken as lengths.
std::size_t flatScan(const std::vector<double>& i_values, const double* i_query)
{
  std::size_t nearest = 0;
  double best = std::numeric_limits<double>::infinity();
  for (std::size_t at = 0; at < i_values.size(); at += 6)
  {
    double sum = 0.0;
    for (std::size_t k = 0; k < 6; ++k)
      sum += (i_values[at + k] - i_query[k]) * (i_values[at + k] - i_query[k]);
    if (sum < best)
    {
      best = sum;
      nearest = at / 6;
    }
  }
  return nearest;
}

/// Queries as a growing tree makes them: near the tree, a step beyond a node.
std::vector<CorvConfig> queriesNear(const CorvRoadmap& i_roadmap)
{
  std::vector<CorvConfig> queries;
  for (int i = 0; i < 50; ++i)
  {
    CorvConfig query(i_roadmap.node(CorvUtility::random(0, static_cast<int>(i_roadmap.countNodes()) - 1))->config());
    query.randomStep(0.3);
    queries.push_back(query);
  }
  return queries;
}

double ratioToFlatScan(const CorvRoadmap& i_roadmap, const std::vector<CorvConfig>& i_queries)
{
  const CorvConnectedComponentShPtr tree = i_roadmap.node(0)->connectedComponent();
  std::vector<double> values;
  for (unsigned int i = 0; i < i_roadmap.countNodes(); ++i)
    values.insert(values.end(), i_roadmap.node(i)->config().beginPtr(), i_roadmap.node(i)->config().endValues());
  std::size_t next = 0;
  return compare([&] { keep(flatScan(values, i_queries[next++ % i_queries.size()].beginPtr())); },
                 [&] { keep(tree->nearestNode(i_queries[next++ % i_queries.size()])); })
    .ratio();
}

void benchmarkNearest()
{
  const CorvConfigSpaceShPtr space = sixBoundedDofs();
  CorvUtility::randomSeed(1);
  const double before = residentBytes();
  const CorvRoadmapShPtr roadmap = CorvRoadmap::create(space);
  growTree(roadmap, 100000);
  const CorvConnectedComponentShPtr tree = roadmap->node(0)->connectedComponent();
  CorvConfig probe(space);
  tree->nearestNode(probe);
  const double perNode = (residentBytes() - before) / roadmap->countNodes();

  const std::vector<CorvConfig> queries = queriesNear(*roadmap);
  std::size_t next = 0;
  const Comparison nearest =
    compare([&] { keep(linearScan(*roadmap, *space->metric(), queries[next++ % queries.size()])); },
            [&] { keep(tree->nearestNode(queries[next++ % queries.size()])); });
  report("nearest of 100,000 tree-grown nodes in six dofs: linear scan / index", nearest.ratio(), "at least 10");
  report("the same: a hand-written scan of one array of numbers / index", ratioToFlatScan(*roadmap, queries), "told");
  char text[64];
  std::snprintf(text, sizeof text, "%.0f bytes", perNode);
  report("memory of a node with its two edges, direct paths and its place in the index", text);

  const CorvRoadmapShPtr small = CorvRoadmap::create(space);
  growTree(small, 1000);
  report("nearest of 1,000: the hand-written scan / index", ratioToFlatScan(*small, queriesNear(*small)), "told");
}

const Section s_nearest("nearest", benchmarkNearest);
} // namespace
