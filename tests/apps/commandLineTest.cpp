#include "foundation/lumMat4.h"
#include "foundation/lumPoint3.h"
#include "support/meshes.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <sys/wait.h>
#include <unistd.h>

namespace
{
using TOptions = std::vector<std::pair<std::string, std::string>>;

struct Outcome
{
  int code = -1; ///< negative: the signal that ended the program
  std::string out;
  std::string err;
};

std::string contentOf(const std::string& i_path)
{
  std::ostringstream content;
  content << std::ifstream(i_path, std::ios::binary).rdbuf();
  return content.str();
}

void writeText(const std::string& i_path, const std::string& i_text)
{
  std::ofstream(i_path, std::ios::binary) << i_text;
}

void writeMesh(const std::string& i_path, const ClumMesh& i_mesh, const std::string& i_more = std::string())
{
  std::ostringstream text;
  text.precision(9);
  for (const ClumPoint3& vertex : i_mesh.vertices())
    text << "v " << vertex[0] << ' ' << vertex[1] << ' ' << vertex[2] << '\n';
  for (const ClumMesh::TTriangle& triangle : i_mesh.triangles())
    text << "f " << triangle[0] + 1 << ' ' << triangle[1] + 1 << ' ' << triangle[2] + 1 << '\n';
  writeText(i_path, text.str() + i_more);
}

struct Row
{
  double distance = 0.0;
  std::array<double, 6> pose{};
  int isWaypoint = -1;
};

std::vector<Row> rowsOf(const std::string& i_table)
{
  std::istringstream lines(i_table);
  std::string line;
  std::getline(lines, line);
  EXPECT_EQ(line, "distance,x,y,z,rx,ry,rz,waypoint");
  std::vector<Row> rows;
  while (std::getline(lines, line))
  {
    Row row;
    double* const pose = row.pose.data();
    int used = 0;
    EXPECT_EQ(std::sscanf(line.c_str(), "%lf,%lf,%lf,%lf,%lf,%lf,%lf,%d%n", &row.distance, pose, pose + 1, pose + 2,
                          pose + 3, pose + 4, pose + 5, &row.isWaypoint, &used),
              8)
      << line;
    EXPECT_EQ(static_cast<std::size_t>(used), line.size()) << line;
    rows.push_back(row);
  }
  return rows;
}

/// A point at a pose: the translation after Rx(rx)·Ry(ry)·Rz(rz).
std::array<double, 3> placed(const std::array<double, 6>& i_pose, const std::array<double, 3>& i_point)
{
  std::array<double, 3> p = i_point;
  for (int axis = 2; axis >= 0; --axis)
  {
    const double c = std::cos(i_pose[3 + axis]), s = std::sin(i_pose[3 + axis]);
    const int u = (axis + 1) % 3, v = (axis + 2) % 3;
    const double a = p[u], b = p[v];
    p[u] = c * a - s * b;
    p[v] = s * a + c * b;
  }
  return {p[0] + i_pose[0], p[1] + i_pose[1], p[2] + i_pose[2]};
}

/// A folder of meshes, in which the program runs: a part of 1 x 0.5 x 0.5, a wall that it can go around, and one that
/// fills the bounds.
class CommandLine : public testing::Test
{
protected:
  void SetUp() override
  {
    std::string name = (std::filesystem::temp_directory_path() / "orvane.XXXXXX").string();
    ASSERT_NE(mkdtemp(name.data()), nullptr);
    folder = name + "/";
    writeMesh(folder + "part.obj", *boxMesh(1.0, 0.5, 0.5));
    writeMesh(folder + "wall.obj", *boxMesh(0.5, 6.0, 6.0));
    writeMesh(folder + "closed.obj", *boxMesh(0.5, 12.0, 12.0));
    writeText(folder + "kept.csv", "what was there");
  }
  void TearDown() override { std::filesystem::remove_all(folder); }

  /// Starts the program in the folder, its output going to files there.
  pid_t start(const std::vector<std::string>& i_arguments) const
  {
    std::vector<char*> arguments = {const_cast<char*>("orvane")};
    for (const std::string& argument : i_arguments)
      arguments.push_back(const_cast<char*>(argument.c_str()));
    arguments.push_back(nullptr);
    const pid_t child = fork();
    if (child != 0)
      return child;
    if (chdir(folder.c_str()) == 0 && std::freopen("stdout.txt", "wb", stdout) &&
        std::freopen("stderr.txt", "wb", stderr))
      execv(ORVANE_CLI, arguments.data());
    _exit(127);
  }

  Outcome finish(pid_t i_child) const
  {
    int status = 0;
    EXPECT_EQ(waitpid(i_child, &status, 0), i_child);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status), contentOf(folder + "stdout.txt"),
            contentOf(folder + "stderr.txt")};
  }

  Outcome run(const std::vector<std::string>& i_arguments) const { return finish(start(i_arguments)); }

  /// A request that has a solution around the wall, with some options replaced or added. An option whose value is "-"
  /// is left out, a value "+" stands for none.
  static std::vector<std::string> request(const TOptions& i_changes = {})
  {
    TOptions options = {{"--part", "part.obj"},       {"--obstacles", "wall.obj"},    {"--start", "-2 0 0 0 0 0"},
                        {"--goal", "2 0.5 0 1 0 -1"}, {"--bounds", "-5 -5 -5 5 5 5"}, {"--max-steps", "20000"},
                        {"--deviation", "3"}};
    for (const auto& change : i_changes)
    {
      const auto known = std::find_if(options.begin(), options.end(),
                                      [&](const auto& i_option) { return i_option.first == change.first; });
      if (known == options.end())
        options.push_back(change);
      else
        known->second = change.second;
    }
    std::vector<std::string> arguments = {"plan"};
    for (const auto& [name, value] : options)
    {
      if (value != "-")
        arguments.push_back(name);
      if (value != "-" && value != "+")
        arguments.push_back(value);
    }
    return arguments;
  }

  std::string tableFor(const TOptions& i_changes) const
  {
    TOptions changes = i_changes;
    changes.emplace_back("--out", "table.csv");
    const Outcome outcome = run(request(changes));
    EXPECT_EQ(outcome.code, 0) << outcome.err;
    return contentOf(folder + "table.csv");
  }

  std::string folder;
};
} // namespace

TEST_F(CommandLine, TellsBadInputInOneLineAndTouchesNothing)
{
  writeText(folder + "nan.obj", "v nan 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
  writeText(folder + "flat.obj", "v 0 0 0\nv 1 0 0\nv 2 0 0\nf 1 2 3\n");
  writeText(folder + "range.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 9\n");
  writeText(folder + "empty.stl", "");
  writeText(folder + "text.stl", std::string(500, 'x') + "\n");
  writeText(folder + "text.txt", "no mesh\n");
  writeText(folder + "two\nlines.obj", "");
  writeText(folder + "open.args", "--seed \"1\n");
  std::filesystem::create_directory(folder + "folder.obj");
  const std::vector<std::pair<TOptions, std::string>> cases = {
    {{{"--part", "none.obj"}}, "none.obj"},
    {{{"--obstacles", "none.obj"}}, "none.obj"},
    {{{"--part", "nan.obj"}}, "not finite"},
    {{{"--obstacles", "flat.obj"}}, "no triangle with an area"},
    {{{"--part", "range.obj"}}, "range.obj"},
    {{{"--part", "empty.stl"}}, "empty.stl"},
    {{{"--obstacles", "text.stl"}}, "text.stl"},
    {{{"--obstacles", "text.txt"}}, "not a mesh"},
    {{{"--part", "two\nlines.obj"}}, "lines.obj"},
    {{{"--part", "folder.obj"}}, "folder.obj"},
    {{{"--part", "-"}}, "--part is required"},
    {{{"--start", "1 2 3 4 5"}}, "got 5"},
    {{{"--start", ""}}, "--start: expected six numbers"},
    {{{"--goal", "1 2 3 4 5 nan"}}, "'nan'"},
    {{{"--goal", "a 2 3 4 5 6"}}, "'a'"},
    {{{"--goal", "-"}}, "--goal is required"},
    {{{"--start", "-9 0 0 0 0 0"}}, "outside the bounds"},
    {{{"--start", "-2 0 0 1e20 0 0"}}, "radians"},
    {{{"--bounds", "5 -5 -5 -5 5 5"}}, "exceeds"},
    {{{"--bounds", "-1e308 -5 -5 1e308 5 5"}}, "too large"},
    {{{"--penetration", "-1"}}, "--penetration"},
    {{{"--penetration", "nan"}}, "--penetration"},
    {{{"--seed", "1.5"}}, "--seed"},
    {{{"--seed", "99999999999"}}, "--seed"},
    {{{"--max-steps", "-5"}}, "--max-steps"},
    {{{"--time-limit", "0"}}, "--time-limit"},
    {{{"--sample-step", "nan"}}, "--sample-step"},
    {{{"--deviation", "inf"}}, "--deviation"},
    {{{"--bogus", "+"}}, "--bogus"},
    {{{"surplus", "+"}}, "surplus"},
    {{{"@none.args", "+"}}, "none.args"},
    {{{"@open.args", "+"}}, "quote"},
    {{{"--out", "nowhere/table.csv"}}, "nowhere"},
    {{{"--out", "folder.obj"}}, "folder.obj"},
    {{{"--out", ""}}, "--out"},
    {{{"--out", "./part.obj"}}, "overwrite"},
    {{{"--svg", "nowhere/picture.svg"}}, "nowhere"},
    {{{"--svg", "kept.csv"}}, "same file"},
  };
  for (const auto& [changes, fragment] : cases)
  {
    SCOPED_TRACE(changes[0].first + " " + changes[0].second);
    TOptions options = {{"--out", "kept.csv"}, {"--json", "+"}};
    options.insert(options.end(), changes.begin(), changes.end());
    const Outcome outcome = run(request(options));
    EXPECT_EQ(outcome.code, 2);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err.rfind("orvane: ", 0), 0u) << outcome.err;
    EXPECT_NE(outcome.err.find(fragment), std::string::npos) << outcome.err;
    EXPECT_EQ(outcome.err.find('\n'), outcome.err.size() - 1) << outcome.err;
    EXPECT_EQ(contentOf(folder + "kept.csv"), "what was there");
  }
  for (const auto& entry : std::filesystem::directory_iterator(folder))
    EXPECT_NE(entry.path().extension(), ".part") << entry.path();
  EXPECT_EQ(run({}).code, 2);
  EXPECT_EQ(run({"--help"}).code, 0);
}

TEST_F(CommandLine, NamesTheObstaclesThatAnEndTouches)
{
  ClumMat4 frame;
  frame.translate(0.0, 4.5, 4.5);
  writeMesh(folder + "far.obj", *moved(*boxMesh(1.0, 1.0, 1.0), frame));
  frame.translate(2.0, 0.5, 0.0);
  writeMesh(folder + "around.obj", *moved(*boxMesh(2.0, 2.0, 2.0), frame));
  std::vector<std::string> arguments = request({{"--start", "0.7 0 0 0 0 0"}, {"--out", "kept.csv"}});
  const auto obstacle = std::find(arguments.begin(), arguments.end(), "wall.obj");
  arguments.insert(obstacle, {"far.obj", "around.obj"});
  const Outcome outcome = run(arguments);
  EXPECT_EQ(outcome.code, 3);
  EXPECT_EQ(outcome.out, "");
  EXPECT_NE(outcome.err.find("the start is invalid: the part touches wall.obj"), std::string::npos) << outcome.err;
  // Nothing of the part meets a face of the box around the goal: it lies wholly inside.
  EXPECT_NE(outcome.err.find("the goal is invalid: the part touches around.obj"), std::string::npos) << outcome.err;
  EXPECT_EQ(outcome.err.find("far.obj"), std::string::npos) << outcome.err;
  EXPECT_EQ(contentOf(folder + "kept.csv"), "what was there");
}

TEST_F(CommandLine, GivesUpAtItsLimits)
{
  for (const TOptions& limit : {TOptions{{"--max-steps", "0"}}, TOptions{{"--max-steps", "200"}},
                                TOptions{{"--max-steps", "4000000000"}, {"--time-limit", "0.05"}}})
  {
    TOptions options = {{"--obstacles", "closed.obj"}, {"--out", "kept.csv"}, {"--svg", "ends.svg"}};
    options.insert(options.end(), limit.begin(), limit.end());
    const Outcome outcome = run(request(options));
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(outcome.err, "");
    EXPECT_NE(outcome.out.find("solved: no, "), std::string::npos) << outcome.out;
    EXPECT_EQ(contentOf(folder + "kept.csv"), "what was there");
    EXPECT_NE(contentOf(folder + "ends.svg").find("</svg>"), std::string::npos);
  }
}

TEST_F(CommandLine, WritesThePathFromStartToGoal)
{
  for (const TOptions& changes :
       {TOptions{}, TOptions{{"--penetration", "0"}}, TOptions{{"--optimize", "+"}, {"--sample-step", "0.1"}}})
  {
    const std::vector<Row> rows = rowsOf(tableFor(changes));
    ASSERT_GT(rows.size(), 2u);
    EXPECT_EQ(rows.front().pose, (std::array<double, 6>{-2.0, 0.0, 0.0, 0.0, 0.0, 0.0}));
    EXPECT_EQ(rows.back().pose, (std::array<double, 6>{2.0, 0.5, 0.0, 1.0, 0.0, -1.0}));
    EXPECT_EQ(rows.front().distance, 0.0);
    EXPECT_EQ(rows.front().isWaypoint + rows.back().isWaypoint, 2);
    for (std::size_t i = 1; i < rows.size(); ++i)
    {
      ASSERT_GT(rows[i].distance, rows[i - 1].distance);
      const bool isStepGiven = !changes.empty() && changes.back().first == "--sample-step";
      ASSERT_LE(rows[i].distance - rows[i - 1].distance, isStepGiven ? 0.1 * (1.0 + 1e-9) : 1.0);
    }
    // No corner of the part is ever deeper in the wall than what the proof may miss.
    for (const Row& row : rows)
      for (int corner = 0; corner < 8; ++corner)
      {
        const std::array<double, 3> p =
          placed(row.pose, {corner & 1 ? 0.5 : -0.5, corner & 2 ? 0.25 : -0.25, corner & 4 ? 0.25 : -0.25});
        ASSERT_FALSE(std::fabs(p[0]) < 0.24 && std::fabs(p[1]) < 2.99 && std::fabs(p[2]) < 2.99);
      }
  }
}

TEST_F(CommandLine, PrintsNothingButJson)
{
  const ClumMeshShPtr wall = boxMesh(0.5, 6.0, 6.0);
  const ClumMesh::TTriangle& known = wall->triangles()[0];
  const std::string u = std::to_string(known[0] + 1), v = std::to_string(known[1] + 1),
                    w = std::to_string(known[2] + 1);
  writeMesh(folder + "wall.obj", *wall,
            "f 1 2 2\nf 1 1 1\nf " + u + " " + v + " " + w + "\nf " + v + " " + w + " " + u + "\nf " + w + " " + v +
              " " + u + "\n");
  const std::string name = "wall\xff.obj";
  std::filesystem::rename(folder + "wall.obj", folder + name);
  const Outcome outcome = run(
    request({{"--obstacles", name}, {"--json", "+"}, {"--optimize", "+"}, {"--seed", "7"}, {"--out", "table.csv"}}));
  EXPECT_EQ(outcome.code, 0);
  EXPECT_EQ(outcome.err, "");
  const nlohmann::json json = nlohmann::json::parse(outcome.out, nullptr, false);
  ASSERT_TRUE(json.is_object()) << outcome.out;
  EXPECT_EQ(json.at("solved"), true);
  EXPECT_EQ(json.at("seed"), 7);
  for (const char* count : {"steps", "nodes", "edges", "motionsTested", "configurationsTested", "collisionQueries"})
    EXPECT_GT(json.at(count).get<double>(), 0.0) << count;
  for (const char* size : {"penetration", "randomStep", "longestMotion"})
    EXPECT_GT(json.at(size).get<double>(), 0.0) << size;
  for (const char* phase : {"loading", "planning", "optimizing"})
    EXPECT_GE(json.at("seconds").at(phase).get<double>(), 0.0) << phase;
  EXPECT_LE(json.at("pathLength").at("returned").get<double>(), json.at("pathLength").at("found").get<double>());
  const std::vector<Row> rows = rowsOf(contentOf(folder + "table.csv"));
  EXPECT_NEAR(rows.back().distance, json.at("pathLength").at("returned").get<double>(), 1e-9);
  ASSERT_EQ(json.at("notes").size(), 1u);
  const std::string note = json.at("notes")[0];
  EXPECT_NE(note.find("2 triangles without area"), std::string::npos) << note;
  EXPECT_NE(note.find("3 duplicates"), std::string::npos) << note;

  const nlohmann::json failed = nlohmann::json::parse(
    run(request({{"--obstacles", "closed.obj"}, {"--json", "+"}, {"--max-steps", "50"}})).out, nullptr, false);
  ASSERT_TRUE(failed.is_object());
  EXPECT_EQ(failed.at("solved"), false);
  EXPECT_NE(failed.at("ending").get<std::string>().find("50"), std::string::npos);
}

TEST_F(CommandLine, TellsWhatIsDoubtfulInWhatWasAsked)
{
  const Outcome outcome =
    run(request({{"--json", "+"}, {"--penetration", "0.4"}, {"--sample-step", "1e-9"}, {"--out", "table.csv"}}));
  EXPECT_EQ(outcome.code, 0) << outcome.err;
  const nlohmann::json json = nlohmann::json::parse(outcome.out, nullptr, false);
  ASSERT_TRUE(json.is_object()) << outcome.out;
  ASSERT_EQ(json.at("notes").size(), 2u);
  EXPECT_NE(json.at("notes")[0].get<std::string>().find("penetration is large"), std::string::npos);
  EXPECT_NE(json.at("notes")[1].get<std::string>().find("--sample-step is too small"), std::string::npos);
  const std::string table = contentOf(folder + "table.csv");
  const auto rowCount = std::count(table.begin(), table.end(), '\n');
  EXPECT_GT(rowCount, 99000);
  EXPECT_LT(rowCount, 101000);
}

TEST_F(CommandLine, TheSeedAloneMakesThePath)
{
  for (const TOptions& manner : {TOptions{}, TOptions{{"--penetration", "0"}}, TOptions{{"--optimize", "+"}},
                                 TOptions{{"--penetration", "0"}, {"--optimize", "+"}}})
  {
    const auto table = [&](const TOptions& i_more)
    {
      TOptions changes = manner;
      changes.insert(changes.end(), i_more.begin(), i_more.end());
      return tableFor(changes);
    };
    const std::string first = table({{"--seed", "3"}});
    EXPECT_EQ(table({{"--seed", "3"}}), first);
    EXPECT_EQ(table({{"--seed", "3"}, {"--json", "+"}, {"--svg", "picture.svg"}}), first);
    EXPECT_NE(table({{"--seed", "4"}}), first);
  }
}

TEST_F(CommandLine, TakesArgumentsFromAFile)
{
  writeText(folder + "request.args", "# a request\n--part part.obj --obstacles wall.obj # both\n"
                                     "--start \"-2 0 0 0 0 0\"\t--goal \"2 0.5 0 1 0 -1\"\n"
                                     "--bounds \"-5 -5 -5 5 5 5\" --max-steps 20000 --deviation 3\n");
  ASSERT_EQ(run({"plan", "@request.args", "--out", "read.csv"}).code, 0);
  EXPECT_EQ(contentOf(folder + "read.csv"), tableFor({}));
}

TEST_F(CommandLine, WritesThroughALinkAndIntoADevice)
{
  std::filesystem::create_symlink("kept.csv", folder + "link.csv");
  ASSERT_EQ(run(request({{"--out", "link.csv"}, {"--svg", "/dev/null"}})).code, 0);
  EXPECT_TRUE(std::filesystem::is_symlink(folder + "link.csv"));
  EXPECT_FALSE(rowsOf(contentOf(folder + "kept.csv")).empty());
  EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
}

TEST_F(CommandLine, AnInterruptEndsWithWhatWasFound)
{
  // At whatever moment it comes; only before the program stands does it end it like any other.
  writeMesh(folder + "part.obj", *torusKnot(2, 3, 0.4, 0.05, 200, 24));
  writeMesh(folder + "wall.obj", *wallWithWindow(6.0, 0.1, 1.5, 1.5));
  int interrupted = 0;
  for (const char* obstacle : {"closed.obj", "wall.obj"})
    for (unsigned int milliseconds = 20; milliseconds <= 1300; milliseconds *= 4)
    {
      SCOPED_TRACE(std::string(obstacle) + " " + std::to_string(milliseconds));
      writeText(folder + "kept.csv", "what was there");
      const pid_t child = start(request({{"--obstacles", obstacle},
                                         {"--max-steps", "4000000000"},
                                         {"--optimize", "+"},
                                         {"--json", "+"},
                                         {"--out", "kept.csv"}}));
      usleep(milliseconds * 1000);
      kill(child, SIGINT);
      const Outcome outcome = finish(child);
      if (outcome.code == -SIGINT && milliseconds < 1000)
        continue;
      EXPECT_EQ(outcome.err, "");
      const nlohmann::json json = nlohmann::json::parse(outcome.out, nullptr, false);
      ASSERT_TRUE(json.is_object()) << outcome.out;
      ASSERT_EQ(outcome.code, json.at("solved").get<bool>() ? 0 : 1);
      EXPECT_EQ(contentOf(folder + "kept.csv") == "what was there", outcome.code == 1);
      if (outcome.code == 1)
      {
        EXPECT_EQ(json.at("ending"), "interrupted");
        ++interrupted;
      }
    }
  EXPECT_GT(interrupted, 0);
}
