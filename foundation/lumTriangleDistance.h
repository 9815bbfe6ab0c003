#pragma once

#include "foundation/lumExport.h"
#include "foundation/lumVect3.h"

/// The distance of two triangles, with a nearest point of each; 0 if they touch.
///
/// Triangles may be segments or points. The nine pairs of edges are measured first, and end the search when the plane
/// between the two points found has one triangle on either side; then corners against faces, which also tells whether
/// an edge pierces a face (as in Larsen, Gottschalk, Lin and Manocha, "Fast proximity queries with swept sphere
/// volumes", 1999). For a triangle of which the height is less than 3e-8 of its length, the face is passed over: the
/// distance may then be too large by that height.
LUM_API double lumTriangleDistance(const ClumVect3 i_s[3], const ClumVect3 i_t[3], ClumVect3& o_onS, ClumVect3& o_onT);

/// The distance of a point from a triangle, as accurate as the above.
LUM_API double lumPointTriangleDistance(const ClumVect3& i_point, const ClumVect3 i_triangle[3]);

/// By how much these distances may be too large because of the triangle's shape.
LUM_API double lumTriangleUncertainty(const ClumVect3 i_corners[3]);

/// True if an edge of one runs through the face of the other, by more than rounding could feign.
LUM_API bool lumAreSurelyPierced(const ClumVect3 i_s[3], const ClumVect3 i_t[3]);

/// The distance of two triangles, as the above, but to full precision whatever their shapes and however near they are:
/// in about 32 digits, a hundred times slower.
LUM_API double lumSureTriangleDistance(const ClumVect3 i_s[3], const ClumVect3 i_t[3]);

/// The unit normal of a triangle, correct to rounding; 0 if its height is less than 1e-12 of its length.
LUM_API ClumVect3 lumTriangleNormal(const ClumVect3 i_corners[3]);
