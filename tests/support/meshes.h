#pragma once

#include "foundation/handles.h"
#include "foundation/lumMesh.h"

#include <cstddef>

// Meshes made in code. All are closed, but where told otherwise.

/// A box of 12 triangles around the origin, of the full sizes given.
ClumMeshShPtr boxMesh(double i_sizeX, double i_sizeY, double i_sizeZ);
/// A ball around the origin, of 2 * segments * (segments - 1) triangles. Its corners lie on the sphere.
ClumMeshShPtr sphereMesh(double i_radius, unsigned int i_segments);
/// A tube around the z axis with flat ends, centred at the origin. Its corners lie on the cylinder.
ClumMeshShPtr cylinderMesh(double i_radius, double i_height, unsigned int i_segments);
/// An L in the plane of x and y: legs of the given lengths along both axes from the origin, of square section.
ClumMeshShPtr lPart(double i_lengthX, double i_lengthY, double i_width);
/// A tube along the torus knot (p, q) on a torus of radii 1 and 0.4, times `i_size`.
/// It has 2 * i_along * i_around triangles.
ClumMeshShPtr torusKnot(unsigned int i_p, unsigned int i_q, double i_size, double i_tubeRadius, unsigned int i_along,
                        unsigned int i_around);
/// A box of square section along the x axis, around the origin, cut into triangles of about the width's size.
ClumMeshShPtr longBar(double i_length, double i_width);
/// A wall across the x axis at x = 0, `i_thickness` thick, of the given size in y and z, with a window of
/// `i_windowY` by `i_windowZ` around the origin.
ClumMeshShPtr wallWithWindow(double i_size, double i_thickness, double i_windowY, double i_windowZ);
/// `i_count` tilted boxes with edges of 4 to 12 % of the extent and centres within the cube of that edge around the
/// origin, as one mesh. They may overlap.
ClumMeshShPtr clutter(unsigned int i_seed, unsigned int i_count, double i_extent);

/// One mesh of several, each at its frame.
ClumMeshShPtr joined(const std::vector<ClumPlacedLeaf>& i_meshes);
/// A mesh of the same triangles, moved and scaled: the scale first.
ClumMeshShPtr moved(const ClumMesh& i_mesh, const ClumMat4& i_frame, double i_scale = 1.0);
/// The same surface with every triangle cut into four again and again, until there are at least so many.
ClumMeshShPtr refined(const ClumMesh& i_mesh, std::size_t i_least);
