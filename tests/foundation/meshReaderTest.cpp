#include "foundation/lumMesh.h"
#include "foundation/lumMeshReader.h"
#include "support/meshes.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>

namespace
{
class MeshReader : public testing::Test
{
protected:
  void SetUp() override
  {
    m_folder = std::filesystem::temp_directory_path() /
               (std::string("orvane-mesh-") + testing::UnitTest::GetInstance()->current_test_info()->name());
    std::filesystem::create_directories(m_folder);
  }
  void TearDown() override { std::filesystem::remove_all(m_folder); }

  std::string write(const std::string& i_name, const std::string& i_text) const
  {
    const std::string path = (m_folder / i_name).string();
    std::ofstream(path, std::ios::binary) << i_text;
    return path;
  }

  std::filesystem::path m_folder;
};

// A tetrahedron, in the ways of each format.
const char* const OBJ = "v 0 0 0\nv 1 0 0\nv 0 2 0\nv 0 0 3\nf 1 3 2\nf 1 2 4\nf 2 3 4\nf 1 4 3\n";
const char* const PLY =
  "ply\nformat ascii 1.0\nelement vertex 4\nproperty float x\nproperty float y\nproperty float z\n"
  "element face 4\nproperty list uchar int vertex_indices\nend_header\n0 0 0\n1 0 0\n0 2 0\n0 0 3\n"
  "3 0 2 1\n3 0 1 3\n3 1 2 3\n3 0 3 2\n";

std::string stl()
{
  const char* const corners[4] = {"0 0 0", "1 0 0", "0 2 0", "0 0 3"};
  const int faces[4][3] = {{0, 2, 1}, {0, 1, 3}, {1, 2, 3}, {0, 3, 2}};
  std::string text = "solid t\n";
  for (const auto& face : faces)
  {
    text += "facet normal 0 0 0\nouter loop\n";
    for (const int corner : face)
      text += std::string("vertex ") + corners[corner] + "\n";
    text += "endloop\nendfacet\n";
  }
  return text + "endsolid t\n";
}

/// The tetrahedron twice: as it stands, and below two nested frames, the outer one turned by 90 degrees about z.
std::string dae()
{
  return R"(<?xml version="1.0"?><COLLADA xmlns="http://www.collada.org/2005/11/COLLADASchema" version="1.4.1">
<asset><up_axis>Y_UP</up_axis></asset><library_geometries><geometry id="g"><mesh>
<source id="p"><float_array id="pa" count="12">0 0 0 1 0 0 0 2 0 0 0 3</float_array><technique_common>
<accessor source="#pa" count="4" stride="3"><param name="X" type="float"/><param name="Y" type="float"/>
<param name="Z" type="float"/></accessor></technique_common></source>
<vertices id="v"><input semantic="POSITION" source="#p"/></vertices>
<triangles count="4"><input semantic="VERTEX" source="#v" offset="0"/><p>0 2 1 0 1 3 1 2 3 0 3 2</p></triangles>
</mesh></geometry></library_geometries><library_visual_scenes><visual_scene id="s">
<node id="a"><instance_geometry url="#g"/></node>
<node id="b"><translate>10 0 0</translate><rotate>0 0 1 90</rotate>
<node id="c"><translate>5 0 0</translate><instance_geometry url="#g"/></node></node>
</visual_scene></library_visual_scenes><scene><instance_visual_scene url="#s"/></scene></COLLADA>)";
}
} // namespace

TEST_F(MeshReader, ReadsEveryFormatToTheSameSolid)
{
  for (const std::string& path : {write("t.obj", OBJ), write("t.ply", PLY), write("t.stl", stl())})
  {
    ClumMeshReader::CResult result;
    ASSERT_TRUE(ClumMeshReader::read(path, result).succeeded()) << result.error;
    EXPECT_EQ(result.mesh->triangles().size(), 4u) << path;
    EXPECT_TRUE(result.mesh->isClosed()) << path;
    EXPECT_EQ(result.zeroAreaTriangles + result.duplicateTriangles, 0u);
    ClumPoint3 low, high;
    result.mesh->getBoundingBox(low, high);
    EXPECT_EQ(low, ClumPoint3(0, 0, 0));
    EXPECT_EQ(high, ClumPoint3(1, 2, 3));
  }
}

TEST_F(MeshReader, PlacesWhatTheSceneGraphPlaces)
{
  ClumMeshReader::CResult result;
  ASSERT_TRUE(ClumMeshReader::read(write("t.dae", dae()), result).succeeded()) << result.error;
  EXPECT_EQ(result.mesh->triangles().size(), 8u);
  ClumPoint3 low, high;
  result.mesh->getBoundingBox(low, high);
  // The second one: x and y become -y and x, plus (10, 5).
  const double expected[6] = {0, 0, 0, 10, 6, 3};
  for (unsigned int k = 0; k < 3; ++k)
  {
    EXPECT_NEAR(low[k], expected[k], 1e-5);
    EXPECT_NEAR(high[k], expected[3 + k], 1e-5);
  }
}

TEST_F(MeshReader, DropsAndCountsTrianglesThatSayNothing)
{
  const std::string text = std::string(OBJ) + "v 2 0 0\nf 1 3 2\nf 3 2 1\nf 1 2 5\n";
  ClumMeshReader::CResult result;
  ASSERT_TRUE(ClumMeshReader::read(write("t.obj", text), result).succeeded()) << result.error;
  EXPECT_EQ(result.mesh->triangles().size(), 4u);
  EXPECT_EQ(result.duplicateTriangles, 2u);
  EXPECT_EQ(result.zeroAreaTriangles, 1u);
}

TEST_F(MeshReader, TellsTheFileAndWhatIsWrong)
{
  const struct
  {
    std::string path;
    unsigned int code;
    const char* text;
  } cases[] = {
    {(m_folder / "none.obj").string(), ClumMeshReader::FILE_NOT_FOUND_ERROR, "cannot be opened"},
    {m_folder.string(), ClumMeshReader::FILE_NOT_FOUND_ERROR, "cannot be opened"},
    {write("words.obj", "these are words\nand no mesh\n"), ClumMeshReader::NO_MESH_FILE_ERROR, "not a mesh file"},
    {write("words.stl", "these are words, and no mesh at all, but for the name of the file that they stand in\n"),
     ClumMeshReader::NO_MESH_FILE_ERROR, "not a mesh file"},
    {write("words.xyzw", "words"), ClumMeshReader::NO_MESH_FILE_ERROR, "not a mesh file"},
    {write("nothing.obj", ""), ClumMeshReader::NO_MESH_FILE_ERROR, "not a mesh file"},
    {write("flat.obj", "v 0 0 0\nv 1 0 0\nv 2 0 0\nf 1 2 3\n"), ClumMeshReader::EMPTY_MESH_ERROR, "no triangle"},
    {write("nan.obj", "v 0 0 0\nv 1 nan 0\nv 0 1 0\nf 1 2 3\n"), ClumMeshReader::NOT_FINITE_ERROR, "not finite"},
    {write("inf.ply", std::string(PLY).replace(std::string(PLY).find("0 2 0"), 5, "0 inf 0")),
     ClumMeshReader::NOT_FINITE_ERROR, "not finite"},
  };
  for (const auto& test : cases)
  {
    ClumMeshReader::CResult result;
    result.mesh = boxMesh(1, 1, 1);
    EXPECT_EQ(ClumMeshReader::read(test.path, result), test.code) << test.path;
    EXPECT_FALSE(result.mesh);
    EXPECT_NE(result.error.find(test.path), std::string::npos) << result.error;
    EXPECT_NE(result.error.find(test.text), std::string::npos) << result.error;
    EXPECT_EQ(result.error.find('\n'), std::string::npos) << result.error;
  }
}
