#include "foundation/lumFileReplacement.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace
{
/// A file that is closed, and unless it was kept removed, when the object goes.
class CTemporaryFile
{
public:
  explicit CTemporaryFile(const std::string& i_beside)
    : m_path(i_beside + ".XXXXXX"), m_descriptor(::mkstemp(m_path.data()))
  {
  }

  ~CTemporaryFile()
  {
    if (m_descriptor < 0)
      return;
    ::close(m_descriptor);
    if (!m_isKept)
      ::unlink(m_path.c_str());
  }

  CTemporaryFile(const CTemporaryFile&) = delete;
  CTemporaryFile& operator=(const CTemporaryFile&) = delete;

  bool isOpen() const { return m_descriptor >= 0; }

  bool write(const std::string& i_text)
  {
    for (std::size_t done = 0; done < i_text.size();)
    {
      const ssize_t count = ::write(m_descriptor, i_text.data() + done, i_text.size() - done);
      if (count < 0 && errno == EINTR)
        continue;
      if (count <= 0)
        return false;
      done += static_cast<std::size_t>(count);
    }
    return true;
  }

  bool setRights(mode_t i_rights) { return ::fchmod(m_descriptor, i_rights) == 0; }
  bool sync() { return ::fsync(m_descriptor) == 0; }
  bool rename(const std::string& i_path)
  {
    m_isKept = ::rename(m_path.c_str(), i_path.c_str()) == 0;
    return m_isKept;
  }

private:
  std::string m_path;
  int m_descriptor;
  bool m_isKept = false;
};

/// What a new file may be used for.
mode_t rightsOfNewFiles()
{
  const mode_t mask = ::umask(0);
  ::umask(mask);
  return 0666 & ~mask;
}

/// Makes the new name as lasting as the file. A folder that cannot be synchronised is no reason to fail.
void syncFolderOf(const std::string& i_path)
{
  const std::string folder = std::filesystem::path(i_path).parent_path().string();
  const int descriptor = ::open(folder.empty() ? "." : folder.c_str(), O_RDONLY);
  if (descriptor < 0)
    return;
  ::fsync(descriptor);
  ::close(descriptor);
}

std::string systemReason()
{
  return std::strerror(errno);
}
} // namespace

std::string lumReplaceFile(const std::string& i_path, const std::string& i_text)
{
  std::error_code error;
  const bool isLink = std::filesystem::is_symlink(i_path, error);
  error.clear(); // there may be no such file yet
  const std::string path = isLink ? std::filesystem::weakly_canonical(i_path, error).string() : i_path;
  struct stat old;
  const bool isThere = ::stat(path.c_str(), &old) == 0;
  if (path.empty() || error || (isThere && !S_ISREG(old.st_mode)))
    return error ? error.message() : "it is no regular file";
  CTemporaryFile file(path);
  if (!file.isOpen())
    return systemReason();
  const mode_t rights = isThere ? old.st_mode & 0777 : rightsOfNewFiles();
  if (!file.write(i_text) || !file.setRights(rights) || !file.sync() || !file.rename(path))
    return systemReason();
  syncFolderOf(path);
  return std::string();
}

std::string lumReadFile(const std::string& i_path, std::string& o_text)
{
  o_text.clear();
  const int descriptor = ::open(i_path.c_str(), O_RDONLY | O_NONBLOCK);
  if (descriptor < 0)
    return systemReason();
  struct stat state;
  std::string reason;
  if (::fstat(descriptor, &state) != 0)
    reason = systemReason();
  else if (!S_ISREG(state.st_mode))
    reason = "it is no regular file";
  constexpr std::size_t STEP = 1 << 16;
  for (std::size_t size = 0; reason.empty();)
  {
    o_text.resize(std::max(static_cast<std::size_t>(state.st_size) + 1, size + STEP));
    const ssize_t count = ::read(descriptor, o_text.data() + size, o_text.size() - size);
    if (count < 0 && errno != EINTR)
      reason = systemReason();
    size += static_cast<std::size_t>(std::max<ssize_t>(count, 0));
    o_text.resize(size);
    if (count == 0)
      break;
  }
  ::close(descriptor);
  return reason;
}
