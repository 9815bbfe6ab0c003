#include "foundation/lumBox.h"
#include "foundation/lumCollectionAdapterGeometry.h"
#include "foundation/lumInstance.h"
#include "foundation/lumMat4.h"
#include "kinematics/orvClonableGeometryFilter.h"
#include "kinematics/orvCloner.h"
#include "kinematics/orvDevice.h"
#include "kinematics/orvJoint.h"
#include "support/devices.h"

#include <gtest/gtest.h>

TEST(CorvClonableGeometryFilter, NamesGeometriesThatServeNoSceneOrOther)
{
  const CorvClonableGeometryFilter filter;
  const ClumBoxShPtr box = ClumBox::create(1.0, 1.0, 1.0);
  const CorvDeviceShPtr device = planarArm(1);
  EXPECT_TRUE(filter.accepts(*box));
  EXPECT_FALSE(filter.accepts(*ClumInstance::create(box)));
  EXPECT_FALSE(filter.accepts(*device));
  EXPECT_TRUE(filter.accepts(*ClumCollectionAdapterGeometry::create(device, "obstacleGeometries")));
  EXPECT_TRUE(filter.clone()->accepts(*box));
}

TEST(CorvCloner, CopyOfADeviceSharesItsGeometries)
{
  const CorvDeviceShPtr device = planarArm(3);
  const CorvClonerShPtr cloner = CorvCloner::create();
  ASSERT_TRUE(cloner);
  ASSERT_TRUE(cloner->encodeObjectShPtr(device, "object").succeeded());
  const CorvDeviceShPtr copy = cloner->decode<CorvDevice>("object");
  ASSERT_TRUE(copy);
  EXPECT_NE(copy, device);
  ASSERT_EQ(copy->countMobileGeometries(), 3u);
  ASSERT_EQ(copy->countJoints(), device->countJoints());
  for (unsigned int i = 0; i < 3; ++i)
    EXPECT_EQ(copy->mobileGeometry(i), device->mobileGeometry(i));
  for (unsigned int i = 0; i < copy->countJoints(); ++i)
    EXPECT_NE(copy->joint(i), device->joint(i));
}
