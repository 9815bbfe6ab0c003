#include "foundation/lumMeshReader.h"

#include "foundation/lumDescribe.h"
#include "foundation/lumMesh.h"

#include <assimp/Importer.hpp>
#include <assimp/postprocess.h>
#include <assimp/scene.h>

#include <filesystem>
#include <fstream>

const unsigned int ClumMeshReader::FILE_NOT_FOUND_ERROR = ClumRuntime::instance().registerStatusCode(
  ClumMesh::__classObject(), "FILE_NOT_FOUND_ERROR", 10250, "The mesh file cannot be opened.");
const unsigned int ClumMeshReader::NO_MESH_FILE_ERROR = ClumRuntime::instance().registerStatusCode(
  ClumMesh::__classObject(), "NO_MESH_FILE_ERROR", 10251, "The file is no mesh file that can be read.");
const unsigned int ClumMeshReader::EMPTY_MESH_ERROR = ClumRuntime::instance().registerStatusCode(
  ClumMesh::__classObject(), "EMPTY_MESH_ERROR", 10252, "The mesh file holds no triangle with an area.");
const unsigned int ClumMeshReader::NOT_FINITE_ERROR = ClumRuntime::instance().registerStatusCode(
  ClumMesh::__classObject(), "NOT_FINITE_ERROR", 10253, "The mesh file holds coordinates that are not finite.");

namespace
{
/// All triangles of an imported scene, in the coordinates of its root.
struct CImportedMesh
{
  std::vector<ClumPoint3> vertices;
  std::vector<ClumMesh::TTriangle> triangles;

  void append(const aiMesh& i_mesh, const aiMatrix4x4t<double>& i_frame)
  {
    const unsigned int first = static_cast<unsigned int>(vertices.size());
    for (unsigned int i = 0; i < i_mesh.mNumVertices; ++i)
    {
      const aiVector3D& v = i_mesh.mVertices[i];
      const aiVector3t<double> placed = i_frame * aiVector3t<double>(v.x, v.y, v.z);
      vertices.emplace_back(placed.x, placed.y, placed.z);
    }
    for (unsigned int i = 0; i < i_mesh.mNumFaces; ++i)
    {
      const aiFace& face = i_mesh.mFaces[i];
      if (face.mNumIndices == 3)
        triangles.push_back({first + face.mIndices[0], first + face.mIndices[1], first + face.mIndices[2]});
    }
  }

  void append(const aiScene& i_scene, const aiNode& i_node, const aiMatrix4x4t<double>& i_above)
  {
    aiMatrix4x4 local = i_node.mTransformation;
    const aiMatrix4x4t<double> frame =
      i_above * aiMatrix4x4t<double>(local.a1, local.a2, local.a3, local.a4, local.b1, local.b2, local.b3, local.b4,
                                     local.c1, local.c2, local.c3, local.c4, local.d1, local.d2, local.d3, local.d4);
    for (unsigned int i = 0; i < i_node.mNumMeshes; ++i)
      append(*i_scene.mMeshes[i_node.mMeshes[i]], frame);
    for (unsigned int i = 0; i < i_node.mNumChildren; ++i)
      append(i_scene, *i_node.mChildren[i], frame);
  }

  bool isFinite() const
  {
    for (const ClumPoint3& vertex : vertices)
      if (!std::isfinite(vertex.x()) || !std::isfinite(vertex.y()) || !std::isfinite(vertex.z()))
        return false;
    return true;
  }
};

lmStatus failedReading(const std::string& i_path, const std::string& i_what, unsigned int i_code,
                       ClumMeshReader::CResult& o_result)
{
  o_result.error = i_path + ": " + i_what;
  return lmStatus(i_code);
}

/// Assimp's message without line ends.
std::string importMessage(const Assimp::Importer& i_importer)
{
  std::string message = i_importer.GetErrorString();
  for (char& c : message)
    if (c == '\n' || c == '\r')
      c = ' ';
  return message.empty() ? "not a mesh file" : "not a mesh file (" + message + ")";
}
} // namespace

lmStatus ClumMeshReader::read(const std::string& i_path, CResult& o_result)
{
  o_result = CResult();
  std::error_code ignored;
  if (!std::filesystem::is_regular_file(i_path, ignored) || !std::ifstream(i_path).good())
    return failedReading(i_path, "cannot be opened", FILE_NOT_FOUND_ERROR, o_result);

  // No validation steps of the importer that would drop or move vertices: what is wrong is told below.
  Assimp::Importer importer;
  importer.SetPropertyInteger(AI_CONFIG_PP_SBP_REMOVE, aiPrimitiveType_POINT | aiPrimitiveType_LINE);
  const aiScene* scene = nullptr;
  try
  {
    scene = importer.ReadFile(i_path, aiProcess_Triangulate | aiProcess_SortByPType);
  }
  catch (const std::exception&)
  {
    return failedReading(i_path, "not a mesh file", NO_MESH_FILE_ERROR, o_result);
  }
  if (!scene || !scene->mRootNode)
    return failedReading(i_path, importMessage(importer), NO_MESH_FILE_ERROR, o_result);

  CImportedMesh imported;
  imported.append(*scene, *scene->mRootNode, aiMatrix4x4t<double>());
  if (imported.vertices.empty())
    return failedReading(i_path, "not a mesh file (no vertices in it)", NO_MESH_FILE_ERROR, o_result);
  if (!imported.isFinite())
    return failedReading(i_path, "has vertices that are not finite", NOT_FINITE_ERROR, o_result);
  o_result.mesh = ClumMesh::create(imported.vertices, imported.triangles);
  if (!o_result.mesh)
    return failedReading(i_path, "has no triangle with an area", EMPTY_MESH_ERROR, o_result);
  o_result.zeroAreaTriangles = o_result.mesh->dropped().zeroArea;
  o_result.duplicateTriangles = o_result.mesh->dropped().duplicates;
  return lmStatus();
}
