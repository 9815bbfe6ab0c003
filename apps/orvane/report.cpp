#include "report.h"

#include "picture.h"

#include "foundation/lumMesh.h"
#include "kinematics/orvDevice.h"
#include "paths/orvDirectPath.h"
#include "paths/orvPath.h"

#include <nlohmann/json.hpp>

#include <cstdarg>
#include <cmath>
#include <cstdio>

namespace
{
std::string line(const char* i_format, ...) __attribute__((format(printf, 1, 2)));

std::string line(const char* i_format, ...)
{
  char text[256];
  va_list arguments;
  va_start(arguments, i_format);
  std::vsnprintf(text, sizeof text, i_format, arguments);
  va_end(arguments);
  return text;
}

std::string tableRow(double i_distance, const CorvConfig& i_config, bool i_isWaypoint)
{
  std::string row = line("%.17g", i_distance);
  for (unsigned int rank = 0; rank < i_config.size(); ++rank)
    row += line(",%.17g", i_config.dofValue(rank));
  return row + (i_isWaypoint ? ",1\n" : ",0\n");
}
} // namespace

std::string resultText(const PlanOptions& i_options, const std::vector<std::string>& i_notes,
                       const SearchResult& i_result)
{
  std::string text;
  for (const std::string& note : i_notes)
    text += "note: " + note + "\n";
  text += i_result.isSolved ? "solved: yes" : "solved: no, " + i_result.ending;
  if (i_result.isSolved)
    text += i_result.penetration > 0.0 ? line(", proved to a penetration of %g", i_result.penetration)
                                       : std::string(", proved free of collision");
  text += "\n";
  text += line("chosen: penetration %g, random step %g, longest motion %g and in turn %g, seed %u\n",
               i_result.penetration, i_result.deviation, i_result.extension, i_result.farExtension, i_options.seed);
  text += line("times: loading %.3f s, planning %.3f s, optimising %.3f s\n", i_result.loadSeconds,
               i_result.planSeconds, i_result.optimizeSeconds);
  text += line("search: %u steps, %u nodes, %u edges\n", i_result.steps, i_result.nodes, i_result.edges);
  text += line("tested: %lu motions, %lu configurations, %llu collision queries\n", i_result.motionsTested,
               i_result.configsTested, static_cast<unsigned long long>(i_result.collisionQueries));
  if (i_result.isSolved)
    text += line("path length: %g found, %g returned\n", i_result.lengthBefore, i_result.lengthAfter);
  return text;
}

std::string resultJson(const PlanOptions& i_options, const std::vector<std::string>& i_notes,
                       const SearchResult& i_result)
{
  nlohmann::ordered_json json;
  json["solved"] = i_result.isSolved;
  if (!i_result.isSolved)
    json["ending"] = i_result.ending;
  json["seed"] = i_options.seed;
  json["penetration"] = i_result.penetration;
  json["randomStep"] = i_result.deviation;
  json["longestMotion"] = i_result.extension;
  json["longestFarMotion"] = i_result.farExtension;
  json["seconds"] = {
    {"loading", i_result.loadSeconds}, {"planning", i_result.planSeconds}, {"optimizing", i_result.optimizeSeconds}};
  json["steps"] = i_result.steps;
  json["nodes"] = i_result.nodes;
  json["edges"] = i_result.edges;
  json["motionsTested"] = i_result.motionsTested;
  json["configurationsTested"] = i_result.configsTested;
  json["collisionQueries"] = i_result.collisionQueries;
  if (i_result.isSolved)
    json["pathLength"] = {{"found", i_result.lengthBefore}, {"returned", i_result.lengthAfter}};
  json["notes"] = i_notes;
  // File names in the notes need not be UTF-8.
  return json.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

std::string pathTable(const CorvPath& i_path, double i_step)
{
  std::string table = "distance,x,y,z,rx,ry,rz,waypoint\n";
  double before = 0.0;
  CorvConfig config(i_path.configSpace());
  for (unsigned int rank = 0; rank < i_path.countConfigurations(); ++rank)
  {
    if (i_path.getConfiguration(rank, config).failed())
      continue;
    const double length = rank == 0 ? 0.0 : i_path.directPath(rank - 1)->length();
    const unsigned int pieces = length > 0.0 ? static_cast<unsigned int>(std::ceil(length / i_step)) : 0u;
    CorvConfig sample(i_path.configSpace());
    for (unsigned int piece = 1; piece < pieces; ++piece)
    {
      const double distance = length * piece / pieces;
      if (i_path.directPath(rank - 1)->getConfigAtDistance(distance, sample).succeeded())
        table += tableRow(before + distance, sample, false);
    }
    before += length;
    table += tableRow(before, config, true);
  }
  return table;
}

std::string scenePicture(const PlanScene& i_scene, const SearchResult& i_result)
{
  Picture picture;
  for (const ClumMeshShPtr& obstacle : i_scene.obstacles())
    picture.addObstacle(*obstacle, ClumMat4());
  std::vector<ClumMat4> poses;
  const auto poseOf = [&](const CorvConfig& i_config)
  { return i_scene.device()->computeBodyPositions(i_config, poses).succeeded() && !poses.empty(); };
  if (!i_result.isSolved)
  {
    if (poseOf(i_scene.start()))
      picture.addPose(*i_scene.part(), poses[0], 0.0);
    if (poseOf(i_scene.goal()))
      picture.addPose(*i_scene.part(), poses[0], 1.0);
    return picture.svg();
  }
  const int poseCount = 7, trackCount = 120;
  CorvConfig config(i_scene.space());
  for (int i = 0; i <= trackCount; ++i)
  {
    const double along = static_cast<double>(i) / trackCount;
    if (i_result.path->getConfigAtParam(along, config).failed() || !poseOf(config))
      continue;
    picture.addTrackPoint(poses[0]);
    if (i % (trackCount / (poseCount - 1)) == 0)
      picture.addPose(*i_scene.part(), poses[0], along);
  }
  return picture.svg();
}
