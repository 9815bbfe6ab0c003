// Writes the seed corpus of the reader's fuzz target: orvane_fuzz_seeds FOLDER

#include "foundation/lumBox.h"
#include "foundation/lumXMLCoder.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvConfigSpace.h"
#include "kinematics/orvDevice.h"
#include "paths/orvPath.h"
#include "paths/orvSteeringMethod.h"
#include "support/devices.h"
#include "support/samples.h"

#include <cstdio>
#include <filesystem>

namespace
{
/// A path of a few motions of a device.
CorvPathShPtr seedPath(const CorvDeviceShPtr& i_device)
{
  const CorvConfigSpaceShPtr space = i_device->configSpace();
  const CorvPathShPtr path = CorvPath::create(space);
  CorvConfig from(space);
  for (int i = 1; i < 4; ++i)
  {
    CorvConfig to(space, std::vector<double>(space->size(), 0.1 * i));
    path->appendDirectPath(space->steeringMethod()->makeDirectPath(from, to));
    from = to;
  }
  return path;
}

/// What holds a pointer, as builders do, has no file.
bool writeSeed(const ClumCodableConstShPtr& i_object, const std::filesystem::path& i_file)
{
  const ClumXMLCoderShPtr coder = ClumXMLCoder::create();
  coder->encodeObjectShPtr(i_object, "object");
  return coder->data().empty() || coder->writeToFile(i_file.string()).succeeded();
}
} // namespace

int main(int i_count, char** i_arguments)
{
  if (i_count != 2)
    return std::fprintf(stderr, "usage: orvane_fuzz_seeds FOLDER\n"), 2;
  const std::filesystem::path folder = i_arguments[1];
  std::filesystem::create_directories(folder);
  bool isWritten = true;
  for (const SampleMaker& maker : sampleMakers())
    isWritten = writeSeed(maker.make(), folder / (std::string(maker.className) + ".xml")) && isWritten;
  const CorvDeviceShPtr arm = sixAxisArm();
  arm->addObstacleGeometry(ClumBox::create(1.0, 1.0, 1.0));
  isWritten = writeSeed(arm, folder / "arm.xml") && isWritten;
  isWritten = writeSeed(seedPath(planarArm(2)), folder / "path.xml") && isWritten;
  return isWritten ? 0 : 1;
}
