// What it costs to write and read a file, against what the parser alone takes for the same text.

#include "foundation/lumXMLCoder.h"
#include "harness.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvConfigSpace.h"
#include "kinematics/orvDevice.h"
#include "kinematics/orvDof.h"
#include "paths/orvDirectPath.h"
#include "paths/orvPath.h"
#include "paths/orvSteeringMethod.h"
#include "support/devices.h"

#include <cstdio>
#include <pugixml.hpp>

namespace
{
const unsigned int JOINT_COUNT = 100;

/// A path of so many motions of an arm, each from where the last one ends.
CorvPathShPtr makeCodedPath(const CorvDeviceShPtr& i_arm, unsigned int i_count)
{
  const CorvConfigSpaceShPtr space = i_arm->configSpace();
  const CorvPathShPtr path = CorvPath::create(space);
  std::vector<double> values(space->size(), 0.0);
  CorvConfig from(space, values);
  for (unsigned int i = 0; i < i_count; ++i)
  {
    for (unsigned int rank = 0; rank < values.size(); ++rank)
      values[rank] = 0.01 * ((7 * i + 13 * rank) % 100) / 3.0;
    const CorvConfig to(space, values);
    path->appendDirectPath(space->steeringMethod()->makeDirectPath(from, to));
    from = to;
  }
  return path;
}

ClumXMLCoderShPtr encoded(const CorvDeviceShPtr& i_arm, const CorvPathShPtr& i_path)
{
  const ClumXMLCoderShPtr coder = ClumXMLCoder::create();
  coder->encodeObjectShPtr(i_arm, "device");
  coder->encodeObjectShPtr(i_path, "path");
  return coder;
}

void readCoded(const std::string& i_text)
{
  const ClumXMLCoderShPtr coder = ClumXMLCoder::create();
  coder->parse(i_text);
  const bool isRead = coder->decodeObject("device") && coder->decodeObject("path");
  if (!isRead)
    std::fprintf(stderr, "what was written cannot be read\n");
}

void runCoding()
{
  const CorvDeviceShPtr arm = planarArm(JOINT_COUNT);
  double writing = 0.0, reading = 0.0;
  for (const unsigned int count : {100u, 1000u, 10000u})
  {
    const CorvPathShPtr path = makeCodedPath(arm, count);
    const std::string text = encoded(arm, path)->data();
    const auto parse = [&]
    {
      pugi::xml_document document;
      keep(document.load_buffer(text.data(), text.size()));
    };
    const Comparison write = compare([&] { keep(encoded(arm, path)->data().size()); }, parse);
    const Comparison read = compare([&] { readCoded(text); }, parse);
    char what[96];
    std::snprintf(what, sizeof(what), "%u joints, %u motions, %.1f MB: writing / the parser alone", JOINT_COUNT, count,
                  1e-6 * static_cast<double>(text.size()));
    report(what, write.ratio(), count == 1000 ? "at most 10 for writing and reading" : "for the growth");
    report("  reading / the parser alone", read.ratio(), "");
    if (count == 10000)
    {
      report("  writing: growth over the parser's, from 1,000 motions", write.ratio() / writing, "about 1 at most");
      report("  reading: growth over the parser's, from 1,000 motions", read.ratio() / reading, "about 1 at most");
    }
    writing = write.ratio();
    reading = read.ratio();
  }
}

const Section s_coding("coding", &runCoding);
} // namespace
