#pragma once

#include "foundation/handles.h"
#include "foundation/lumExport.h"
#include "foundation/lumStatus.h"

#include <string>

/// Reads mesh files: OBJ, STL, PLY, DAE, glTF and what else Assimp reads, told by the file's ending
/// or its content. Coordinates are single precision.
///
/// All meshes of a file become one, each as often and where the file's scene graph places it; materials, lines and
/// points are passed over.
class LUM_API ClumMeshReader
{
public:
  /// What became of a file.
  struct LUM_API CResult
  {
    ClumMeshShPtr mesh;                  ///< null on failure
    std::string error;                   ///< one line that names the file and what is wrong; empty on success
    unsigned int zeroAreaTriangles = 0;  ///< dropped
    unsigned int duplicateTriangles = 0; ///< dropped
  };

  static const unsigned int FILE_NOT_FOUND_ERROR;
  static const unsigned int NO_MESH_FILE_ERROR;
  static const unsigned int EMPTY_MESH_ERROR;
  static const unsigned int NOT_FINITE_ERROR;

  /// @return one of the codes above, with `o_result.error` set.
  static lmStatus read(const std::string& i_path, CResult& o_result);
};
