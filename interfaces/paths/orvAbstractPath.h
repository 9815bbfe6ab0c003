#pragma once

#include "foundation/lumCodable.h"
#include "kinematics/handles.h"
#include "paths/handles.h"

#include <vector>

/// What a single motion and a chain of motions have in common: a length, a configuration at each distance, cutting and
/// reversing.
///
/// A distance is measured along the path by the metric of its space; a parameter runs from 0 to 1 over the whole path.
/// Distances out of range give the ends. `DID_CHANGE` is sent after every change of shape. A path whose notificator
/// exists follows the version of its device.
class LUM_API CorvAbstractPath : public ClumMutableCodable
{
  LUM_ABSTRACT(CorvAbstractPath, ClumMutableCodable);

public:
  enum EDirection
  {
    FORWARD,
    BACKWARD
  };

  static const unsigned int DID_CHANGE;

  ~CorvAbstractPath() override;
  virtual CorvAbstractPathShPtr clone() const = 0;

  virtual double length() const = 0;
  virtual lmStatus getConfigAtDistance(double i_distance, CorvConfig& io_cfg) const = 0;
  virtual lmStatus getConfigAtParam(double i_param, CorvConfig& io_cfg) const;
  virtual lmStatus getConfigAtStart(CorvConfig& io_cfg) const;
  virtual lmStatus getConfigAtEnd(CorvConfig& io_cfg) const;

  /// The device of the path's space, or null.
  virtual CorvDeviceShPtr device() const;
  virtual CorvConfigSpaceShPtr configSpace() const = 0;
  /// True if the path cannot be reversed in place.
  virtual bool isOriented() const = 0;
  /// Tells a visitor what the path is made of.
  virtual void describe(const CorvPathVisitorShPtr& i_visitor) const = 0;

  /// How far one can go from a distance so that no body moves more than its entry of `io_maxDistances`.
  /// @param o_tGoal the distance that is reached. @param o_hitsEnd true if it is the end, or the start backwards.
  /// @param io_maxDistances one entry for each body of the device; what is moved is taken off.
  virtual lmStatus boundedMoveByBody(double i_tStart, EDirection i_direction, double& o_tGoal, bool& o_hitsEnd,
                                     std::vector<double>& io_maxDistances) const = 0;

  /// Cuts the path in place. A refused cut leaves the path as it was.
  virtual lmStatus extractFrom(double i_from) = 0;
  virtual lmStatus extractTo(double i_to) = 0;
  virtual lmStatus extract(double i_from, double i_to) = 0;
  virtual lmStatus reverse() = 0;
  /// Called when the version of the device has moved.
  virtual void deviceVersionChanged() = 0;

  /// New configurations, null on failure.
  CorvConfigShPtr configAtDistance(double i_distance) const;
  CorvConfigShPtr configAtParam(double i_param) const;
  CorvConfigShPtr configAtStart() const;
  CorvConfigShPtr configAtEnd() const;
  double paramToDistance(double i_param) const { return length() * i_param; }
  /// True if the path begins, or ends, at an equivalent configuration.
  bool startsWith(const CorvConfig& i_cfg) const;
  bool endsWith(const CorvConfig& i_cfg) const;
  /// The absolute pose of each body of the device at a place of the path.
  lmStatus getMatVectorAtDistance(double i_distance, std::vector<ClumMat4>& o_matrices) const;
  lmStatus getMatVectorAtParam(double i_param, std::vector<ClumMat4>& o_matrices) const;
  /// `boundedMoveByBody` with the same allowance for all bodies.
  lmStatus boundedMove(double i_tStart, EDirection i_direction, double& o_tGoal, bool& o_hitsEnd,
                       double i_maxDistance) const;

  /// Edited copies; null if the argument is null or the edit fails.
  static CorvAbstractPathShPtr createByExtracting(const CorvAbstractPathConstShPtr& i_path, double i_from, double i_to);
  static CorvAbstractPathShPtr createByExtractingFrom(const CorvAbstractPathConstShPtr& i_path, double i_from);
  static CorvAbstractPathShPtr createByExtractingTo(const CorvAbstractPathConstShPtr& i_path, double i_to);
  static CorvAbstractPathShPtr createReversed(const CorvAbstractPathConstShPtr& i_path);

  void awake() override;

protected:
  CorvAbstractPath();
  CorvAbstractPath(const CorvAbstractPath& i_other);
  CorvAbstractPath& operator=(const CorvAbstractPath&) { return *this; }
  lmStatus init(const CorvAbstractPathWkPtr& i_weakPtr);

  void willReturnObjectNotificator() const override;
  void subscribeToDevice() const;
  void unsubscribeFromDevice() const;

private:
  void subscribeToSelf() const;
  void propertyWillChange(const ShPtr<const ClumNotification>& i_notification);
  void propertyDidChange(const ShPtr<const ClumNotification>& i_notification);
  void devicePropertyDidChange(const ShPtr<const ClumNotification>& i_notification);

  mutable CorvDeviceWkPtr m_observedDevice;
};
