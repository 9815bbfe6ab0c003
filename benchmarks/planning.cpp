#include "harness.h"
#include "meshArm.h"
#include "scene.h"
#include "search.h"
#include "timedToolkit.h"
#include "windowScene.h"

#include "support/meshes.h"

#include "foundation/lumFCLCollisionToolkit.h"
#include "foundation/lumMesh.h"
#include "foundation/lumMeshReader.h"
#include "foundation/lumProximityCollisionToolkit.h"
#include "kinematics/orvDevice.h"
#include "kinematics/orvUtility.h"
#include "validation/orvValidatorDPCollision.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <vector>

#include <unistd.h>

namespace
{
struct Searches
{
  double planSeconds = 0.0;
  double querySeconds = 0.0;
  double motions = 0.0;
  double queries = 0.0;
};

/// Writes a mesh file with what is in another, refined.
bool writeFine(const std::string& i_file, const std::string& i_fineFile)
{
  ClumMeshReader::CResult read;
  if (ClumMeshReader::read(i_file, read).failed())
    return false;
  const ClumMeshShPtr mesh = refined(*read.mesh, FINE);
  std::ofstream out(i_fineFile);
  out.precision(9);
  for (const ClumPoint3& vertex : mesh->vertices())
    out << "v " << vertex.x() << ' ' << vertex.y() << ' ' << vertex.z() << '\n';
  for (const ClumMesh::TTriangle& ranks : mesh->triangles())
    out << "f " << ranks[0] + 1 << ' ' << ranks[1] + 1 << ' ' << ranks[2] + 1 << '\n';
  return static_cast<bool>(out);
}

/// The window scene with obstacles as fine as the part, in files of their own for as long as it lives.
class FineScene
{
public:
  FineScene()
  {
    const std::filesystem::path folder = std::filesystem::temp_directory_path();
    for (const std::string& file : windowScene(1).obstacles)
    {
      const std::string name =
        "orvane-fine-" + std::to_string(getpid()) + '-' + std::to_string(m_files.size()) + ".obj";
      m_files.push_back((folder / name).string());
      if (!writeFine(file, m_files.back()))
        report("an obstacle cannot be made fine", file);
    }
  }
  ~FineScene()
  {
    for (const std::string& file : m_files)
      std::remove(file.c_str());
  }
  const std::vector<std::string>& files() const { return m_files; }

private:
  std::vector<std::string> m_files;
};

/// Searches in the window scene with one toolkit: a fixed number of steps at most for each of some seeds.
/// @param i_obstacles files that take the place of the scene's own; empty for those.
Searches searchWith(const ClumCollisionToolkitShPtr& i_toolkit, const std::vector<std::string>& i_obstacles)
{
  Searches sum;
  const unsigned long motionsBefore = CorvValidatorDPCollision::countTests();
  for (unsigned int seed = 1; seed <= 20; ++seed)
  {
    PlanOptions options = windowScene(seed);
    options.maxSteps = 1000;
    if (!i_obstacles.empty())
      options.obstacles = i_obstacles;
    PlanScene scene;
    std::string error;
    if (!scene.load(options, error))
    {
      report("the window scene cannot be loaded", error);
      return sum;
    }
    const CTimedToolkitShPtr toolkit = CTimedToolkit::create(i_toolkit);
    scene.device()->collisionToolkit(toolkit);
    bool isColliding = false;
    scene.start().isColliding(isColliding); // makes the models
    const double warmUp = toolkit->seconds();
    CorvUtility::randomSeed(seed);
    const SearchResult result = search(scene, options);
    sum.planSeconds += result.planSeconds;
    sum.querySeconds += toolkit->seconds() - warmUp;
    sum.queries += static_cast<double>(result.collisionQueries);
  }
  sum.motions = static_cast<double>(CorvValidatorDPCollision::countTests() - motionsBefore);
  return sum;
}

void reportSearches(const std::string& i_name, const Searches& i_searches)
{
  report("time in collision queries / time of the search, " + i_name, i_searches.querySeconds / i_searches.planSeconds,
         "at least 0.9");
  char text[64];
  std::snprintf(text, sizeof text, "%.3g", i_searches.queries / i_searches.motions);
  report("  collision queries for a motion tested", text);
}

/// A search with an arm whose six links, and the boards of the shelf it reaches into, are meshes of 5,000 triangles.
Searches searchWithArm(const ClumCollisionToolkitShPtr& i_toolkit)
{
  Searches sum;
  const unsigned long motionsBefore = CorvValidatorDPCollision::countTests();
  for (unsigned int seed = 1; seed <= 5; ++seed)
  {
    const CTimedToolkitShPtr toolkit = CTimedToolkit::create(i_toolkit);
    const CorvDeviceShPtr arm = meshArmAtShelf();
    arm->collisionToolkit(toolkit);
    CorvUtility::randomSeed(seed);
    const std::uint64_t queriesBefore = toolkit->countQueries();
    const double secondsBefore = toolkit->seconds();
    sum.planSeconds += planMeshArm(arm, 300);
    sum.querySeconds += toolkit->seconds() - secondsBefore;
    sum.queries += static_cast<double>(toolkit->countQueries() - queriesBefore);
  }
  sum.motions = static_cast<double>(CorvValidatorDPCollision::countTests() - motionsBefore);
  return sum;
}

/// Two toolkits do not give the same distances, so the searches differ; what is compared is the time for a motion.
void compareSearches(const Searches& i_fcl, const Searches& i_own)
{
  reportSearches("FCL", i_fcl);
  reportSearches("own kernel", i_own);
  report("time for a motion tested, FCL / own kernel: in queries",
         i_fcl.querySeconds / i_fcl.motions / (i_own.querySeconds / i_own.motions), "told");
  report("  in all", i_fcl.planSeconds / i_fcl.motions / (i_own.planSeconds / i_own.motions), "told");
  report("  beside queries",
         (i_fcl.planSeconds - i_fcl.querySeconds) / i_fcl.motions /
           ((i_own.planSeconds - i_own.querySeconds) / i_own.motions),
         "1: the same work");
}

void benchmarkPlanning()
{
  const ClumCollisionToolkitShPtr fcl = ClumFCLCollisionToolkit::create();
  const ClumCollisionToolkitShPtr own = ClumProximityCollisionToolkit::create();
  compareSearches(searchWith(fcl, {}), searchWith(own, {}));
  report("with obstacles of 5,000 triangles and more", "");
  const FineScene fine;
  compareSearches(searchWith(fcl, fine.files()), searchWith(own, fine.files()));
  report("a six-axis arm of meshes at a shelf of meshes", "");
  compareSearches(searchWithArm(fcl), searchWithArm(own));
}

const Section s_planning("planning", benchmarkPlanning);
} // namespace
