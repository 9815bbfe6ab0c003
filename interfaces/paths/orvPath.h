#pragma once

#include "kinematics/orvConfig.h"
#include "kinematics/orvValidable.h"
#include "paths/orvAbstractPath.h"

#include <string>
#include <vector>

/// A chain of direct paths, each starting where the last one ends, in one space: what planners produce.
///
/// A path has one of three shapes: empty, a single configuration, or n direct paths. Direct paths are shared between
/// paths and never changed through one. Every edit builds its result first and exchanges it within the notifications:
/// one that fails leaves the path as it was and sends nothing.
///
/// There is no table of lengths: each query walks the chain. A distance that falls on a junction belongs to the earlier
/// direct path.
class LUM_API CorvPath : public CorvAbstractPath, public CorvValidable
{
  LUM_CONCRETE(CorvPath, CorvAbstractPath);

public:
  static const unsigned int WILL_CHANGE_CONFIGURATION_COUNT;
  static const unsigned int DID_CHANGE_CONFIGURATION_COUNT;
  /// Integers: WILL carries the new count, DID the old one, both the affected index, -1 if no single one is.
  static const std::string AFFECTED_INDEX_KEY;
  static const std::string NEW_COUNT_KEY;
  static const std::string OLD_COUNT_KEY;

  static const unsigned int DIRECT_PATH_ALREADY_EXIST_ERROR;
  static const unsigned int EMPTY_PATH_ERROR;
  static const unsigned int EQUAL_PATHS_ERROR;
  static const unsigned int GET_END_CONFIG_ERROR;
  static const unsigned int GET_START_CONFIG_ERROR;
  static const unsigned int INCONSISTENT_CONFIG_SPACE_ERROR;
  static const unsigned int INVALID_DIRECT_PATH_ERROR;
  static const unsigned int NON_EQUIVALENT_CONFIGS_ERROR;
  static const unsigned int NULL_DIRECT_PATH_ERROR;
  static const unsigned int SET_INITIAL_CONFIG_ERROR;

  ~CorvPath() override;
  static CorvPathShPtr create(const CorvConfigSpaceShPtr& i_cfgSpace);
  static CorvPathShPtr create(const CorvDeviceShPtr& i_device);
  static CorvPathShPtr createWithConfig(const CorvConfig& i_cfg);
  static CorvPathShPtr createWithDirectPath(const CorvDirectPathConstShPtr& i_directPath);
  static CorvPathShPtr createWithDirectPath(const CorvConfig& i_start, const CorvConfig& i_end);
  /// A new path that shares the direct paths.
  static CorvPathShPtr createCopy(const CorvPathConstShPtr& i_objectToCopy);
  /// A new path of copied direct paths.
  static CorvPathShPtr createDeepCopy(const CorvPathConstShPtr& i_path);
  static CorvPathShPtr createByExtractingDirectPaths(const CorvPathConstShPtr& i_path, unsigned int i_first,
                                                     unsigned int i_last);
  static CorvPathShPtr createByExtracting(const CorvPathConstShPtr& i_path, double i_from, double i_to);
  static CorvPathShPtr createByExtractingFrom(const CorvPathConstShPtr& i_path, double i_from);
  static CorvPathShPtr createByExtractingTo(const CorvPathConstShPtr& i_path, double i_to);
  static CorvPathShPtr createReversed(const CorvPathConstShPtr& i_path);
  CorvAbstractPathShPtr clone() const override;
  /// Takes over content and space, with the notifications of an edit.
  CorvPath& operator=(const CorvPath& i_other);

  /// Only for a path without direct paths.
  lmStatus setInitialConfig(const CorvConfig& i_cfg);
  /// Steers from the end to a configuration; on an empty path sets the initial one.
  lmStatus addConfiguration(const CorvConfig& i_cfg);
  lmStatus appendDirectPath(const CorvDirectPathConstShPtr& i_directPath);
  lmStatus appendDirectPath(const CorvConfig& i_start, const CorvConfig& i_end);
  lmStatus appendDirectPath(const CorvConfigConstShPtr& i_start, const CorvConfigConstShPtr& i_end);
  lmStatus appendPath(const CorvPathConstShPtr& i_path);
  /// Makes the path empty.
  void clear();

  bool isEmpty() const { return countConfigurations() == 0; }
  unsigned int countDirectPaths() const { return static_cast<unsigned int>(m_directPaths.size()); }
  /// Null out of range.
  CorvDirectPathConstShPtr directPath(unsigned int i_rank) const;
  /// The direct path at a distance, with its rank. `io_distance` becomes the distance within it, 0 with a null result.
  CorvDirectPathConstShPtr directPathAtDistance(double& io_distance, unsigned int& o_rank) const;
  unsigned int countConfigurations() const;
  /// @pre `i_rank` is below the count; otherwise an assertion is raised and the initial configuration given.
  const CorvConfig& configuration(unsigned int i_rank) const;
  lmStatus getConfiguration(unsigned int i_rank, CorvConfig& o_cfg) const;

  /// Moves a waypoint: the direct paths that touch it are made anew by their own steering methods.
  lmStatus setConfiguration(unsigned int i_rank, const CorvConfig& i_cfg);
  /// Keeps the direct paths from `i_first` up to but without `i_last`.
  lmStatus extractDirectPaths(unsigned int i_first, unsigned int i_last);
  lmStatus extractFromDirectPath(unsigned int i_first);
  lmStatus extractToDirectPath(unsigned int i_last);
  /// Replaces the direct paths from `i_first` up to but without `i_last`.
  lmStatus replacePart(unsigned int i_first, unsigned int i_last, const CorvPathConstShPtr& i_path);
  /// Replaces what lies between two distances.
  lmStatus replacePart(double i_from, double i_to, const CorvPathConstShPtr& i_path);
  lmStatus convert(const CorvConfigSpaceShPtr& i_space);

  double length() const override;
  lmStatus getConfigAtDistance(double i_distance, CorvConfig& io_cfg) const override;
  lmStatus getConfigAtStart(CorvConfig& io_cfg) const override;
  lmStatus getConfigAtEnd(CorvConfig& io_cfg) const override;
  CorvDeviceShPtr device() const override;
  CorvConfigSpaceShPtr configSpace() const override;
  const CorvConfigSpace* bareSpace() const override { return m_configSpace.get(); }
  bool isOriented() const override;
  void describe(const CorvPathVisitorShPtr& i_visitor) const override;
  lmStatus boundedMoveByBody(double i_tStart, EDirection i_direction, double& o_tGoal, bool& o_hitsEnd,
                             std::vector<double>& io_maxDistances) const override;
  /// From the end on, a path of the single last configuration.
  lmStatus extractFrom(double i_from) override;
  lmStatus extractTo(double i_to) override;
  /// May have cut the end when it fails.
  lmStatus extract(double i_from, double i_to) override;
  lmStatus reverse() override;
  void deviceVersionChanged() override;

  /// The largest penetration that the direct paths were validated with, -1 if some have not been.
  double maxPenetration() const;
  /// Runs the path validators of the space with the given penetration.
  bool validateWithPenetration(double i_penetration, bool i_exhaustive) const;

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
  CorvPath() = default;
  explicit CorvPath(const CorvConfigSpaceShPtr& i_cfgSpace);
  CorvPath(const CorvPath& i_other);
  lmStatus init(const CorvPathWkPtr& i_weakPtr);

private:
  using TDirectPaths = std::vector<CorvDirectPathConstShPtr>;
  struct CNotice;
  struct CEdit;

  template <class CHANGE>
  void changeContent(const CNotice& i_notice, unsigned int i_newCount, const CHANGE& i_change);
  CEdit makeEdit(TDirectPaths&& io_directPaths, const CorvConfig& i_ifNoneLeft) const;
  void exchange(CEdit& io_edit);
  void notifyCount(unsigned int i_id, const std::string& i_key, unsigned int i_count, int i_index) const;
  lmStatus checkReplacement(const CorvPathConstShPtr& i_path) const;
  lmStatus makeHead(double i_to, const CorvConfig& i_junction, TDirectPaths& io_directPaths) const;
  lmStatus makeTail(double i_from, const CorvConfig& i_junction, TDirectPaths& io_directPaths) const;
  void makeRest(double i_from, TDirectPaths& o_directPaths) const;

  CorvConfigSpaceShPtr m_configSpace;
  CorvConfig m_initialCfg;
  TDirectPaths m_directPaths;
  bool m_hasInitialCfg = false;
};
