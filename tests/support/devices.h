#pragma once

#include "foundation/handles.h"
#include "foundation/lumStatus.h"
#include "kinematics/handles.h"

#include <vector>

/// Devices for tests, ready for collision tests once obstacles are added. All dofs are bounded where a bound is told.

/// A planar arm in the xy plane: `i_count` rotations about z, unbounded, a box link of length 1 and width 0.1 behind
/// each, stretched along x.
CorvDeviceShPtr planarArm(unsigned int i_count);

/// One free-flyer at the origin that carries a geometry; the translations are bounded by [-10, 10].
CorvDeviceShPtr freeFlyer(const ClumGeometryShPtr& i_geometry);

/// An upright six-axis arm of about 2 units' reach: base, shoulder, elbow, roll, bend, flange, bounded like a real one;
/// box links at base and flange, capsules between.
CorvDeviceShPtr sixAxisArm();

/// Free-flyers under a fixed root, each carrying a geometry, in the order given; bounds as `freeFlyer`.
CorvDeviceShPtr freeFlyers(const std::vector<ClumGeometryShPtr>& i_geometries);

/// Tests two bodies of a device, by their ranks, against each other.
lmStatus addSelfTest(const CorvDeviceShPtr& i_device, unsigned int i_first, unsigned int i_second);

/// Two free-flyers under a fixed root, each carrying a geometry, tested against each other; bounds as `freeFlyer`.
CorvDeviceShPtr twoFreeFlyers(const ClumGeometryShPtr& i_first, const ClumGeometryShPtr& i_second);
