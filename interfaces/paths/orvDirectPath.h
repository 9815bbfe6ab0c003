#pragma once

#include "kinematics/orvConfig.h"
#include "kinematics/orvValidable.h"
#include "paths/orvAbstractPath.h"

#include <memory>
#include <string>

/// A single motion, made by a steering method: a window on a motion that never changes.
///
/// The motion runs from `privateStart()` to `privateEnd()` and has a private distance; cutting and reversing only move
/// the window, in which the public distance runs from 0 to `length()`. The ends of the window are configurations of
/// their own, given back bit for bit. Concrete classes speak private distance only.
///
/// A direct path is made and thrown away constantly: what few of them need (cached ends of a cut, marks) is made on
/// first use. These caches are filled by const operations and carry no lock.
class LUM_API CorvDirectPath : public CorvAbstractPath, public CorvValidable
{
  LUM_ABSTRACT(CorvDirectPath, CorvAbstractPath);

public:
  ~CorvDirectPath() override;

  static CorvDirectPathShPtr createCopy(const CorvDirectPathConstShPtr& i_objectToCopy);
  /// Parts of a path between public distances, or marks. A conservative path is cut; otherwise the steering method
  /// makes a new one between the two configurations. @return null if less than `minimumLength()` would remain.
  static CorvDirectPathShPtr createByExtracting(const CorvDirectPathConstShPtr& i_path, double i_from, double i_to);
  static CorvDirectPathShPtr createByExtractingFrom(const CorvDirectPathConstShPtr& i_path, double i_from);
  static CorvDirectPathShPtr createByExtractingTo(const CorvDirectPathConstShPtr& i_path, double i_to);
  static CorvDirectPathShPtr createByExtractingFromMark(const CorvDirectPathConstShPtr& i_path,
                                                        const std::string& i_mark);
  static CorvDirectPathShPtr createByExtractingToMark(const CorvDirectPathConstShPtr& i_path,
                                                      const std::string& i_mark);
  /// The way back. Null for a path that is oriented and conservative.
  static CorvDirectPathShPtr createReversed(const CorvDirectPathConstShPtr& i_path);
  static CorvDirectPathShPtr createByConvertingToSpace(const CorvDirectPathConstShPtr& i_path,
                                                       const CorvConfigSpaceShPtr& i_space);

  /// The shortest length that extraction may leave, excluded; 1e-7 at first.
  static double minimumLength();
  static void minimumLength(double i_length);

  double length() const override;
  lmStatus getConfigAtDistance(double i_distance, CorvConfig& io_cfg) const override;
  lmStatus getConfigAtParam(double i_param, CorvConfig& io_cfg) const override;
  lmStatus getConfigAtStart(CorvConfig& io_cfg) const override;
  lmStatus getConfigAtEnd(CorvConfig& io_cfg) const override;
  CorvDeviceShPtr device() const override;
  CorvConfigSpaceShPtr configSpace() const override;
  const CorvConfigSpace* bareSpace() const override { return m_start.bareSpace(); }
  bool isOriented() const override;
  void describe(const CorvPathVisitorShPtr& i_visitor) const override;
  lmStatus boundedMoveByBody(double i_tStart, EDirection i_direction, double& o_tGoal, bool& o_hitsEnd,
                             std::vector<double>& io_maxDistances) const override;
  lmStatus extractFrom(double i_from) override;
  lmStatus extractTo(double i_to) override;
  /// Cuts the end first: with `i_from` past `i_to` it fails with the end already cut.
  lmStatus extract(double i_from, double i_to) override;
  lmStatus reverse() override;
  void deviceVersionChanged() override;

  /// The public ends. The references hold until the path is cut, reversed, converted or unvalidated.
  virtual const CorvConfig& startConfiguration() const;
  virtual const CorvConfig& endConfiguration() const;

  /// Upper bounds of the absolute rate of each dof with respect to distance, between two *private* distances.
  virtual void maxAbsoluteDerivative(double i_from, double i_to, std::vector<double>& o_derivatives) const = 0;
  /// True if these are the same between any two distances.
  bool hasConstantRates() const { return m_hasConstantRates; }
  /// For a motion on which every dof keeps its velocity: writes these, with respect to distance, from start to end.
  /// @return false, and what is written means nothing, for any other.
  virtual bool getStraightVelocity(std::vector<double>& o_velocity) const;

  /// Converts all configurations that the path holds. Stops at the first failure.
  virtual lmStatus convert(const CorvConfigSpaceShPtr& i_space);

  const CorvConfig& privateStart() const { return m_start; }
  const CorvConfig& privateEnd() const { return m_end; }
  const CorvSteeringMethodShPtr& steeringMethod() const { return m_steeringMethod; }
  bool isConservative() const;
  /// The end from which one starts, or at which one arrives, in a direction.
  const CorvConfig& firstConfiguration(EDirection i_direction) const;
  const CorvConfig& lastConfiguration(EDirection i_direction) const;

  /// The private distance of a public one, which is first brought into the window.
  double publicToPrivateDistance(double i_distance) const;
  double privateToPublicDistance(double i_distance) const;

  /// `boundedMoveByBody` for a caller that has the configuration at `i_t`.
  lmStatus _boundedMoveByBodyWithConfig(double i_t, const CorvConfig& i_cfgAtT, EDirection i_direction, double& o_tGoal,
                                        bool& o_hitsEnd, std::vector<double>& io_maxDistances) const;

  /// Marks are named places of the motion, kept by private distance: cutting and reversing leave them where they are.
  /// They, and the configurations that go with them, can be set on a const path and are neither coded nor part of what
  /// the path is. @{
  void setMark(const std::string& i_mark, double i_distance) const;
  lmStatus getMarkDistance(const std::string& i_mark, double& o_distance) const;
  bool hasMark(const std::string& i_mark) const;
  lmStatus deleteMark(const std::string& i_mark) const;
  void clearMarks() const;
  void setMarkConfig(const std::string& i_mark, const CorvConfig& i_cfg) const;
  /// The configuration set with the mark, else the one at its distance, which is kept.
  lmStatus getMarkConfig(const std::string& i_mark, CorvConfigConstShPtr& o_cfg) const;
  /// Cuts at a mark; the new end is the mark's configuration itself, if it has one.
  lmStatus extractFromMark(const std::string& i_mark);
  lmStatus extractToMark(const std::string& i_mark);
  /// @}

  /// Runs the direct-path validators of the space with the given penetration.
  bool validateWithPenetration(double i_penetration) const;

  using CorvValidable::validate;
  void didUnvalidate() const override;
  bool needsRevalidationWith(const CorvValidator& i_validator, const ClumParameterMapConstShPtr& i_params,
                             const CorvValidationReportConstShPtr& i_report) const override;
  CorvValidatorShPtr designatedValidator() const override;
  bool doValidateWith(const CorvValidator& i_validator, const ClumParameterMapConstShPtr& i_params,
                      const CorvValidationReportConstShPtr& i_report, CorvValidationReportShPtr& o_report) override;

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

protected:
  CorvDirectPath();
  CorvDirectPath(const CorvConfig& i_start, const CorvConfig& i_end, const CorvSteeringMethodShPtr& i_steeringMethod);
  CorvDirectPath(const CorvDirectPath& i_other);
  CorvDirectPath& operator=(const CorvDirectPath&) = delete;
  /// Fails if there is no steering method or the ends are not of one space.
  lmStatus init(const CorvDirectPathWkPtr& i_weakPtr);

  /// The configuration at a private distance.
  virtual void interpolate(double i_distance, CorvConfig& io_cfg) const = 0;
  virtual double computePrivateLength() const = 0;
  virtual double privateLength() const;

  bool isReversed() const { return m_reversed; }
  bool isWindowWhole() const { return m_cutStart == 0.0 && m_cutEnd == 0.0; }
  double cutStart() const { return m_cutStart; }
  double cutEnd() const { return m_cutEnd; }
  /// For a class whose rates do not depend on where they are asked for; false at first.
  void hasConstantRates(bool i_areConstant) { m_hasConstantRates = i_areConstant; }

private:
  struct CExtras;

  CExtras& extras() const;
  bool isStartUncut() const { return (m_reversed ? m_cutEnd : m_cutStart) == 0.0; }
  bool isEndUncut() const { return (m_reversed ? m_cutStart : m_cutEnd) == 0.0; }
  const CorvConfig& publicStart() const { return m_reversed ? m_end : m_start; }
  const CorvConfig& publicEnd() const { return m_reversed ? m_start : m_end; }
  /// Keeps cuts and marks at their part of the motion when its length has changed.
  void stretchPlaces(double i_factor);
  void forgetStart();
  void forgetEnd();
  static lmStatus getMarkedPlace(const CorvDirectPath& i_path, const std::string& i_mark, double& o_distance,
                                 CorvConfigConstShPtr& o_cfg);
  static CorvDirectPathShPtr remake(const CorvDirectPath& i_path, const CorvConfig& i_start, const CorvConfig& i_end);

  CorvConfig m_start;
  CorvConfig m_end;
  CorvSteeringMethodShPtr m_steeringMethod;
  double m_cutStart = 0.0;
  double m_cutEnd = 0.0;
  mutable double m_privateLength = -1.0;     ///< negative until it is computed
  mutable std::unique_ptr<CExtras> m_extras; ///< cached public ends and marks, made on first use
  bool m_reversed = false;
  bool m_hasConstantRates = false;
};
