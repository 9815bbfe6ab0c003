#pragma once

#include "foundation/handles.h"
#include "kinematics/handles.h"

/// The same surface with every triangle cut into four again and again, until there are 5,000 triangles.
ClumMeshShPtr refined(const ClumMesh& i_mesh);

/// The six-axis arm of the examples, with a carried box, among the boards of a shelf; all shapes refined meshes. Bodies
/// that are no neighbours are tested against each other. Lengths are in millimetres.
CorvDeviceShPtr meshArmAtShelf();

/// Plans between two compartments, for so many steps at most. @return the seconds that the search took.
double planMeshArm(const CorvDeviceShPtr& i_arm, unsigned int i_maxSteps);
