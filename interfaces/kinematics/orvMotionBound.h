#pragma once

#include "foundation/lumExport.h"
#include "foundation/lumStatus.h"
#include "kinematics/handles.h"

#include <vector>

class CorvDeviceTable;

/// How far the bodies of a device move on motions that start at one configuration: what several questions about one
/// motion share, read and checked once.
///
/// The bound is that of `CorvDevice::boundedMove`, of the device as it was when it was set. It keeps pointers to the
/// numbers of the configuration and the rates: these must stay as they are for as long as it is asked.
class LUM_API CorvMotionBound
{
public:
  /// @param i_from its space is the device's or includes it.
  /// @param i_derivatives one rate per dof of that space, valid on all of what is asked about later.
  /// @return -1, and nothing may be asked then, if sizes or spaces do not fit, a rate is negative or not finite, or no
  /// bound is known: a dof is computed by a constraint and not constant, or a body's shape changes with dofs.
  lmStatus set(const CorvDevice& i_device, const CorvConfig& i_from, const std::vector<double>& i_derivatives);
  /// The same for a motion on which every dof keeps its velocity, forth or back: how all joints move together bounds it
  /// better than what each may do by itself.
  /// @param i_velocity one number per dof of that space, of either sign.
  lmStatus setStraight(const CorvDevice& i_device, const CorvConfig& i_from, const std::vector<double>& i_velocity);

  /// How far one can go, up to `i_rest`, before some body has moved by more than it may.
  /// @param i_allowances one per body, not NaN; infinite ones do not limit.
  double advanceWithin(const double* i_allowances, double i_rest) const;
  /// @param io_allowances the same, reduced by the bound of what each body moves in the advance.
  double advance(double* io_allowances, double i_rest) const;
  /// @param o_moved the bound for each body on a whole motion of `i_rest`.
  void displacements(double i_rest, double* o_moved) const;
  unsigned int countBodies() const;

private:
  ShPtr<const CorvDeviceTable> m_table;
  const double* m_values = nullptr;
  const double* m_rates = nullptr;
  bool m_isStraight = false;
};
