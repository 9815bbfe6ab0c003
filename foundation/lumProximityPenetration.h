#pragma once

class ClumVect3;
class CProximityPair;

/// Looks for a short translation of the second shape that parts two touching ones.
///
/// Along any direction the two are parted once each is on its side of a plane. From there the way is shortened as far
/// as the shapes prove to be apart on it, along the directions of both frames, of the centres and of the contact.
/// @param io_pair moved about, and put back.
/// @param o_direction of unit length, in the coordinates of the first.
/// @return the length.
double lumProximityWayOut(CProximityPair& io_pair, ClumVect3& o_direction);
