#pragma once

#include "constraints/handles.h"
#include "foundation/lumCodable.h"
#include "foundation/lumStringKey.h"
#include "kinematics/handles.h"
#include "paths/handles.h"
#include "paths/orvAbstractPath.h"
#include "validation/handles.h"

#include <string>
#include <vector>

class ClumMat;

/// What judges a configuration, a direct path or a path.
///
/// A validator answers yes or no, and leaves what it found as a report, under its name, on the thing that it judged. A
/// stored report answers the next call as long as `shouldRevalidate...` finds nothing that outdates it, so one
/// judgement is computed once. A subclass overrides the `doValidate...` operations of the kinds that it serves.
///
/// A validator watches one config space. On a device's space it holds the device instead and follows that device's
/// current space. Both references are weak: spaces own their validators.
///
/// `validate` keeps scratch parameters and writes reports on const validables: one validator serves one thread at a
/// time.
class LUM_API CorvValidator : public ClumMutableCodable
{
  LUM_ABSTRACT(CorvValidator, ClumMutableCodable);

public:
  ~CorvValidator() override;
  virtual CorvValidatorShPtr clone() const = 0;

  const std::string& name() const { return m_name.text(); }
  /// The same, to look a report up without hashing.
  const ClumStringKey& nameKey() const { return m_name; }
  /// The space watched: of the device, if the validator holds one. Null once both are gone.
  CorvConfigSpaceShPtr configSpace() const;
  /// The device that the validator holds, or that its space belongs to; null if there is none.
  CorvDeviceShPtr device() const;
  /// The same without a handle: it lives for as long as somebody else holds it.
  const CorvDevice* bareDevice() const;
  /// The space that the validator watches without the wrapper that clients see, for comparisons. Makes nothing.
  const CorvConfigSpace* unwrappedSpace() const;
  /// True if `configSpace()` is this very space.
  bool watches(const CorvConfigSpace& i_space) const;

  bool isActivated() const { return m_isActivated; }
  /// A deactivated validator passes everything. Invalidates the space.
  void isActivated(bool i_isActivated);
  /// Redirects where results are stored; null stores them on the validable itself.
  void pool(const CorvValidationPoolShPtr& i_pool) { m_pool = i_pool; }
  const CorvValidationPoolShPtr& pool() const { return m_pool; }

  /// The one entry of all validators. Answers true, and drops an older report, if the validator is deactivated or the
  /// validable fails its own self-validation.
  bool validate(const CorvValidable& i_validable) const;
  bool validate(const CorvValidable& i_validable, const ClumParameterMapConstShPtr& i_params) const;
  /// Validates and drops the answer.
  void apply(CorvValidable& io_validable) const;
  void apply(CorvValidable& io_validable, const ClumParameterMapConstShPtr& i_params) const;
  /// @return the report that this validator left, null if there is none or it must be made anew.
  CorvValidationReportConstShPtr upToDateReportFrom(const CorvValidable& i_validable) const;
  CorvValidationReportConstShPtr upToDateReportFrom(const CorvValidable& i_validable,
                                                    const ClumParameterMapConstShPtr& i_params) const;
  /// How far the motion stays valid from the public distance `i_param`, asked at the configuration there.
  lmStatus validMotion(const CorvDirectPath& i_dp, double i_param, CorvAbstractPath::EDirection i_direction,
                       const ClumParameterMapConstShPtr& i_params, double& o_bound, bool& o_exact) const;

  /// Appends this validator; a composite appends what its members append.
  virtual void getEmbeddedValidators(std::vector<CorvValidatorShPtr>& o_validators) const;
  /// A planner that changes attributes for a while puts them on a stack before and takes them back after.
  virtual void pushAttributes();
  virtual void popAttributes();
  virtual CorvValidatorShPtr validatorNamed(const std::string& i_name, bool i_deep) const;
  /// The number of leaf validators that write reports, and the one of the given rank, null past the end.
  virtual unsigned int deepCount() const;
  virtual CorvValidatorShPtr deepAt(unsigned int i_rank) const;
  /// Compares names.
  virtual bool operator==(const CorvValidator& i_other) const;
  virtual bool doesUseReports() const;

  /// The judgement itself. What a class does not serve is logged and answered by false.
  /// @param i_report the report found on the validable, perhaps stale, or null.
  /// @param o_report the new report, or null for none. The caller sets its verdict and stores it.
  virtual bool doValidateConfig(const CorvConfig& i_cfg, const ClumParameterMapConstShPtr& i_params,
                                const CorvValidationReportConstShPtr& i_report,
                                CorvValidationReportShPtr& o_report) const;
  virtual bool doValidateDirectPath(const CorvDirectPath& i_dp, const ClumParameterMapConstShPtr& i_params,
                                    const CorvValidationReportConstShPtr& i_report,
                                    CorvValidationReportShPtr& o_report) const;
  virtual bool doValidatePath(const CorvPath& i_path, const ClumParameterMapConstShPtr& i_params,
                              const CorvValidationReportConstShPtr& i_report,
                              CorvValidationReportShPtr& o_report) const;

  /// True if the stored report does not answer for these parameters and the present state of the world.
  virtual bool shouldRevalidateConfig(const CorvConfig& i_cfg, const ClumParameterMapConstShPtr& i_params,
                                      const CorvValidationReportConstShPtr& i_report) const;
  virtual bool shouldRevalidateDirectPath(const CorvDirectPath& i_dp, const ClumParameterMapConstShPtr& i_params,
                                          const CorvValidationReportConstShPtr& i_report) const;
  virtual bool shouldRevalidatePath(const CorvPath& i_path, const ClumParameterMapConstShPtr& i_params,
                                    const CorvValidationReportConstShPtr& i_report) const;

  /// How far along the direct path, as a travelled length, the motion stays valid from the configuration at `i_param`.
  /// @param o_exact false if the motion may stay valid beyond the bound.
  /// @return failure, with `o_bound` untouched, if no bound can be given; the caller then samples.
  virtual lmStatus validMotion(const CorvDirectPath& i_dp, double i_param, const CorvConfig& i_cfg,
                               CorvAbstractPath::EDirection i_direction, const ClumParameterMapConstShPtr& i_params,
                               double& o_bound, bool& o_exact) const;
  /// The spaces that the validator reads and those that it computes.
  virtual void getTransitivity(std::vector<CorvConfigSpaceShPtr>& o_input,
                               std::vector<CorvConfigSpaceShPtr>& o_output) const;
  virtual bool isImplicit() const;
  virtual lmStatus getLipschitzMatrix(ClumMat& o_matrix, const CorvDomainConstShPtr& i_domain) const;
  /// Tells the space that its judges have changed: its version goes up.
  virtual void didChange();
  virtual void didAddToConfigSpace();
  virtual void willRemoveFromConfigSpace();
  virtual bool doesRequireSpace() const;

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;
  /// The copy watches the same space or device.
  ClumCodableShPtr cloneByCoding() const override;

protected:
  friend class CorvConfigSpace;

  CorvValidator();
  CorvValidator(const CorvConfigSpaceShPtr& i_space, const std::string& i_name);
  CorvValidator(const CorvValidator& i_other);
  CorvValidator& operator=(const CorvValidator& i_other);
  /// Fails, with a warning, without a name, or without a space where one is required.
  lmStatus init(const CorvValidatorWkPtr& i_weakPtr);

  /// Under this key the parameters carry, as a pointer on a `CorvConfigSpace`, the space of the outermost validation.
  static const ClumStringKey& validationSpaceParameterKey();
  static const std::string& validationSpaceParameterName();
  /// The space under that key without its wrapper; null if the parameters carry none.
  static const CorvConfigSpace* unwrappedValidationSpace(const ClumParameterMapConstShPtr& i_params);

private:
  /// Watches the space, or the device whose space it is.
  void watch(const CorvConfigSpaceShPtr& i_space);
  void watch(const CorvConfigSpaceWkPtr& i_space, const CorvDeviceWkPtr& i_device);
  bool validateInSpace(const CorvValidable& i_validable, const ClumParameterMapConstShPtr& i_params) const;
  bool validateActivated(const CorvValidable& i_validable, const ClumParameterMapConstShPtr& i_params) const;

  bool m_isActivated = true;
  ClumStringKey m_name{""};
  CorvConfigSpaceWkPtr m_space; ///< unset if the device is held
  CorvDeviceWkPtr m_device;
  const CorvConfigSpace* m_bareSpace = nullptr; ///< what `m_space` leads to, for as long as it has not expired
  const CorvDevice* m_bareDevice = nullptr;
  CorvValidationPoolShPtr m_pool;
  mutable ClumParameterMapShPtr m_spaceParams; ///< scratch that carries the validation space; taken out while in use
};

/// The root of the validators that judge single configurations.
class LUM_API CorvConfigValidator : public CorvValidator
{
  LUM_ABSTRACT(CorvConfigValidator, CorvValidator);

public:
  ~CorvConfigValidator() override;

protected:
  CorvConfigValidator() = default;
  CorvConfigValidator(const CorvConfigSpaceShPtr& i_space, const std::string& i_name) : CorvValidator(i_space, i_name)
  {
  }
  CorvConfigValidator(const CorvConfigValidator&) = default;
  lmStatus init(const CorvConfigValidatorWkPtr& i_weakPtr);
};
