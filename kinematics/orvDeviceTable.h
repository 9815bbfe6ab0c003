#pragma once

#include "foundation/lumMat4.h"
#include "foundation/lumStatus.h"
#include "kinematics/handles.h"

#include <vector>

/// A device's tree as flat arrays, for forward kinematics and bounded moves that move nothing and allocate nothing.
///
/// Made from a tree for one version of it. Joints stand in depth-first order, so a parent comes before its children.
/// The fixed frames between joints are absorbed in one matrix a joint; the effects of the standard kinds are computed
/// here, others by their own `forward`. A joint whose dofs are not in the space stays where it is. The scratch arrays
/// belong to the table: one thread at a time. They keep the frames and levers of the configuration asked about last, so
/// that the questions of a proof, which come in threes, are answered from one placing.
class CorvDeviceTable
{
public:
  /// @param i_root null for a device without a tree. @param i_space in which the ranks of dofs are counted.
  CorvDeviceTable(const CorvJointConstShPtr& i_root, const CorvConfigSpace& i_space);

  unsigned int countBodies() const { return static_cast<unsigned int>(m_bodies.size()); }
  /// @param i_values of the dofs of the space that the ranks are counted in.
  void computeJointPositions(const double* i_values, std::vector<ClumMat4>& o_positions) const;
  void computeBodyPositions(const double* i_values, std::vector<ClumMat4>& o_positions) const;

  /// Motions that start at one configuration.
  struct CStart
  {
    const double* values = nullptr;
    const double* rates = nullptr; ///< finite; not below 0 but on a straight motion
    bool isStraight = false;       ///< all dofs keep just these rates, and each its sign
  };

  // The questions of `CorvMotionBound`. Each first makes sure that the table stands at the values and rates.

  /// @return -1 if a body's own shape changes with dofs, or an effect tells no velocity: no bound is known then.
  lmStatus prepare(const CStart& i_start) const;
  double advanceWithin(const CStart& i_start, const double* i_allowances, double i_rest) const;
  double advance(const CStart& i_start, double* io_allowances, double i_rest) const;
  void displacements(const CStart& i_start, double i_rest, double* o_moved) const;

private:
  /// The kinds whose frames and displacements are computed here.
  enum EKind
  {
    FIXED,
    ROTATION,
    TRANSLATION,
    DOUBLE_ROTATION,
    THREE_ROTATIONS,
    PLANE,
    FREE,
    OTHER
  };

  struct CJointRow
  {
    int parent; ///< rank, -1 for the root
    int mover;  ///< the nearest joint with dofs among this one and its ancestors, -1 if none
    EKind kind;
    unsigned int axis; ///< of a rotation or translation: 0, 1 or 2
    double sign;       ///< -1 for the inverse forms
    unsigned int firstDof;
    unsigned int countDofs;
    unsigned int countTurns; ///< rotations about axes that are known, one after the other
    bool isFixedIdentity;
    ClumMat4 fixed; ///< from the parent's frame to this joint's for a zero effect
    CorvKinematicalEffectConstShPtr effect;
  };

  /// Four points, coordinate by coordinate.
  struct CPointPack
  {
    double x[4];
    double y[4];
    double z[4];
  };

  /// Points of the same radius: the shape is within it of their hull. The last point fills up the last pack.
  struct CPointGroup
  {
    unsigned int first; ///< pack
    unsigned int count; ///< of packs
    double radius;
    double reach; ///< of the farthest point, from the origin of the mover's frame
  };

  struct CBodyRow
  {
    unsigned int joint;
    int mover; ///< the nearest joint with dofs, -1 for a body that nothing moves
    bool isFixedIdentity;
    ClumMat4 relative;
    std::vector<CPointPack> points; ///< in the mover's frame, behind its effect
    std::vector<CPointGroup> groups;
    unsigned int firstTerm;
    unsigned int countTerms;
  };

  /// A turn by a rate over an advance s: a point at distance 1 moves by no more than `chord`, S(rate) at s.
  struct CTurn
  {
    double rate;
    double chord;
    double slope; ///< the derivative of that by s
  };

  /// How a joint moves what it carries.
  struct CMotion
  {
    bool isMoving;
    double linear; ///< the speed of its translations
    unsigned int countTurns;
    CTurn turns[3];
    ClumVect3 axes[3]; ///< of the turns, in the world, through the origin of the joint's frame
    ClumVect3 ways[3]; ///< of the translations of a plane or free joint, in the world
    bool hasWhole;
    CTurn whole; ///< all its rotation as one, whose lever is the distance from the origin of the joint's frame
  };

  /// What one joint does to one body: its levers. Those that depend on the configuration are those of the first
  /// `countVarying` turns and, but for the body's own mover, `wholeLever`.
  struct CTerm
  {
    unsigned int joint;
    bool isOwn; ///< the joint is the body's mover
    unsigned int countVarying;
    bool isCurrent; ///< the levers are those of the configuration placed last
    double levers[3];
    double wholeLever;
  };

  /// The bounds of how far a body moves in an advance s, of which the lesser holds.
  ///
  /// One is linear·s and the terms of the joints that turn: each joint by itself, in whatever direction. The other is
  /// (speed + growth·s)·s, on straight motions: all joints together as they move at the start, and what that may
  /// change.
  struct CBound
  {
    bool isCurrent; ///< with the placing and the rates
    double linear;
    double slopeAtZero;
    double speed; ///< infinite if nothing is known of it
    double growth;
  };

  void addJoint(const CorvJoint& i_joint, int i_parent, const CorvConfigSpace& i_space);
  static void setKind(CJointRow& io_row);
  void addBody(const CorvBody& i_body, unsigned int i_joint);
  void setPoints(const CorvBody& i_body, CBodyRow& o_row);

  void addTerms(CBodyRow& io_body);

  double longestAdvance(const double* i_allowances, double i_rest) const;
  void place(const double* i_values) const;
  void forgetBounds() const;
  static void applyEffect(const CJointRow& i_row, const double* i_values, ClumMat4& io_frame, CMotion& io_motion);
  static lmStatus setRates(const CJointRow& i_row, const double* i_rates, CMotion& io_motion);
  void setLevers(const CBodyRow& i_body) const;
  void setTermLevers(const CBodyRow& i_body, CTerm& io_term) const;
  static void setOwnLevers(const CBodyRow& i_body, const CJointRow& i_mover, CTerm& o_term);
  static double largestReach(const CPointPack* i_begin, const CPointPack* i_end, const ClumPoint3& i_origin);
  static double largestSpeed(const CPointPack* i_begin, const CPointPack* i_end, const ClumVect3& i_shift,
                             const ClumVect3& i_turn);
  static void measureLevers(const CBodyRow& i_body, const ClumPoint3& i_origin, const ClumVect3* i_axes,
                            unsigned int i_first, unsigned int i_last, double i_height, CTerm& o_term);
  const CBound& boundOf(std::size_t i_body) const;
  void setSpeed(const CBodyRow& i_body, CBound& io_bound) const;
  void addVelocity(const CTerm& i_term, const ClumVect3& i_place, ClumVect3& io_shift, ClumVect3& io_turn) const;
  static double speedBound(const CBound& i_bound, double i_advance);
  static double advanceAtSpeed(const CBound& i_bound, double i_allowance);
  double slopeAtZero(const CTerm& i_term) const;
  void setAdvance(double i_advance) const;
  /// True if no turn is larger than an angle in an advance.
  bool areTurnsBelow(double i_angle, double i_advance) const;
  double displacement(const CBodyRow& i_body, const CBound& i_bound, double& o_slope) const;
  double bodyAdvance(double i_allowance, const CBodyRow& i_body, const CBound& i_bound, double i_longest) const;

  std::vector<CJointRow> m_joints;
  std::vector<CBodyRow> m_bodies;
  bool m_hasRigidBodies = true;

  bool m_hasOtherEffects = false; ///< whose frames may change without the table's notice
  mutable bool m_isPlaced = false;
  mutable bool m_hasRates = false;
  mutable double m_fastestTurn = 0.0;   ///< the largest rate of any turn
  mutable std::vector<double> m_values; ///< of the configuration placed last
  mutable std::vector<double> m_rates;  ///< that the motions have
  mutable std::vector<double> m_speeds; ///< their absolute values
  mutable bool m_isStraight = false;    ///< the rates are those of a straight motion
  mutable std::vector<ClumMat4> m_frames;
  mutable std::vector<CMotion> m_motions;
  mutable std::vector<CTerm> m_terms;
  mutable std::vector<CBound> m_bounds;
  mutable double m_advance = 0.0; ///< at which the turns' chords stand
};
