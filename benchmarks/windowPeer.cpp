#include "harness.h"
#include "scene.h"
#include "search.h"
#include "windowScene.h"

#include "foundation/lumMesh.h"
#include "kinematics/orvUtility.h"

#include <fcl/geometry/bvh/BVH_model.h>
#include <fcl/narrowphase/collision.h>
#include <ompl/base/DiscreteMotionValidator.h>
#include <ompl/base/spaces/SE3StateSpace.h>
#include <ompl/geometric/SimpleSetup.h>
#include <ompl/geometric/planners/rrt/RRTConnect.h>
#include <ompl/util/Console.h>
#include <ompl/util/RandomNumbers.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <memory>

namespace
{
using TFclModel = fcl::BVHModel<fcl::OBBRSSd>;
using TPose = std::array<double, 6>;

constexpr unsigned int SEEDS = 20;
constexpr double TIME_LIMIT = 20.0; ///< seconds; what takes longer counts as this

/// A search by sampling: RRTConnect in SE(3), states and motions judged by FCL's collision test.
class CSamplingPeer
{
public:
  /// @param i_penetration no motion is taken that goes through a contact deeper than this.
  CSamplingPeer(const PlanScene& i_scene, const PlanOptions& i_options, double i_penetration)
    : m_part(makeModel(*i_scene.part()))
  {
    for (const ClumMeshShPtr& obstacle : i_scene.obstacles())
      m_obstacles.push_back(makeModel(*obstacle));
    const auto space = std::make_shared<ompl::base::SE3StateSpace>();
    ompl::base::RealVectorBounds bounds(3);
    for (unsigned int axis = 0; axis < 3; ++axis)
    {
      bounds.setLow(axis, i_options.bounds[axis]);
      bounds.setHigh(axis, i_options.bounds[axis + 3]);
    }
    space->setBounds(bounds);
    setResolution(*space, i_penetration, i_scene.partRadius());

    m_setup = std::make_unique<ompl::geometric::SimpleSetup>(space);
    m_setup->setStateValidityChecker([this](const ompl::base::State* i_state) { return isFree(i_state); });
    const auto& information = m_setup->getSpaceInformation();
    information->setMotionValidator(std::make_shared<ompl::base::DiscreteMotionValidator>(information));
    m_setup->setStartAndGoalStates(makeState(space, i_options.start), makeState(space, i_options.goal));
    m_setup->setPlanner(std::make_shared<ompl::geometric::RRTConnect>(information));
  }

  /// @return the seconds that it took.
  double solve(bool& o_isSolved)
  {
    m_setup->setup();
    const auto begin = std::chrono::steady_clock::now();
    o_isSolved = m_setup->solve(TIME_LIMIT) == ompl::base::PlannerStatus::EXACT_SOLUTION;
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
  }

private:
  static std::shared_ptr<TFclModel> makeModel(const ClumMesh& i_mesh)
  {
    const auto model = std::make_shared<TFclModel>();
    std::vector<fcl::Vector3d> vertices;
    for (const ClumPoint3& vertex : i_mesh.vertices())
      vertices.emplace_back(vertex[0], vertex[1], vertex[2]);
    std::vector<fcl::Triangle> triangles;
    for (const auto& triangle : i_mesh.triangles())
      triangles.emplace_back(triangle[0], triangle[1], triangle[2]);
    model->beginModel();
    model->addSubModel(vertices, triangles);
    model->endModel();
    return model;
  }

  /// Between two samples a point of the part moves by at most twice the penetration, so that it is never farther than
  /// the penetration from where it stands at one of them. Half of that is for the translation, half for the turn, which
  /// the space measures as half the angle.
  static void setResolution(ompl::base::SE3StateSpace& io_space, double i_penetration, double i_radius)
  {
    const double steps[] = {i_penetration, 0.5 * i_penetration / i_radius};
    for (unsigned int part = 0; part < 2; ++part)
    {
      const ompl::base::StateSpacePtr& subspace = io_space.getSubspace(part);
      subspace->setLongestValidSegmentFraction(steps[part] / subspace->getMaximumExtent());
    }
  }

  static ompl::base::ScopedState<ompl::base::SE3StateSpace> makeState(const ompl::base::StateSpacePtr& i_space,
                                                                      const TPose& i_pose)
  {
    ompl::base::ScopedState<ompl::base::SE3StateSpace> state(i_space);
    state->setXYZ(i_pose[0], i_pose[1], i_pose[2]);
    const Eigen::Quaterniond turn = Eigen::AngleAxisd(i_pose[3], Eigen::Vector3d::UnitX()) *
                                    Eigen::AngleAxisd(i_pose[4], Eigen::Vector3d::UnitY()) *
                                    Eigen::AngleAxisd(i_pose[5], Eigen::Vector3d::UnitZ());
    state->rotation().x = turn.x();
    state->rotation().y = turn.y();
    state->rotation().z = turn.z();
    state->rotation().w = turn.w();
    return state;
  }

  bool isFree(const ompl::base::State* i_state)
  {
    const auto& pose = *i_state->as<ompl::base::SE3StateSpace::StateType>();
    if (!m_setup->getStateSpace()->satisfiesBounds(i_state))
      return false;
    const auto& turn = pose.rotation();
    fcl::Transform3d frame = fcl::Transform3d::Identity();
    frame.linear() = fcl::Quaterniond(turn.w, turn.x, turn.y, turn.z).toRotationMatrix();
    frame.translation() = fcl::Vector3d(pose.getX(), pose.getY(), pose.getZ());
    for (const std::shared_ptr<TFclModel>& obstacle : m_obstacles)
    {
      fcl::CollisionResultd result;
      if (fcl::collide(m_part.get(), frame, obstacle.get(), fcl::Transform3d::Identity(), fcl::CollisionRequestd(),
                       result) > 0)
        return false;
    }
    return true;
  }

  std::shared_ptr<TFclModel> m_part;
  std::vector<std::shared_ptr<TFclModel>> m_obstacles;
  std::unique_ptr<ompl::geometric::SimpleSetup> m_setup;
};

double median(std::vector<double> i_values)
{
  std::sort(i_values.begin(), i_values.end());
  const std::size_t half = i_values.size() / 2;
  return i_values.size() % 2 == 1 ? i_values[half] : 0.5 * (i_values[half - 1] + i_values[half]);
}

void reportSide(const std::string& i_what, const std::vector<double>& i_seconds, unsigned int i_solved)
{
  char text[96];
  std::snprintf(text, sizeof text, "%u of %u, %.3g s", i_solved, SEEDS, median(i_seconds));
  report(i_what, text);
}

/// Time to solve the window scene, seeds of the two sides alternating.
void benchmarkWindow()
{
  ompl::msg::setLogLevel(ompl::msg::LOG_NONE);
  ompl::RNG::setSeed(1);
  std::vector<double> own, peer;
  unsigned int ownSolved = 0, peerSolved = 0;
  for (unsigned int seed = 1; seed <= SEEDS; ++seed)
  {
    PlanOptions options = windowScene(seed);
    options.timeLimit = TIME_LIMIT;
    PlanScene scene;
    std::string error;
    if (!scene.load(options, error) || !scene.faultsOf(scene.start()).empty())
      return report("the window scene cannot be used", error);
    CorvUtility::randomSeed(seed);
    const SearchResult result = search(scene, options);
    own.push_back(result.isSolved ? result.planSeconds : TIME_LIMIT);
    ownSolved += result.isSolved;

    bool isSolved = false;
    CSamplingPeer sampling(scene, options, result.penetration);
    const double seconds = sampling.solve(isSolved);
    peer.push_back(isSolved ? seconds : TIME_LIMIT);
    peerSolved += isSolved;
  }
  reportSide("window scene, proved motions: seeds solved, median time", own, ownSolved);
  reportSide("window scene, RRTConnect with sampled motions: seeds solved, median time", peer, peerSolved);
  report("median time of RRTConnect with sampled motions / of proved motions", median(peer) / median(own), "above 1");
}

const Section s_window("window", benchmarkWindow);
} // namespace
