#pragma once

#include "kinematics/orvConfigSpace.h"

/// The space of a device as its clients see it: it holds the device, whose internal space does not.
///
/// Its one sub-space is the device's internal space, of which it is the parent. Metric, steering method and the four
/// stacks are that space's own. A device makes its wrapper on demand and holds it weakly, so nothing that the device
/// owns may hold the wrapper.
class LUM_API CorvCSDeviceWrapper : public CorvConfigSpace
{
  LUM_CONCRETE(CorvCSDeviceWrapper, CorvConfigSpace);

public:
  ~CorvCSDeviceWrapper() override;
  /// @return null for a null device, an empty type, or a device whose internal space has a parent already.
  static CorvCSDeviceWrapperShPtr create(const CorvDeviceShPtr& i_device, const std::string& i_type);
  static CorvCSDeviceWrapperShPtr createCopy(const CorvCSDeviceWrapperConstShPtr& i_objectToCopy);

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;
  void awake() override;

  CorvConfigSpaceShPtr subspace(unsigned int i_rank) const override;
  unsigned int countSubspaces() const override;
  void steeringMethod(const CorvSteeringMethodShPtr& i_steeringMethod) override;
  const CorvSteeringMethodShPtr& steeringMethod() const override;
  CorvValidatorSetShPtr makeValidatorSet() const override;

  const CorvDeviceShPtr& wrappedDevice() const { return m_wrappedDevice; }

protected:
  CorvCSDeviceWrapper() = default;
  CorvCSDeviceWrapper(const CorvDeviceShPtr& i_device, const std::string& i_type);
  lmStatus init(const CorvCSDeviceWrapperWkPtr& i_weakPtr);

  const CorvValidatorSetShPtr& spaceConstraints() const override;
  const CorvValidatorSetShPtr& spaceConfigValidators() const override;
  const CorvValidatorSetShPtr& spaceDirectPathValidators() const override;
  const CorvValidatorSetShPtr& spacePathValidators() const override;
  const CorvMetricShPtr& spaceMetric() const override;
  void spaceMetric(const CorvMetricShPtr& i_metric) override;
  void willReturnConfigValidators(const CorvValidatorSetShPtr& i_set) const override;

private:
  void wrapDevice();
  void deviceDidChange(const ShPtr<const ClumNotification>& i_notification);

  CorvDeviceShPtr m_wrappedDevice;
  CorvConfigSpaceShPtr m_internalSpace;
};
