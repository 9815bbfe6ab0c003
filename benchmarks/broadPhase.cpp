#include "harness.h"

#include "foundation/lumBroadPhase.h"
#include "foundation/lumCollisionToolkit.h"
#include "foundation/lumMesh.h"
#include "support/meshes.h"

#include <limits>
#include <random>

namespace
{
/// 200 bodies fly among 200 obstacles, all of them meshes of about 5,000 triangles.
class BroadPhaseScene
{
public:
  static constexpr unsigned int BODIES = 200;
  static constexpr unsigned int OBSTACLES = 200;
  static constexpr unsigned int CONFIGURATIONS = 20;

  explicit BroadPhaseScene(double i_extent) : m_extent(i_extent)
  {
    const ClumMeshShPtr meshes[] = {torusKnot(2, 3, 0.5, 0.1, 125, 20), sphereMesh(0.5, 50),
                                    torusKnot(1, 4, 0.4, 0.08, 125, 20), clutter(5, 400, 1.0)};
    for (unsigned int i = 0; i < OBSTACLES + BODIES; ++i)
    {
      m_meshes.push_back(meshes[i % 4]);
      m_models.push_back(m_meshes.back()->collisionModel(m_toolkit));
      const unsigned int body = i < OBSTACLES ? ClumBroadPhase::NO_BODY : i - OBSTACLES;
      m_phase.addShape(*m_models.back(), *m_meshes.back(), body, i < OBSTACLES ? randomPose() : ClumMat4());
      for (unsigned int still = 0; i >= OBSTACLES && still < OBSTACLES; ++still)
        m_phase.addPair(i, still);
    }
    m_phase.build();
    for (unsigned int i = 0; i < CONFIGURATIONS; ++i)
    {
      std::vector<ClumMat4> poses;
      for (unsigned int body = 0; body < BODIES; ++body)
        poses.push_back(randomPose());
      m_configurations.push_back(poses);
    }
  }

  /// What a proof asks: bounded distances up to the length that a body can use; or, for a length of 0, contacts.
  void compareFor(double i_need, const std::string& i_what)
  {
    m_need = i_need;
    std::vector<std::vector<Query>> queries;
    for (const std::vector<ClumMat4>& poses : m_configurations)
      queries.push_back(record(poses));
    std::size_t count = 0;
    for (const std::vector<Query>& list : queries)
      count += list.size();
    const Comparison comparison = compare(
      [&]
      {
        for (unsigned int i = 0; i < CONFIGURATIONS; ++i)
          replay(m_configurations[i], queries[i]);
      },
      [&]
      {
        for (unsigned int i = 0; i < CONFIGURATIONS; ++i)
          for (const Query& query : queries[i])
            keep(ask(m_configurations[i], query.pair, query.cap));
      });
    report(i_what + ", " + std::to_string(count / CONFIGURATIONS) + " queries: broad phase / queries",
           comparison.ratio(), "at most 0.1");
  }

private:
  struct Query
  {
    unsigned int pair;
    double cap;
    double found;
  };

  ClumMat4 randomPose()
  {
    const auto number = [this](double i_reach) { return i_reach * (m_engine() / 2147483648.0 - 1.0); };
    ClumMat4 pose;
    const double ax = number(1.0), ay = number(1.0), az = number(1.0);
    pose.rotate(ax, ay, az, number(3.14));
    const double x = number(0.5 * m_extent), y = number(0.5 * m_extent);
    pose.setTranslation({x, y, number(0.5 * m_extent)});
    return pose;
  }

  double ask(const std::vector<ClumMat4>& i_poses, unsigned int i_pair, double i_cap)
  {
    const unsigned int a = m_phase.firstOf(i_pair), b = m_phase.secondOf(i_pair);
    const ClumMat4& poseA = i_poses[m_phase.bodyOf(a)];
    if (m_need == 0.0)
      return m_toolkit.areTouching(*m_models[a], poseA, *m_models[b], m_phase.pose(b)) ? 0.0 : 1.0;
    return m_toolkit.boundedDistance(*m_models[a], poseA, *m_models[b], m_phase.pose(b), i_cap, 0.2).lower;
  }

  /// Walks with the answers that `i_answer(pair, cap)` gives.
  template <class ANSWER>
  void walk(const std::vector<ClumMat4>& i_poses, ANSWER i_answer)
  {
    m_phase.place(i_poses.data());
    m_phase.begin(BODIES);
    for (unsigned int body = 0; body < BODIES; ++body)
      m_phase.limit(body, m_need);
    m_phase.follow();
    ClumBroadPhase::CCandidate candidate;
    while (m_phase.next(candidate))
    {
      const unsigned int body = m_phase.bodyOf(m_phase.firstOf(candidate.pair));
      const double cap = m_phase.limit(body);
      m_phase.limit(body, std::min(cap, i_answer(candidate.pair, cap)));
    }
  }

  std::vector<Query> record(const std::vector<ClumMat4>& i_poses)
  {
    std::vector<Query> queries;
    walk(i_poses,
         [&](unsigned int i_pair, double i_cap)
         {
           queries.push_back({i_pair, i_cap, ask(i_poses, i_pair, i_cap)});
           return queries.back().found;
         });
    return queries;
  }

  void replay(const std::vector<ClumMat4>& i_poses, const std::vector<Query>& i_queries)
  {
    std::size_t next = 0;
    walk(i_poses, [&](unsigned int, double) { return i_queries[next++].found; });
  }

  std::mt19937 m_engine{11};
  double m_extent;
  double m_need = 0.0;
  const ClumCollisionToolkit& m_toolkit = *ClumCollisionToolkit::defaultCollisionToolkit();
  std::vector<ClumMeshShPtr> m_meshes;
  std::vector<ClumCollisionModelConstShPtr> m_models;
  ClumBroadPhase m_phase;
  std::vector<std::vector<ClumMat4>> m_configurations;
};

void benchmarkBroadPhase()
{
  BroadPhaseScene loose(24.0), dense(8.0);
  loose.compareFor(0.5, "200 bodies, 200 obstacles far apart, distances up to 0.5");
  dense.compareFor(0.5, "200 bodies, 200 obstacles close together, distances up to 0.5");
  loose.compareFor(std::numeric_limits<double>::infinity(), "200 bodies, 200 obstacles far apart, all distances");
  loose.compareFor(0.0, "200 bodies, 200 obstacles far apart, contacts");
  dense.compareFor(0.0, "200 bodies, 200 obstacles close together, contacts");
}

const Section s_broadPhase("broadPhase", benchmarkBroadPhase);
} // namespace
