#include "output.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <unistd.h>

namespace
{
/// The file that a path leads to: the target of a link, so that the link stays one.
std::string targetOf(const std::string& i_path)
{
  std::error_code error;
  const std::filesystem::path target = std::filesystem::canonical(i_path, error);
  return error ? i_path : target.string();
}

/// A device or pipe is written into; anything else is replaced as a whole.
bool isWrittenInPlace(const std::string& i_path)
{
  std::error_code error;
  return std::filesystem::exists(i_path, error) && !std::filesystem::is_regular_file(i_path, error) &&
         !std::filesystem::is_directory(i_path, error);
}

std::string temporaryBeside(const std::string& i_target)
{
  return i_target + "." + std::to_string(getpid()) + ".part";
}

bool failWriting(const std::string& i_path, int i_errorNumber, std::string& o_error)
{
  o_error = "cannot write '" + i_path + "': " + std::strerror(i_errorNumber);
  return false;
}

bool writeAndClose(std::FILE* io_file, const std::string& i_content)
{
  const bool isWritten = std::fwrite(i_content.data(), 1, i_content.size(), io_file) == i_content.size();
  return std::fclose(io_file) == 0 && isWritten;
}

bool checkWritable(const std::string& i_path, std::string& o_error)
{
  const std::string target = targetOf(i_path);
  std::error_code error;
  if (std::filesystem::is_directory(target, error))
    return failWriting(i_path, EISDIR, o_error);
  if (access(target.c_str(), F_OK) == 0 && access(target.c_str(), W_OK) != 0)
    return failWriting(i_path, errno, o_error);
  if (isWrittenInPlace(target))
    return true;
  const std::string temporary = temporaryBeside(target);
  std::FILE* const file = std::fopen(temporary.c_str(), "wbx");
  if (!file)
    return failWriting(i_path, errno, o_error);
  std::fclose(file);
  std::remove(temporary.c_str());
  return true;
}

bool isSameFile(const std::string& i_first, const std::string& i_second)
{
  std::error_code error;
  return std::filesystem::weakly_canonical(i_first, error) == std::filesystem::weakly_canonical(i_second, error) ||
         std::filesystem::equivalent(i_first, i_second, error);
}

/// @return the mesh file that would be overwritten, or an empty text.
std::string overwrittenMesh(const PlanOptions& i_options, const std::string& i_output)
{
  if (isSameFile(i_output, i_options.part))
    return i_options.part;
  for (const std::string& obstacle : i_options.obstacles)
    if (isSameFile(i_output, obstacle))
      return obstacle;
  return std::string();
}
} // namespace

void printError(const std::string& i_error)
{
  std::string line = i_error;
  for (char& character : line)
    if (static_cast<unsigned char>(character) < ' ' || character == '\x7f')
      character = ' ';
  std::fprintf(stderr, "orvane: %s\n", line.c_str());
}

bool checkOutputs(const PlanOptions& i_options, std::string& o_error)
{
  for (const auto& [option, path] : {std::pair("--out", i_options.out), std::pair("--svg", i_options.svg)})
  {
    if (path.empty())
      continue;
    const std::string mesh = overwrittenMesh(i_options, path);
    if (!mesh.empty())
      o_error = std::string(option) + " would overwrite the mesh '" + mesh + "'";
    if (!mesh.empty() || !checkWritable(path, o_error))
      return false;
  }
  const bool areBothAsked = !i_options.out.empty() && !i_options.svg.empty();
  if (areBothAsked && !isWrittenInPlace(i_options.out) && isSameFile(i_options.out, i_options.svg))
  {
    o_error = "--out and --svg name the same file '" + i_options.out + "'";
    return false;
  }
  return true;
}

bool writeFile(const std::string& i_path, const std::string& i_content, std::string& o_error)
{
  const std::string target = targetOf(i_path);
  const bool isInPlace = isWrittenInPlace(target);
  const std::string written = isInPlace ? target : temporaryBeside(target);
  std::FILE* const file = std::fopen(written.c_str(), isInPlace ? "wb" : "wbx");
  if (!file)
    return failWriting(i_path, errno, o_error);
  const bool isDone =
    writeAndClose(file, i_content) && (isInPlace || std::rename(written.c_str(), target.c_str()) == 0);
  const int errorNumber = errno;
  if (!isDone && !isInPlace)
    std::remove(written.c_str());
  return isDone || failWriting(i_path, errorNumber, o_error);
}
