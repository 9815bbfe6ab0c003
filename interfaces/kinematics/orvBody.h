#pragma once

#include "foundation/handles.h"
#include "foundation/lumCodable.h"
#include "foundation/lumMat4.h"
#include "kinematics/handles.h"
#include "validation/handles.h"

#include <vector>

class CorvConfig;

/// The solid that a joint carries: it stands between the kinematic tree and the collision layer.
///
/// A body has a frame in its joint's frame (`relativePosition`) and one in the world (`absolutePosition`); the second
/// follows from the joint whenever the joint moves. `place` shows the shape somewhere else without touching either. The
/// version counts the changes of shape and relative position, never motion. Tolerance modifiers are lengths by which
/// a body may come closer than contact; they and the tolerance's activation are stacked by push and pop.
///
/// The joint owns its body, the body refers to its joint weakly. A body is used by one thread at a time.
class LUM_API CorvBody : public ClumMutableCodable
{
  LUM_ABSTRACT(CorvBody, ClumMutableCodable);

public:
  /// What a distance query of a body answers.
  enum EDistanceComputationMethod
  {
    NO_DISTANCE = 0,             ///< touching or not
    ESTIMATED_DISTANCE = 1,      ///< a cheap lower bound
    EXACT_DISTANCE = 2,          ///< the distance, to the precision asked for
    DISTANCE_WITH_TOLERANCE = 3, ///< the exact distance, net of the tolerance
    PENETRATION_DISTANCE = 4     ///< signed: negative when in collision
  };

  /// Which fields of an analysis record count; for the others the body takes its own state.
  enum EDataFieldFlags
  {
    METHOD_FIELD = 1,
    PRECISION_FIELD = 2,
    POSITION_FIELD = 4,
    MODIFIER_FIELD = 8,
    ACTIVATION_FIELD = 16
  };

  /// What a collision analysis of a body is asked for.
  class LUM_API CCollisionAnalysisParameters
  {
  public:
    CCollisionAnalysisParameters() = default;
    explicit CCollisionAnalysisParameters(EDistanceComputationMethod i_method) : distanceComputationMethod(i_method) {}
    CCollisionAnalysisParameters(EDistanceComputationMethod i_method, double i_precision)
      : distanceComputationMethod(i_method), exactDistancePrecision(i_precision)
    {
    }
    CCollisionAnalysisParameters(EDistanceComputationMethod i_method, double i_precision, const ClumMat4& i_position,
                                 double i_modifier, bool i_activation, EDataFieldFlags i_fields)
      : distanceComputationMethod(i_method), exactDistancePrecision(i_precision), toleranceModifier(i_modifier),
        toleranceActivation(i_activation), bodyPosition(i_position), fieldsToUse(i_fields)
    {
    }

    bool uses(EDataFieldFlags i_field) const { return (fieldsToUse & i_field) != 0; }

    EDistanceComputationMethod distanceComputationMethod = ESTIMATED_DISTANCE;
    double exactDistancePrecision = 0.0;
    double toleranceModifier = 0.0; ///< added to the body's own
    bool toleranceActivation = true;
    ClumMat4 bodyPosition; ///< absolute frame to analyse the body at
    EDataFieldFlags fieldsToUse = static_cast<EDataFieldFlags>(METHOD_FIELD | PRECISION_FIELD);
  };

  /// A ball in the body frame.
  struct CEnclosingBall
  {
    ClumPoint3 center;
    double radius = 0.0;
  };

  ~CorvBody() override;

  virtual CorvBodyShPtr clone() const = 0;

  /// The joint that carries the body; null for a free body.
  CorvJointShPtr joint() const;
  void jointWkPtr(const CorvJointWkPtr& i_joint);
  unsigned int version() const { return m_version; }

  const ClumMat4& relativePosition() const { return m_relativePosition; }
  /// Sets the body's frame in its joint's frame; the body moves.
  virtual void relativePosition(const ClumMat4& i_position);
  /// Makes the relative position that of the absolute one in the joint's present frame: the body stays where it is.
  virtual void updateRelativePosition();
  const ClumMat4& absolutePosition() const { return m_absolutePosition; }
  /// Puts the body at a world frame, by its relative position.
  void absolutePosition(const ClumMat4& i_position);
  void updateAbsolutePosition();
  /// Shows the shape at a frame; the body's own frames stay.
  void place(const ClumMat4& i_position);

  /// The body's own dofs: takes its part of a configuration. -1 for a body without dofs.
  virtual lmStatus setCurrentConfig(const CorvConfig& i_config);
  /// The space of the body's own dofs, the void space by default.
  virtual CorvConfigSpaceShPtr configSpace() const;
  /// The largest tolerance of the active tests of this body. -1 where a kind of body has no tolerance.
  virtual lmStatus getMaximumTolerance(double& o_tolerance) const;
  /// An upper bound of the speed of the shape's points within the body frame under the body's own dof velocities.
  virtual lmStatus forwardVelocity(const double* i_velocities, double& o_velocity) const;
  lmStatus forwardVelocity(const std::vector<double>& i_velocities, double& o_velocity) const;
  lmStatus forwardVelocity(const CorvConfig& i_velocities, double& o_velocity) const;
  virtual lmStatus inverseVelocity(double i_vx, double i_vy, double i_vz, std::vector<double>& o_velocities) const;

  virtual bool canCheckCollisions() const;
  /// @param o_distance what the method asks for, over all tests of this body; +infinity without a test.
  virtual bool isColliding(const CCollisionAnalysisParameters& i_parameters, double& o_distance) const;
  /// The smallest distance over all tests of this body, to a precision, with the nearest points in the world frame, the
  /// first on this body.
  virtual lmStatus measureDistance(double i_precision, double& o_distance, ClumPoint3& o_onBody,
                                   ClumPoint3& o_onOther) const;
  /// The distance where the body stands: a cheap lower bound, or exact to a precision. -1 if the body cannot tell.
  lmStatus getEstimatedDistance(double& o_distance) const;
  lmStatus getExactDistance(double& o_distance, double i_precision) const;

  virtual lmStatus getToleranceActivation(bool& o_activation) const;
  virtual lmStatus setToleranceActivation(bool i_activation);
  virtual lmStatus getToleranceModifier(double& o_modifier) const;
  virtual lmStatus setToleranceModifier(double i_modifier);
  /// Adds to the modifier until the pop, or sets the activation. -1, without effect, where the body has no tolerance;
  /// a pop on an empty stack gives -1.
  lmStatus pushToleranceModifier(double i_modifier);
  lmStatus popToleranceModifier();
  lmStatus pushToleranceActivation(bool i_activation);
  lmStatus popToleranceActivation();

  /// The same joint-relative frame; kinds of bodies add their shape.
  virtual bool operator==(const CorvBody& i_other) const;

  /// The smallest size at which the shape is analysed at a given precision, and its lower limit; 0 by default.
  virtual double getMicroElement(double i_size) const;
  virtual double getMicroElementMinSize() const;

protected:
  virtual void placeBody(const ClumMat4& i_position) = 0;

public:
  /// A collision validator of the class that tests this kind of body; null if there is none.
  virtual CorvValidatorCfgCollisionBaseShPtr makeValidator(const CorvConfigSpaceShPtr& i_space) const;
  /// Appends a few balls whose convex hull holds the whole shape, in the body frame. None for a body without a shape.
  virtual void getEnclosingBalls(std::vector<CEnclosingBall>& io_balls) const;

  /// Called after every change of shape or relative position.
  void didChange();

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

protected:
  CorvBody() = default;
  CorvBody(const CorvBody& i_other);
  lmStatus init(const CorvBodyWkPtr& i_weakPtr);

private:
  CorvJointWkPtr m_joint;
  ClumMat4 m_relativePosition;
  ClumMat4 m_absolutePosition;
  unsigned int m_version = 0;
  std::vector<double> m_savedModifiers;
  std::vector<bool> m_savedActivations;
};
