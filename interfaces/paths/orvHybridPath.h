#pragma once

#include "paths/orvAbstractPath.h"

#include <vector>

/// A chain of paths of different spaces, seen from one ambient space.
///
/// A task changes its space where a part is grasped or let go: each held path lives in the space of its stage.
/// Configurations that go in and out are of the ambient space, and converted. Paths are held as copies that share their
/// direct paths. A distance on a junction belongs to the earlier path. An edit that fails leaves the path as it was.
class LUM_API CorvHybridPath : public CorvAbstractPath
{
  LUM_CONCRETE(CorvHybridPath, CorvAbstractPath);

public:
  static const unsigned int NULL_PATH_ERROR;
  static const unsigned int GET_START_CONFIG_ERROR;
  static const unsigned int GET_END_CONFIG_ERROR;
  static const unsigned int CONFIG_CONVERSION_ERROR;
  static const unsigned int INVALID_CONFIG_SPACE_SIZE_ERROR;
  static const unsigned int NON_EQUIVALENT_CONFIGS_ERROR;
  static const unsigned int EMPTY_PATH_ERROR;

  ~CorvHybridPath() override;
  /// An empty path. @return null without a space.
  static CorvHybridPathShPtr create(const CorvConfigSpaceShPtr& i_ambientSpace);
  /// A new hybrid path that shares the paths.
  static CorvHybridPathShPtr createCopy(const CorvHybridPathConstShPtr& i_objectToCopy);
  /// Edited copies, null on failure.
  static CorvHybridPathShPtr createByExtracting(const CorvHybridPathConstShPtr& i_path, double i_from, double i_to);
  static CorvHybridPathShPtr createByExtractingFrom(const CorvHybridPathConstShPtr& i_path, double i_from);
  static CorvHybridPathShPtr createByExtractingTo(const CorvHybridPathConstShPtr& i_path, double i_to);
  static CorvHybridPathShPtr createByExtractingPaths(const CorvHybridPathConstShPtr& i_path, unsigned int i_first,
                                                     unsigned int i_last);
  static CorvHybridPathShPtr createReversed(const CorvHybridPathConstShPtr& i_path);
  CorvAbstractPathShPtr clone() const override;

  const CorvConfigSpaceShPtr& ambientSpace() const { return m_ambientSpace; }
  unsigned int countPaths() const { return static_cast<unsigned int>(m_paths.size()); }
  /// Null out of range.
  CorvPathConstShPtr path(unsigned int i_rank) const;
  bool isEmpty() const { return m_paths.empty(); }
  /// The path at a distance, with its rank; null without paths. `io_distance` becomes the distance within it.
  CorvPathConstShPtr pathAtDistance(double& io_distance, unsigned int& o_rank) const;

  /// Adds a copy of a path whose start, in the ambient space, is equivalent to the end, or whose end to the start.
  lmStatus appendPath(const CorvPathConstShPtr& i_path);
  lmStatus prependPath(const CorvPathConstShPtr& i_path);
  /// Appends all paths of another hybrid path, or none.
  lmStatus appendHybridPath(const CorvHybridPathConstShPtr& i_path);
  /// Keeps the paths from `i_first` up to but without `i_last`. @return -1 for ranks beyond the count, or out of order.
  lmStatus extractPaths(unsigned int i_first, unsigned int i_last);
  void clear();

  double length() const override;
  /// @param o_cfg becomes a configuration of the ambient space.
  lmStatus getConfigAtDistance(double i_distance, CorvConfig& o_cfg) const override;
  lmStatus getConfigAtStart(CorvConfig& o_cfg) const override;
  lmStatus getConfigAtEnd(CorvConfig& o_cfg) const override;
  CorvConfigSpaceShPtr configSpace() const override;
  bool isOriented() const override;
  void describe(const CorvPathVisitorShPtr& i_visitor) const override;
  /// Fails: the held paths are validated, each in its space.
  lmStatus boundedMoveByBody(double i_tStart, EDirection i_direction, double& o_tGoal, bool& o_hitsEnd,
                             std::vector<double>& io_maxDistances) const override;
  lmStatus extractFrom(double i_from) override;
  lmStatus extractTo(double i_to) override;
  lmStatus extract(double i_from, double i_to) override;
  lmStatus reverse() override;
  void deviceVersionChanged() override;

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

protected:
  CorvHybridPath() = default;
  explicit CorvHybridPath(const CorvConfigSpaceShPtr& i_ambientSpace);
  CorvHybridPath(const CorvHybridPath&) = default;
  lmStatus init(const CorvHybridPathWkPtr& i_weakPtr);

private:
  using TPaths = std::vector<CorvPathConstShPtr>;

  lmStatus getConvertedEnd(const CorvPath& i_path, EDirection i_direction, CorvConfig& o_cfg) const;
  lmStatus addPath(const CorvPathConstShPtr& i_path, EDirection i_end);
  void exchangePaths(TPaths& io_paths);

  CorvConfigSpaceShPtr m_ambientSpace;
  TPaths m_paths;
  std::vector<CorvDeviceShPtr> m_decodedDevices; ///< keeps what a decoded path's spaces refer to
};
