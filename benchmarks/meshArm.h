#pragma once

#include "foundation/handles.h"
#include "kinematics/handles.h"

#include <cstddef>

/// Triangles of a fine mesh, at least.
constexpr std::size_t FINE = 5000;

/// The six-axis arm of the examples, with a carried box, among the boards of a shelf; all shapes refined meshes. Bodies
/// that are no neighbours are tested against each other. Lengths are in millimetres.
CorvDeviceShPtr meshArmAtShelf();

/// Plans between two compartments, for so many steps at most. @return the seconds that the search took.
double planMeshArm(const CorvDeviceShPtr& i_arm, unsigned int i_maxSteps);
