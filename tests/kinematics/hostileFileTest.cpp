#include "foundation/lumBox.h"
#include "foundation/lumXMLCoder.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvDevice.h"
#include "kinematics/orvJoint.h"
#include "support/devices.h"
#include "support/logCapture.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <regex>
#include <unistd.h>

namespace
{
std::string textOfDevice(const CorvDeviceShPtr& i_device)
{
  const ClumXMLCoderShPtr coder = ClumXMLCoder::create();
  coder->encodeObjectShPtr(i_device, "device");
  return coder->data();
}

/// The id of the object of a class that stands at a rank among its like.
std::string idOf(const std::string& i_text, const std::string& i_class, int i_rank = 0)
{
  const std::regex pattern("<object id=\"([0-9]+)\" class=\"" + i_class + "\"");
  std::sregex_iterator found(i_text.begin(), i_text.end(), pattern);
  std::advance(found, i_rank);
  return (*found)[1];
}

/// The text with what stands under a key of one object replaced by other elements.
std::string withField(const std::string& i_text, const std::string& i_id, const std::string& i_key,
                      const std::string& i_elements)
{
  const std::size_t object = i_text.find("<object id=\"" + i_id + "\"");
  const std::size_t key = i_text.find(" key=\"" + i_key + "\"", object);
  if (object == std::string::npos || key == std::string::npos)
  {
    ADD_FAILURE() << "no key " << i_key;
    return i_text;
  }
  const std::size_t begin = i_text.rfind('<', key);
  const bool isVector = i_text.compare(begin, 7, "<vector") == 0;
  const std::string end = isVector ? "</vector>" : "/>";
  return i_text.substr(0, begin) + i_elements + i_text.substr(i_text.find(end, key) + end.size());
}

std::string reference(const std::string& i_key, const std::string& i_id, const char* i_kind = "object")
{
  return std::string("<") + i_kind + " key=\"" + i_key + "\" ref=\"" + i_id + "\"/>";
}

std::string vectorOf(const std::string& i_key, const std::vector<std::string>& i_ids)
{
  std::string items;
  for (std::size_t i = 0; i < i_ids.size(); ++i)
    items += reference(i_key + "/" + std::to_string(i), i_ids[i]);
  return "<vector key=\"" + i_key + "\">" + items + "</vector>";
}

struct HostileCase
{
  const char* what;
  std::string text;
};

/// True if the reader refused the text with one line in the log and nothing came of it.
void expectRefusal(const HostileCase& i_case)
{
  SCOPED_TRACE(i_case.what);
  const LogCapture log;
  const ClumXMLCoderShPtr coder = ClumXMLCoder::create();
  coder->parse(i_case.text, "hostile.xml");
  EXPECT_FALSE(coder->decodeObject("device"));
  EXPECT_TRUE(coder->decodingStatus().failed());
  EXPECT_EQ(log.count(), 1u);
  EXPECT_TRUE(log.contains("hostile.xml, line "));
}
} // namespace

TEST(HostileFile, DeviceThatDoesNotFitTogetherIsRefused)
{
  const CorvDeviceShPtr arm = planarArm(2);
  const std::string text = textOfDevice(arm);
  const std::string device = idOf(text, "CorvDevice"), root = idOf(text, "CorvJointRotation"),
                    child = idOf(text, "CorvJointRotation", 1), effect = idOf(text, "CorvKERotateZ"),
                    body = idOf(text, "CorvBodyLumScene"), space = idOf(text, "CorvCSComposite"),
                    jointSpace = idOf(text, "CorvCSComposite", 1), childSpace = idOf(text, "CorvCSComposite", 2),
                    dof = idOf(text, "CorvDof"), box = idOf(text, "ClumBox");
  const std::string nan16 = "nan nan nan nan nan nan nan nan nan nan nan nan nan nan nan nan";
  {
    const LogCapture log;
    const ClumXMLCoderShPtr coder = ClumXMLCoder::create();
    coder->parse(withField(text, root, "maxSweep", "<double key=\"maxSweep\" value=\"7\"/>"));
    EXPECT_TRUE(coder->decodeObject("device")) << "a change that does no harm";
    EXPECT_EQ(log.count(), 0u);
  }
  const HostileCase cases[] = {
    {"no space", withField(text, device, "configSpace", "")},
    {"a space of another kind", withField(text, device, "configSpace", reference("configSpace", dof))},
    {"a joint for a space", withField(text, device, "configSpace", reference("configSpace", root))},
    {"a space without the joints", withField(text, space, "subspaces", vectorOf("subspaces", {}))},
    {"a null subspace",
     withField(text, space, "subspaces", "<vector key=\"subspaces\"><object key=\"subspaces/0\"/></vector>")},
    {"a subspace twice", withField(text, space, "subspaces", vectorOf("subspaces", {jointSpace, jointSpace}))},
    {"a space in itself", withField(text, jointSpace, "subspaces", vectorOf("subspaces", {jointSpace}))},
    {"a space in its subspace", withField(text, childSpace, "subspaces", vectorOf("subspaces", {jointSpace}))},
    {"a space above itself", withField(text, space, "parent", reference("parent", jointSpace, "weak"))},
    {"a space of its own parent", withField(text, dof, "parent", reference("parent", dof, "weak"))},
    {"a space without a type", withField(text, space, "type", "")},
    {"an owned weak joint", withField(text, device, "rootJoint", reference("rootJoint", root, "weak"))},
    {"a joint of two parents", withField(text, root, "childJoints", vectorOf("childJoints", {child, child}))},
    {"a joint below itself", withField(text, child, "childJoints", vectorOf("childJoints", {root}))},
    {"a null child",
     withField(text, root, "childJoints", "<vector key=\"childJoints\"><object key=\"childJoints/0\"/></vector>")},
    {"a child of another parent", withField(text, child, "parentJoint", "<weak key=\"parentJoint\"/>")},
    {"a joint that is its own parent", withField(text, root, "parentJoint", reference("parentJoint", root, "weak"))},
    {"joints that are above each other", withField(text, root, "parentJoint", reference("parentJoint", child, "weak"))},
    {"no effect", withField(text, root, "kinematicalEffect", "")},
    {"an effect without its dof", withField(text, effect, "configSpace", reference("configSpace", jointSpace))},
    {"too many values",
     withField(text, root, "currentEffectDofValues", "<doubles key=\"currentEffectDofValues\" value=\"0 0\"/>")},
    {"no values", withField(text, root, "currentEffectDofValues", "")},
    {"an axis that there is not", withField(text, root, "baseVector", "<int key=\"baseVector\" value=\"6\"/>")},
    {"a negative axis", withField(text, root, "baseVector", "<int key=\"baseVector\" value=\"-1\"/>")},
    {"a body of two joints", withField(text, child, "attachedBody", reference("attachedBody", body))},
    {"more geometries than frames",
     withField(text, body, "mobileObjectRelativePositions", "<vector key=\"mobileObjectRelativePositions\"/>")},
    {"a null geometry", withField(text, body, "mobileGeometries",
                                  "<vector key=\"mobileGeometries\"><object key=\"mobileGeometries/0\"/></vector>")},
    {"a box turned inside out", withField(text, box, "sizeX", "<double key=\"sizeX\" value=\"-1\"/>")},
    {"a box of no size", withField(text, box, "sizeX", "<double key=\"sizeX\" value=\"nan\"/>")},
    {"a configuration too short",
     withField(text, device, "currentConfig/dofValues", "<doubles key=\"currentConfig/dofValues\" value=\"0\"/>")},
    {"a configuration of an unknown version",
     withField(text, device, "currentConfig/spaceVersion",
               "<unsigned key=\"currentConfig/spaceVersion\" value=\"2000000000\"/>")},
    {"a configuration of another space",
     withField(text, device, "currentConfig/configSpace", reference("currentConfig/configSpace", childSpace))},
    {"no constraints", withField(text, device, "constraints", "")},
    {"bounds the wrong way", withField(text, dof, "min", "<double key=\"min\" value=\"1e9\"/>")},
    {"bounds that are none", withField(text, dof, "max", "<double key=\"max\" value=\"nan\"/>")},
  };
  for (const HostileCase& each : cases)
    expectRefusal(each);
}

TEST(CorvDevice, IsExportedToAFileAndCreatedFromIt)
{
  const std::filesystem::path folder =
    std::filesystem::temp_directory_path() / ("orvane-device-" + std::to_string(::getpid()));
  std::filesystem::create_directories(folder);
  const std::string path = (folder / "arm.xml").string();
  const CorvDeviceShPtr arm = sixAxisArm();
  double progress = -1.0;
  EXPECT_TRUE(arm->exportToFile(path, ClumParameterMapConstShPtr(), &progress).succeeded());
  EXPECT_EQ(progress, 1.0);
  const CorvDeviceShPtr read = CorvDevice::createFromFile(path);
  ASSERT_TRUE(read);
  EXPECT_EQ(textOfDevice(read), textOfDevice(arm));

  const LogCapture log;
  EXPECT_FALSE(CorvDevice::createFromFile(path + ".absent"));
  EXPECT_TRUE(log.contains("Unable to parse file " + path + ".absent"));
  const ClumXMLCoderShPtr other = ClumXMLCoder::create();
  other->encodeObjectShPtr(ClumBox::create(1.0, 1.0, 1.0), "box");
  ASSERT_TRUE(other->writeToFile(path).succeeded());
  EXPECT_FALSE(CorvDevice::createFromFile(path));
  EXPECT_TRUE(log.contains("No device found in file " + path));
  EXPECT_TRUE(arm->exportToFile((folder / "absent" / "arm.xml").string()).failed());
  std::filesystem::remove_all(folder);
}

TEST(HostileFile, DeviceOfAnOldReleaseDoesWithoutTheKeysOfNewOnes)
{
  const CorvDeviceShPtr arm = planarArm(2);
  arm->addObstacleGeometry(ClumBox::create(1.0, 1.0, 1.0));
  std::string text = textOfDevice(arm);
  const auto read = [&](const std::string& i_version)
  {
    const ClumXMLCoderShPtr coder = ClumXMLCoder::create();
    const std::string now = "version=\"-601000\"";
    std::string old = text;
    EXPECT_TRUE(coder->parse(old.replace(old.find(now), now.size(), "version=\"" + i_version + "\"")).succeeded());
    return coder->decode<CorvDevice>("device");
  };
  const CorvDeviceShPtr current = read("-601000"), former = read("-500000"), ancient = read("-499999");
  ASSERT_TRUE(current && former && ancient);
  EXPECT_EQ(current->rootJoint()->structuralVersion(), arm->rootJoint()->structuralVersion());
  EXPECT_EQ(former->rootJoint()->structuralVersion(), arm->rootJoint()->structuralVersion());
  EXPECT_NE(ancient->rootJoint()->structuralVersion(), arm->rootJoint()->structuralVersion());
  for (const CorvDeviceShPtr& device : {current, former, ancient})
  {
    EXPECT_EQ(device->countObstacleGeometries(), 1u);
    EXPECT_TRUE(device->collisionToolkit());
    CorvConfig cfg(device, {0.5, -0.5});
    EXPECT_TRUE(device->setCurrentConfig(cfg).succeeded());
  }
}
