#pragma once

#include "foundation/lumStatus.h"
#include "kinematics/orvValidable.h"
#include "manifolds/handles.h"

#include <boost/container/small_vector.hpp>

#include <cstddef>
#include <memory>
#include <string>
#include <utility>
#include <vector>

/// The values of all dofs of a config space, in the order of their ranks.
///
/// A configuration is a value: it is copied freely, and up to eight dofs it allocates nothing. Read, it repairs itself
/// in two ways: if its space has changed since it was written it converts itself, by the identity of the dofs; and the
/// values that constraints compute are computed anew when they are stale. So a const read may write, and a
/// configuration serves one thread at a time. Code that reads many values asks once, with `beginPtr`.
///
/// A walk (`pushSpace`, `walkDofs`, `pushRestriction` and their ends) narrows the view to a sub-space: `space()`,
/// `size()` and all ranks are then those of the sub-space. While walking, a configuration neither converts nor
/// validates itself. Walks work on const configurations and must be ended as they were begun.
class LUM_API CorvConfig : public CorvValidable
{
public:
  /// Without a space, of size 0.
  CorvConfig();
  /// All values are 0.
  explicit CorvConfig(const CorvConfigSpaceShPtr& i_space);
  explicit CorvConfig(const CorvDeviceShPtr& i_device);
  /// Values beyond the space's size are ignored, missing ones are 0.
  CorvConfig(const CorvConfigSpaceShPtr& i_space, const std::vector<double>& i_values);
  CorvConfig(const CorvDeviceShPtr& i_device, const std::vector<double>& i_values);
  /// With the values from rank `i_first` of the vector on.
  CorvConfig(const CorvConfigSpaceShPtr& i_space, unsigned int i_first, const std::vector<double>& i_values);
  /// Reads what `encodeValueWithCoder` wrote.
  CorvConfig(ClumCoder& i_coder, const std::string& i_key);
  CorvConfig(const ClumCoderShPtr& i_coder, const std::string& i_key);
  CorvConfig(const CorvConfig& i_other)
    : CorvValidable(i_other), m_isSelfValidating(false), m_spaceVersion(i_other.m_spaceVersion),
      m_validationSpaceVersion(i_other.m_validationSpaceVersion), m_valueOffset(i_other.m_valueOffset),
      m_bottom(i_other.m_bottom), m_values(i_other.m_values)
  {
    if (i_other.m_walkDepth != 0)
      copyWalk(i_other);
  }
  CorvConfig& operator=(const CorvConfig& i_other)
  {
    CorvValidable::operator=(i_other);
    m_spaceVersion = i_other.m_spaceVersion;
    m_validationSpaceVersion = i_other.m_validationSpaceVersion;
    m_valueOffset = i_other.m_valueOffset;
    if (m_bottom.space != i_other.m_bottom.space)
      m_bottom.space = i_other.m_bottom.space;
    m_bottom.index = i_other.m_bottom.index;
    m_bottom.nbSubspaces = i_other.m_bottom.nbSubspaces;
    m_hasConversionFailed = false;
    m_values = i_other.m_values;
    if (m_walkDepth != 0 || i_other.m_walkDepth != 0)
      copyWalk(i_other);
    return *this;
  }
  ~CorvConfig() override {}

  static CorvConfigShPtr create();
  static CorvConfigShPtr create(const CorvConfigSpaceShPtr& i_space);
  static CorvConfigShPtr create(const CorvDeviceShPtr& i_device);
  static CorvConfigShPtr create(const CorvConfigSpaceShPtr& i_space, const std::vector<double>& i_values);
  static CorvConfigShPtr create(const CorvDeviceShPtr& i_device, const std::vector<double>& i_values);
  static CorvConfigShPtr create(const CorvConfigSpaceShPtr& i_space, unsigned int i_first,
                                const std::vector<double>& i_values);
  static CorvConfigShPtr create(ClumCoder& i_coder, const std::string& i_key);
  static CorvConfigShPtr create(const ClumCoderShPtr& i_coder, const std::string& i_key);
  static CorvConfigShPtr create(const CorvConfig& i_config);

  /// The space of the present view.
  const CorvConfigSpaceShPtr& space() const { return topFrame().space; }
  CorvConfigSpaceShPtr configSpace() const override { return topFrame().space; }
  const CorvConfigSpace* bareSpace() const override { return topFrame().space.get(); }
  CorvDeviceShPtr device() const;
  unsigned int size() const;

  /// @return 0, with a log entry, for a rank out of range.
  double dofValue(unsigned int i_rank) const;
  /// A write to a passive dof is dropped, unless a constraint is at work on this configuration or its self-validation
  /// is off; then it is stored without a notice. A write of an equal value changes nothing.
  void dofValue(unsigned int i_rank, double i_value);
  /// Writes all values, each as above, with one notice of change. @return -1, with nothing written, if the number of
  /// values is not `size()`.
  lmStatus setDofValues(const std::vector<double>& i_values);
  lmStatus setDofValues(const double* i_values, unsigned int i_count);
  /// @return -1 without a space, or if the values could not be converted to the space as it is now.
  lmStatus getDofValues(std::vector<double>& o_values) const;
  std::vector<double> dofValues() const;
  /// The values as they stand in memory, brought up to date once; good until the next write, conversion or walk.
  /// Null without a space, or if the values could not be converted to it.
  const double* beginPtr() const;
  const double* beginValues() const { return beginPtr(); }
  const double* endValues() const;
  std::pair<const double*, const double*> valueRange() const;
  /// Sets all values to 0.
  void clear();

  /// Copies the values of a configuration of a sub-space in. @return -1 if its space does not lie in this one.
  lmStatus inject(const CorvConfig& i_subCfg);
  /// A configuration of a sub-space with the values of its dofs; without a space if the sub-space is not found.
  CorvConfig restrict(const CorvConfigSpaceShPtr& i_subspace) const;
  CorvConfig restrict(unsigned int i_subspaceRank) const;

  /// Brings the values to the present version of the space. @return -1 without a space, or if that is impossible.
  lmStatus convert() const;
  /// Carries the values over to another space: a dof that both have keeps its value; a dof that is new takes what stood
  /// at its rank, or 0. On failure the configuration stays as it was.
  lmStatus convert(const CorvConfigSpaceShPtr& i_space);
  /// @param i_map for each rank of the new space the rank here, or -1.
  lmStatus convert(const CorvConfigSpaceShPtr& i_space, const std::vector<int>& i_map);
  lmStatus makeDofMap(const CorvConfigSpaceShPtr& i_space, std::vector<int>& o_map) const;
  /// Puts the values on another space of the same dofs; verdicts and reports stay. @return -1 if the dofs differ.
  lmStatus changeSpaceWithoutInvalidation(const CorvConfigSpaceShPtr& i_space);

  /// A walk over the direct sub-spaces: `pushSpace` enters the first, `nextSubspace` goes on (-1 past the last),
  /// `popSpace` returns. @return -1 from `pushSpace` if there is none, from `popSpace` if nothing was pushed.
  lmStatus pushSpace() const;
  lmStatus nextSubspace() const;
  lmStatus popSpace() const;
  /// The same over the dofs.
  lmStatus walkDofs() const;
  lmStatus nextDof() const;
  lmStatus endWalk() const;
  /// Narrows the view to a space that lies in the present one. @return -1 if it does not.
  lmStatus pushRestriction(const CorvConfigSpaceShPtr& i_subspace) const;
  lmStatus popRestriction() const;

  /// By the metric of the space; +infinity without one.
  double distanceTo(const CorvConfig& i_config) const;
  double squaredDistanceTo(const CorvConfig& i_config) const;
  /// Same space and a distance of at most 1e-10.
  bool isEquivalent(const CorvConfig& i_config) const;
  /// Draws the free dofs: between the bounds of a bounded one, otherwise a step of its metric's walk.
  void randomize();
  /// A random step by the metric of the space.
  void randomStep(double i_step);
  /// By the collision validator of the device. @return -1 without one.
  lmStatus isColliding(bool& o_isColliding) const;
  lmStatus isColliding(const ClumParameterMapConstShPtr& i_params, bool& o_isColliding) const;
  /// Frames of the device's bodies, or joints, at this configuration; nothing is moved. @return -1 without a device.
  lmStatus getBodyMatVector(std::vector<ClumMat4>& o_matrices) const;
  lmStatus getJointMatVector(std::vector<ClumMat4>& o_matrices) const;
  lmStatus getJointAbsoluteMatVector(std::vector<ClumMat4>& o_matrices) const;
  /// The manifold of this one configuration in an ambient space. @return null without a space, here or there.
  CorvManifoldShPtr toManifold(const CorvConfigSpaceShPtr& i_ambientSpace) const;

  using CorvValidable::validate;
  /// Runs the configuration validators of the space. @return `isValid()` afterwards.
  bool validate(const ClumParameterMapConstShPtr& i_params) const override;
  bool needsRevalidationWith(const CorvValidator& i_validator, const ClumParameterMapConstShPtr& i_params,
                             const CorvValidationReportConstShPtr& i_report) const override;
  CorvValidatorShPtr designatedValidator() const override;
  bool canSelfValidate() const override { return m_walkDepth == 0; }
  bool mustSelfValidate() const override;
  bool doSelfValidate() override;
  bool doValidateWith(const CorvValidator& i_validator, const ClumParameterMapConstShPtr& i_params,
                      const CorvValidationReportConstShPtr& i_report, CorvValidationReportShPtr& o_report) override;
  /// True while the constraints of the space are at work on this configuration.
  bool isSelfValidating() const { return m_isSelfValidating; }

  /// Value by value; the result is on the space of the left operand.
  CorvConfig operator+(const CorvConfig& i_config) const;
  CorvConfig operator-(const CorvConfig& i_config) const;
  CorvConfig operator*(double i_factor) const;
  CorvConfig operator/(double i_divisor) const;
  CorvConfig& operator+=(const CorvConfig& i_config);
  CorvConfig& operator-=(const CorvConfig& i_config);
  CorvConfig& operator*=(double i_factor);

  /// The very same space and exactly equal values.
  bool operator==(const CorvConfig& i_config) const;
  bool operator!=(const CorvConfig& i_config) const { return !(*this == i_config); }
  /// A copy in which the value of each unbounded revolute dof lies in [-pi, pi).
  CorvConfig canonical() const;

  /// Hashes the values; 0.0 and -0.0 alike.
  struct LUM_API hash
  {
    std::size_t operator()(const CorvConfig& i_config) const;
  };
  /// Hashes the values of `canonical()`.
  struct LUM_API canonical_hash
  {
    std::size_t operator()(const CorvConfig& i_config) const;
  };
  /// Lexicographic by the values, but false between equivalent configurations. Not an order to sort by: equivalence
  /// within a tolerance is not transitive.
  struct LUM_API less
  {
    bool operator()(const CorvConfig& i_a, const CorvConfig& i_b) const;
  };
  struct LUM_API equivalent_to
  {
    bool operator()(const CorvConfig& i_a, const CorvConfig& i_b) const;
  };
  /// Same space and equal values, those of unbounded revolute dofs up to whole turns.
  struct LUM_API canonically_equal_to
  {
    bool operator()(const CorvConfig& i_a, const CorvConfig& i_b) const;
  };

  void encodeValueWithCoder(ClumCoder& i_coder, const std::string& i_key) const;
  /// True if there is a space, and the values stand for the dofs that it has or had at the version told. What decodes
  /// a configuration asks this before it takes it.
  bool hasSoundValues() const;
  /// The coded form under the key "config", as the text of a file.
  std::string textualDump() const;

private:
  friend class CorvConfigSpace;

  /// One step of a walk. The index is the rank of the sub-space, or of the dof, that the walk stands at.
  struct CFrame
  {
    CorvConfigSpaceShPtr space;
    unsigned int index = 0;
    unsigned int nbSubspaces = 0;
    unsigned int outerOffset = 0; ///< the value offset to return to
  };
  using TValues = boost::container::small_vector<double, 8>;

  /// Marks `m_spaceVersion` while decoded values were not yet held against the space: no version has this bit.
  static constexpr unsigned int UNCHECKED = 0x80000000u;

  const CFrame& topFrame() const { return m_walkDepth == 0 ? m_bottom : m_walk->back(); }
  void copyWalk(const CorvConfig& i_other);
  void pushFrame(const CorvConfigSpaceShPtr& i_space, unsigned int i_offset) const;
  void popFrame() const;
  lmStatus endFrame() const;
  lmStatus nextFrame(const CorvConfigSpaceShPtr& i_space, unsigned int i_step) const;
  void fillFrom(const double* i_values, std::size_t i_count);
  void decode(ClumCoder& i_coder, const std::string& i_key);
  void selfConvert() const;
  bool isConversionDue() const;
  bool bringUpToDate() const;
  lmStatus convertValues(const CorvConfigSpaceShPtr& i_space, const std::vector<int>* i_map);
  bool makeConvertedValues(const CorvConfigSpace& i_space, const std::vector<int>* i_map, TValues& o_values) const;
  bool isPassive(unsigned int i_valueRank) const;
  void randomizeDof(unsigned int i_rank);
  template <class OPERATION>
  CorvConfig& combine(const CorvConfig& i_config, OPERATION i_operation);

  mutable bool m_isSelfValidating = false;
  mutable bool m_isConverting = false;
  mutable bool m_hasConversionFailed = false; ///< at the version in `m_failedVersion`
  mutable unsigned int m_walkDepth = 0;       ///< frames on `m_walk`, which stays allocated when it is empty
  mutable unsigned int m_spaceVersion = 0;
  mutable unsigned int m_validationSpaceVersion = 0;
  mutable unsigned int m_failedVersion = 0;
  mutable unsigned int m_valueOffset = 0;
  mutable CFrame m_bottom;
  mutable std::unique_ptr<std::vector<CFrame>> m_walk;
  mutable TValues m_values;
};
