#pragma once

#include <cstdint>

// What the sources of the proximity kernel share. They are compiled for different instruction sets, so nothing here may
// have an inline function of its own, or include a header that has: the linker keeps one copy of it, of any of them.

/// An oriented box as it is read by itself: one line of the cache.
struct alignas(64) CProximityBox
{
  float center[3];
  std::uint32_t child;
  float axes[3][4]; ///< an axis, and the half along it; the largest first
};

/// Up to eight oriented boxes, each around the triangles of one child, number by number. All is single precision in the
/// model's frame. The points of a box are those of which the projections on its axes lie within `half` of the centre's;
/// the axes are orthonormal to rounding. A child that is not used has a negative half.
struct alignas(32) CProximityNode
{
  float center[3][8];
  float axes[3][3][8]; ///< axis, component, child
  float half[3][8];    ///< the largest first
  std::uint32_t firstBox;
  std::uint32_t countBoxes;
};

/// A ball of which every point belongs to the shape. Where there is none, the radius is negative.
struct alignas(16) CProximityBall
{
  float center[3];
  float radius;
};

/// The balls of a node's boxes, number by number.
struct alignas(32) CProximityBalls
{
  float center[3][8];
  float radius[8];
};

/// Four triangles. Where there are fewer, the first is repeated.
struct alignas(32) CProximityPacket
{
  double corners[3][3][4]; ///< corner, component, triangle
  double normal[3][4];     ///< of unit length; 0 for a triangle that is too thin to have one
  std::uint32_t id[4];     ///< the triangle's rank in the shape
};

/// Larger than all that is compared in single precision.
constexpr float PROXIMITY_LARGEST = 3.4e38f;
/// The radius of a ball that is none.
constexpr float PROXIMITY_NO_BALL = -1e30f;

/// A child is a node, or a leaf of one to four adjacent triangles in a packet. A triangle's place is 4 times the
/// packet's rank plus its number there.
constexpr std::uint32_t PROXIMITY_LEAF = 0x80000000u;
constexpr std::uint32_t PROXIMITY_NONE = 0xffffffffu;
constexpr unsigned int PROXIMITY_FIRST_SHIFT = 27;
constexpr unsigned int PROXIMITY_COUNT_SHIFT = 29;
constexpr std::uint32_t PROXIMITY_PACKET_MASK = (1u << PROXIMITY_FIRST_SHIFT) - 1u;

/// The deepest that a tree may be, in nodes.
constexpr unsigned int PROXIMITY_MAX_DEPTH = 72;
constexpr unsigned int PROXIMITY_STACK_SIZE = 2 * 8 * PROXIMITY_MAX_DEPTH;

/// A model as the kernel sees it. Node 0 has one child, the box around all.
struct CProximityTree
{
  const CProximityNode* nodes;
  const CProximityBox* boxes; ///< those of each node one after the other
  const CProximityPacket* packets;
  const CProximityBalls* nodeBalls; ///< of the first nodes
  const CProximityBall* balls;      ///< of the first boxes, the same ones
  std::uint32_t countNodeBalls;
  std::uint32_t countBalls;
  double radius; ///< of the ball around the origin that holds all triangles
};

/// Questions about single triangles, of three corners each, that the kernel leaves to others.
using TProximityIsPierced = bool (*)(const double i_row[9], const double i_lane[9]);
using TProximityDistance = double (*)(const double i_row[9], const double i_lane[9]);

/// A question about two placed models. Distances are those of the bare triangles.
struct CProximityQuery
{
  const CProximityTree* a;
  const CProximityTree* b;
  double rotation[9];    ///< from b to a, row by row
  double translation[3]; ///< of b in the coordinates of a
  double size;           ///< the two radii and the length of the translation
  double cap;            ///< no pair beyond it is of interest
  double share;          ///< 1 less the relative accuracy
  double sweep;          ///< by which the true distance is shorter
  double stop;           ///< a distance with which the search ends
  std::uint32_t hintA;   ///< a triangle's place, or none
  std::uint32_t hintB;
  TProximityIsPierced isPierced; ///< whether an edge runs through a face beyond doubt
  TProximityDistance distance;   ///< to full precision, however near they are
};

struct CProximityAnswer
{
  double best;  ///< the shortest distance found, or infinity; 0 without a place where two balls overlap
  double lower; ///< no pair of triangles is nearer
  std::uint32_t placeA;
  std::uint32_t placeB;
};

using TProximityVisit = void (*)(void* io_data, std::uint32_t i_leaf);

/// The kernel for one instruction set. All give the same bits.
struct CProximityKernel
{
  const char* name;
  void (*distance)(const CProximityQuery& i_query, CProximityAnswer& o_answer);
  /// Whether something is as near as `cap`, which must be `stop`; `share` must be 1. No lower bound is given.
  void (*contact)(const CProximityQuery& i_query, CProximityAnswer& o_answer);
  /// Visits all leaves that the segment from a point to `i_length` along +x may meet.
  void (*ray)(const CProximityTree& i_tree, const double i_from[3], double i_length, TProximityVisit i_visit,
              void* io_data);
};

extern const CProximityKernel g_proximityPortable;
#if defined(__x86_64__) && defined(__GNUC__)
#define LUM_PROXIMITY_X86 1
extern const CProximityKernel g_proximitySse2;
extern const CProximityKernel g_proximityAvx2;
#endif
