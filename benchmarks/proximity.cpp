#include "harness.h"

#include "foundation/lumCollisionModel.h"
#include "foundation/lumMat4.h"
#include "foundation/lumMath.h"
#include "foundation/lumProximityCollisionToolkit.h"
#include "foundation/lumProximityModel.h"
#include "support/meshes.h"

#include <fcl/geometry/bvh/BVH_model.h>
#include <fcl/narrowphase/collision.h>
#include <fcl/narrowphase/distance.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>
#include <map>
#include <memory>
#include <random>

// The proximity kernel against FCL's own queries, each on the bounding volume that suits it best there.

namespace
{
constexpr double INFINITE = std::numeric_limits<double>::infinity();
/// Of a round of measurement in the tables, in seconds: there are many cells.
constexpr double ROUND = 3e-4;
constexpr int ROUNDS = 16;
constexpr double MOTION_ACCURACY = 0.2;

class Dice
{
public:
  explicit Dice(unsigned int i_seed) : m_engine(i_seed) {}
  double operator()(double i_low, double i_high) { return i_low + (i_high - i_low) * (m_engine() / 4294967296.0); }
  ClumVect3 vector()
  {
    const double x = (*this)(-1.0, 1.0), y = (*this)(-1.0, 1.0);
    return ClumVect3(x, y, (*this)(-1.0, 1.0));
  }
  ClumMat4 turn()
  {
    ClumMat4 frame;
    const ClumVect3 axis = vector();
    frame.rotate(axis, (*this)(-3.1, 3.1));
    return frame;
  }

private:
  std::mt19937 m_engine;
};

fcl::Transform3d toFcl(const ClumMat4& i_pose)
{
  fcl::Transform3d frame = fcl::Transform3d::Identity();
  for (int r = 0; r < 3; ++r)
  {
    for (int c = 0; c < 3; ++c)
      frame.linear()(r, c) = i_pose(r, c);
    frame.translation()[r] = i_pose(r, 3);
  }
  return frame;
}

template <class VOLUME>
std::shared_ptr<fcl::BVHModel<VOLUME>> fclModel(const ClumMesh& i_mesh)
{
  std::vector<fcl::Vector3d> vertices;
  for (const ClumPoint3& vertex : i_mesh.vertices())
    vertices.emplace_back(vertex.x(), vertex.y(), vertex.z());
  std::vector<fcl::Triangle> triangles;
  for (const ClumMesh::TTriangle& triangle : i_mesh.triangles())
    triangles.emplace_back(triangle[0], triangle[1], triangle[2]);
  const auto model = std::make_shared<fcl::BVHModel<VOLUME>>();
  model->beginModel();
  model->addSubModel(vertices, triangles);
  model->endModel();
  return model;
}

/// A mesh as both sides keep it.
struct Body
{
  std::string name;
  ClumMeshShPtr mesh;
  ClumCollisionModelConstShPtr model;
  std::shared_ptr<fcl::BVHModel<fcl::RSSd>> balls;
  std::shared_ptr<fcl::BVHModel<fcl::OBBd>> boxes;

  Body(const std::string& i_name, const ClumMeshShPtr& i_mesh)
    : name(i_name), mesh(i_mesh), model(i_mesh->collisionModel(*toolkit())), balls(fclModel<fcl::RSSd>(*i_mesh)),
      boxes(fclModel<fcl::OBBd>(*i_mesh))
  {
  }

  static const ClumProximityCollisionToolkitShPtr& toolkit()
  {
    static const ClumProximityCollisionToolkitShPtr s_toolkit = ClumProximityCollisionToolkit::create();
    return s_toolkit;
  }
};

/// Two placed bodies, and the questions as each side is asked them.
struct Placed
{
  const Body* a;
  const Body* b;
  ClumMat4 poseA;
  ClumMat4 poseB;
  double distance = 0.0;

  ClumDistanceResult ask(double i_cap = INFINITE, double i_accuracy = 0.0,
                         const ClumDistanceResult* i_hint = nullptr) const
  {
    return Body::toolkit()->boundedDistance(*a->model, poseA, *b->model, poseB, i_cap, i_accuracy, 0.0, i_hint);
  }
  bool touches() const { return Body::toolkit()->areTouching(*a->model, poseA, *b->model, poseB); }

  double askFcl(double i_cap = INFINITE, double i_accuracy = 0.0) const
  {
    fcl::DistanceRequestd request(true);
    if (i_accuracy > 0.0)
    {
      request.rel_err = i_accuracy;
      request.abs_err = 1e30;
    }
    fcl::DistanceResultd result;
    result.min_distance = std::min(i_cap, std::numeric_limits<double>::max());
    fcl::distance(a->balls.get(), toFcl(poseA), b->balls.get(), toFcl(poseB), request, result);
    return result.min_distance;
  }
  bool touchesFcl() const
  {
    const fcl::CollisionRequestd request;
    fcl::CollisionResultd result;
    return fcl::collide(a->boxes.get(), toFcl(poseA), b->boxes.get(), toFcl(poseB), request, result) > 0;
  }
};

// Meshes.

/// A square bar along x, turned once along its length.
ClumMeshShPtr twistedBar(unsigned int i_triangles)
{
  const ClumMeshShPtr straight = refined(*longBar(3.0, 0.3), i_triangles / 2);
  std::vector<ClumPoint3> vertices;
  for (const ClumPoint3& p : straight->vertices())
  {
    double sine = 0.0, cosine = 0.0;
    lumSinCos(2.0 * p.x(), sine, cosine);
    vertices.emplace_back(p.x(), p.y() * cosine - p.z() * sine, p.y() * sine + p.z() * cosine);
  }
  return ClumMesh::create(vertices, straight->triangles());
}

std::vector<Body> movers(unsigned int i_triangles)
{
  const unsigned int segments = static_cast<unsigned int>(std::sqrt(i_triangles / 2.0)) + 1;
  const unsigned int around = std::max(4u, static_cast<unsigned int>(std::sqrt(i_triangles / 16.0)));
  std::vector<Body> bodies;
  bodies.emplace_back("sphere", sphereMesh(1.0, segments));
  bodies.emplace_back("knot", torusKnot(2, 3, 1.0, 0.15, i_triangles / 2 / around, around));
  bodies.emplace_back("bar", twistedBar(i_triangles));
  bodies.emplace_back("L", refined(*lPart(2.0, 1.5, 0.4), i_triangles / 2));
  return bodies;
}

// Places.

/// Moves a towards b along a random line until it is as far from it as asked. @return false if it passes by.
bool approach(Dice& io_dice, double i_target, Placed& io_placed)
{
  const double size = io_placed.a->model->radius() + io_placed.b->model->radius();
  const ClumVect3 line = io_dice.vector().normalized();
  io_placed.poseA = io_dice.turn();
  io_placed.poseB = io_dice.turn();
  double along = 2.5 * size;
  for (int step = 0; step < 200 && along > -3.0 * size; ++step)
  {
    io_placed.poseA.setTranslation(line * along);
    io_placed.distance = io_placed.ask().lower;
    if (std::fabs(io_placed.distance - i_target) < 1e-3 * i_target)
      return true;
    along -= io_placed.distance - i_target;
  }
  return false;
}

bool collide(Dice& io_dice, Placed& io_placed)
{
  const double size = io_placed.a->model->radius() + io_placed.b->model->radius();
  io_placed.poseA = io_dice.turn();
  io_placed.poseB = io_dice.turn();
  io_placed.poseA.setTranslation(io_dice.vector().normalized() * (io_dice(0.2, 0.7) * size));
  return io_placed.touches();
}

/// @param i_clearance in parts of the pair's size; negative for a collision.
std::vector<Placed> places(Dice& io_dice, const Body& i_a, const Body& i_b, double i_clearance)
{
  const double size = i_a.model->radius() + i_b.model->radius();
  std::vector<Placed> found;
  for (int attempt = 0; attempt < 200 && found.size() < 5; ++attempt)
  {
    Placed placed = {&i_a, &i_b, ClumMat4(), ClumMat4(), 0.0};
    if (i_clearance < 0.0 ? collide(io_dice, placed) : approach(io_dice, std::max(i_clearance, 1e-6) * size, placed))
      found.push_back(placed);
  }
  return found;
}

// Tables.

/// Geometric means of ratios, by what they are about.
class Means
{
public:
  void add(const std::string& i_what, double i_ratio, const std::string& i_cell)
  {
    Entry& entry = m_entries[i_what];
    entry.sum += std::log(i_ratio);
    ++entry.count;
    if (i_ratio < entry.least)
    {
      entry.least = i_ratio;
      entry.cell = i_cell;
    }
  }
  void write(const std::string& i_what, const std::string& i_target, bool i_hasLeast = true)
  {
    const Entry& entry = m_entries[i_what];
    if (entry.count == 0)
      return;
    report(i_what + " (" + std::to_string(entry.count) + " cells)", std::exp(entry.sum / entry.count), i_target);
    if (i_hasLeast)
      report("    the least, " + entry.cell, entry.least, "at least 1");
  }

private:
  struct Entry
  {
    double sum = 0.0;
    int count = 0;
    double least = INFINITE;
    std::string cell;
  };
  std::map<std::string, Entry> m_entries;
};

/// Seconds for one execution, of the quickest of some rounds that take turns: there are many cells, so rounds are
/// short, and a round in which the machine did something else must not count.
template <class FIRST, class SECOND>
double quickestRatio(FIRST i_first, SECOND i_second)
{
  const auto seconds = [](const auto& i_work, unsigned int i_count)
  {
    const auto begin = std::chrono::steady_clock::now();
    for (unsigned int i = 0; i < i_count; ++i)
      i_work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count() / i_count;
  };
  const auto countFor = [&](const auto& i_work)
  {
    const double once = std::min(seconds(i_work, 1), seconds(i_work, 1));
    return std::max(1u, static_cast<unsigned int>(ROUND / std::max(once, 1e-8)));
  };
  const unsigned int firstCount = countFor(i_first), secondCount = countFor(i_second);
  double first = INFINITE, second = INFINITE;
  for (int round = 0; round < ROUNDS; ++round)
  {
    first = std::min(first, seconds(i_first, firstCount));
    second = std::min(second, seconds(i_second, secondCount));
  }
  return first / second;
}

template <class FIRST, class SECOND>
double ratioOver(const std::vector<Placed>& i_places, FIRST i_first, SECOND i_second)
{
  return quickestRatio(
    [&]
    {
      for (const Placed& placed : i_places)
        keep(i_first(placed));
    },
    [&]
    {
      for (const Placed& placed : i_places)
        keep(i_second(placed));
    });
}

void measureCell(const std::vector<Placed>& i_places, double i_clearance, const std::string& i_cell, Means& io_means)
{
  const std::string band = i_clearance < 0.0    ? "colliding"
                           : i_clearance < 0.05 ? "to 1 % clearance"
                           : i_clearance < 0.2  ? "10 % clearance"
                                                : "50 % clearance";
  const auto add = [&](const char* i_query, double i_ratio) { io_means.add(band + ", " + i_query, i_ratio, i_cell); };
  add("yes/no",
      ratioOver(
        i_places, [](const Placed& p) { return p.touchesFcl(); }, [](const Placed& p) { return p.touches(); }));
  add("distance",
      ratioOver(
        i_places, [](const Placed& p) { return p.askFcl(); }, [](const Placed& p) { return p.ask().lower; }));
  if (i_clearance < 0.0)
    return;
  add("bounded", ratioOver(
                   i_places, [](const Placed& p) { return p.askFcl(0.9 * p.distance); },
                   [](const Placed& p) { return p.ask(0.9 * p.distance).lower; }));
  std::vector<ClumDistanceResult> hints;
  for (const Placed& placed : i_places)
    hints.push_back(placed.ask());
  io_means.add("with a good hint / without, distance",
               ratioOver(
                 i_places, [&](const Placed& p) { return p.ask(INFINITE, 0.0, &hints[&p - i_places.data()]).lower; },
                 [](const Placed& p) { return p.ask().lower; }),
               i_cell);
}

void measureSizes(const std::vector<unsigned int>& i_sizes, double i_share)
{
  const Body wall("wall", wallWithWindow(4.0, 0.2, 1.2, 1.2)), boxes("boxes", clutter(5, 200, 6.0));
  Means means;
  Dice dice(11);
  for (const unsigned int size : i_sizes)
  {
    const std::vector<Body> bodies = movers(size);
    for (const Body& a : bodies)
      for (const Body* b : {&a, &wall, &boxes})
        for (const double clearance : {-1.0, 0.0, 0.001, 0.01, 0.1, 0.5})
        {
          const std::vector<Placed> found = places(dice, a, *b, clearance);
          char cell[80];
          std::snprintf(cell, sizeof cell, "%s of %zu, %s, %g", a.name.c_str(), a.mesh->triangles().size(),
                        b->name.c_str(), clearance);
          if (found.size() >= 3)
            measureCell(found, clearance, cell, means);
        }
  }
  const auto target = [&](double i_full)
  {
    char text[40];
    std::snprintf(text, sizeof text, "at least %g", i_full * i_share);
    return std::string(text);
  };
  means.write("to 1 % clearance, yes/no", target(15.0));
  means.write("to 1 % clearance, distance", target(10.0));
  means.write("to 1 % clearance, bounded", target(12.0));
  means.write("colliding, yes/no", target(20.0));
  means.write("colliding, distance", target(20.0));
  means.write("10 % clearance, yes/no", "at least 1");
  means.write("10 % clearance, distance", target(7.0));
  means.write("10 % clearance, bounded", "at least 1");
  means.write("50 % clearance, yes/no", "at least 1");
  means.write("50 % clearance, distance", "at least 1");
  means.write("50 % clearance, bounded", "at least 1");
  means.write("with a good hint / without, distance", "at most 0.8", false);
}

// Motions.

/// A straight way with a steady turn about the body's centre.
struct Motion
{
  ClumMat4 start;
  ClumVect3 shift;
  ClumVect3 axis;
  double angle;
  double reach; ///< the farthest that a point of the body moves

  ClumMat4 at(double i_share) const
  {
    ClumMat4 turn;
    turn.rotate(axis, angle * i_share);
    ClumMat4 frame = start;
    frame.setTranslation(ClumVect3());
    frame = turn * frame;
    frame.setTranslation(start.translation() + shift * i_share);
    return frame;
  }
};

/// Halves the way until the distance in the middle of each part covers it. @return the queries made.
template <class ASK>
unsigned int prove(const Motion& i_motion, Placed& io_placed, double i_from, double i_to, ASK i_ask, bool& io_isFree)
{
  io_placed.poseA = i_motion.at(0.5 * (i_from + i_to));
  const double needed = 0.5 * (i_to - i_from) * i_motion.reach;
  const double lower = i_ask(io_placed, needed);
  io_isFree = lower > 0.0 && i_to - i_from > 1e-4;
  if (lower >= needed || !io_isFree)
    return 1;
  const double middle = 0.5 * (i_from + i_to);
  const unsigned int first = prove(i_motion, io_placed, i_from, middle, i_ask, io_isFree);
  return io_isFree ? 1 + first + prove(i_motion, io_placed, middle, i_to, i_ask, io_isFree) : 1 + first;
}

double askKernel(const Placed& i_placed, double i_cap)
{
  return i_placed.ask(i_cap, MOTION_ACCURACY).lower;
}

double askFclBounded(const Placed& i_placed, double i_cap)
{
  return i_placed.askFcl(i_cap, MOTION_ACCURACY);
}

void measureMotions()
{
  const Body wall("wall", wallWithWindow(4.0, 0.2, 1.2, 1.2)), boxes("boxes", clutter(5, 200, 6.0));
  Means means;
  Dice dice(13);
  const std::vector<Body> bodies = movers(5000);
  for (const Body& a : bodies)
    for (const Body* b : {&a, &wall, &boxes})
    {
      const double size = a.model->radius() + b->model->radius();
      std::vector<Motion> motions;
      for (int n = 0; n < 100; ++n)
      {
        Motion motion = {dice.turn(), dice.vector() * (0.5 * size), dice.vector(), dice(-1.0, 1.0), 0.0};
        motion.start.setTranslation(dice.vector().normalized() * (dice(0.5, 1.0) * size));
        const double lever = a.model->center().toVect3().norm() + a.model->radius();
        motion.reach = motion.shift.norm() + std::fabs(motion.angle) * lever;
        motions.push_back(motion);
      }
      Placed placed = {&a, b, ClumMat4(), ClumMat4(), 0.0};
      const auto all = [&](double (*i_ask)(const Placed&, double))
      {
        unsigned int queries = 0;
        for (const Motion& motion : motions)
        {
          bool isFree = true;
          queries += prove(motion, placed, 0.0, 1.0, i_ask, isFree);
        }
        return queries;
      };
      means.add("100 motions by bisection, time of FCL / of the kernel",
                quickestRatio([&] { keep(all(&askFclBounded)); }, [&] { keep(all(&askKernel)); }),
                a.name + ", " + b->name);
    }
  means.write("100 motions by bisection, time of FCL / of the kernel", "at least 10");
}

// Building.

void measureBuilding()
{
  for (const unsigned int size : {500u, 5000u, 50000u})
    for (const Body& body : movers(size))
    {
      ClumSweptTriangles shape;
      body.mesh->getSweptTriangles(shape);
      const double ratio = quickestRatio([&] { keep(CProximityModel::create(shape)); },
                                         [&] { keep(fclModel<fcl::RSSd>(*body.mesh)); });
      const auto& model = static_cast<const CProximityModel&>(*body.model);
      const std::string name = body.name + " of " + std::to_string(shape.triangles.size());
      report("building, time of the kernel / of FCL's tree for distances, " + name, ratio, "at most 1");
      report("bytes a triangle, " + name, static_cast<double>(model.countBytes()) / shape.triangles.size(),
             "at most 250");
    }
}

void benchmarkProximity()
{
  const CProximityKernel& fastest = lumProximityKernel();
  report("time of FCL / of the kernel, with", fastest.name);
  measureSizes({500, 5000, 50000}, 1.0);
  measureMotions();
  measureBuilding();
  for (const CProximityKernel* kernel : lumProximityKernels())
  {
    if (kernel == &fastest)
      continue;
    lumUseProximityKernel(*kernel);
    report("time of FCL / of the kernel, with", kernel->name);
    measureSizes({5000}, std::string(kernel->name) == "portable" ? 0.0 : 0.5);
  }
  lumUseProximityKernel(fastest);
}

const Section s_proximity("proximity", benchmarkProximity);
} // namespace
