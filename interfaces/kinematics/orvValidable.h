#pragma once

#include "foundation/handles.h"
#include "foundation/lumExport.h"
#include "kinematics/handles.h"
#include "validation/handles.h"

#include <string>

class ClumStringKey;

/// What can be judged valid or invalid: a configuration, a direct path, a path.
///
/// Validators leave their findings here as reports, one for each validator name and space, and a report stands until
/// the object changes. The object also judges itself: before a verdict is given, a stale self-validation is run again.
/// A change drops every verdict (`unvalidate`); between `beginChange` and `endChange` only the first change does so.
///
/// Verdicts are kept and made up to date by const calls. Copies share their reports until one of them writes.
class LUM_API CorvValidable
{
public:
  virtual ~CorvValidable();

  virtual CorvConfigSpaceShPtr configSpace() const = 0;
  /// Runs the designated validator. @return `isValid()` afterwards.
  virtual bool validate(const ClumParameterMapConstShPtr& i_params) const;
  /// True if the object judges itself valid and no report on its space says otherwise.
  virtual bool isValid() const;
  /// Drops all reports and the verdict of the object on itself.
  virtual void unvalidate() const;
  virtual void didUnvalidate() const;
  /// True if the validator's stored report does not answer what the parameters ask.
  virtual bool needsRevalidationWith(const CorvValidator& i_validator, const ClumParameterMapConstShPtr& i_params,
                                     const CorvValidationReportConstShPtr& i_report) const;
  virtual CorvValidatorShPtr designatedValidator() const;
  /// True if self-validation is due and may run now.
  virtual bool shouldSelfValidate() const;
  virtual bool canSelfValidate() const;
  /// True if something outside the object made its verdict on itself stale.
  virtual bool mustSelfValidate() const;
  virtual bool doSelfValidate();
  /// Forwards to the validator's operation for this kind of object.
  virtual bool doValidateWith(const CorvValidator& i_validator, const ClumParameterMapConstShPtr& i_params,
                              const CorvValidationReportConstShPtr& i_report, CorvValidationReportShPtr& o_report);

  void beginChange() { ++m_changeDepth; }
  void didChange()
  {
    ++m_changeDepth;
    if (!m_isInChange)
    {
      m_isInChange = true;
      unvalidate();
    }
    endChange();
  }
  void endChange()
  {
    if (--m_changeDepth == 0)
      m_isInChange = false;
  }

  /// The verdict of the object on itself, brought up to date first.
  bool isValidItself() const;
  /// The verdict of the report under the name; true without one.
  bool isValidFor(const std::string& i_name) const;

  /// The report under the name for the current space, or null.
  CorvValidationReportConstShPtr report(const std::string& i_name) const;
  /// The report of that rank among those on the current space, with or without those on spaces that it includes.
  /// @return null past the last.
  CorvValidationReportConstShPtr report(unsigned int i_rank, std::string& o_name, bool i_withSubspaces) const;
  unsigned int countReports(bool i_withSubspaces) const;
  bool hasReports() const { return static_cast<bool>(m_reports); }
  /// A null report is ignored.
  void setReport(const std::string& i_name, const CorvValidationReportConstShPtr& i_report) const;
  void setReport(const std::string& i_name, const CorvValidationReportConstShPtr& i_report,
                 const CorvConfigSpaceShPtr& i_space) const;
  void removeReport(const std::string& i_name) const;
  void clearReports() const;

  // The same with an interned name, which is compared at once.
  CorvValidationReportConstShPtr keyedReport(const ClumStringKey& i_name) const;
  void setKeyedReport(const ClumStringKey& i_name, const CorvValidationReportConstShPtr& i_report,
                      const CorvConfigSpaceShPtr& i_space) const;
  void removeKeyedReport(const ClumStringKey& i_name) const;

  bool isSelfValidationEnabled() const { return m_isSelfValidationEnabled; }
  void isSelfValidationEnabled(bool i_isEnabled) { m_isSelfValidationEnabled = i_isEnabled; }

  /// A locked object was brought up to date; the count is a sign for its holders and forbids nothing by itself.
  void lock() const;
  void unlock() const;
  bool isLocked() const { return m_lockCount > 0; }

  /// `i_validator->validate(*this, i_params)`.
  bool validate(const CorvValidatorConstShPtr& i_validator, const ClumParameterMapConstShPtr& i_params) const;
  /// The validator's verdict, from its stored report if that still serves. What a validator's `validate` ends in.
  bool validateWith(const CorvValidator& i_validator, const ClumParameterMapConstShPtr& i_params) const;
  bool validateWith(const CorvValidatorConstShPtr& i_validator, const ClumParameterMapConstShPtr& i_params) const;

  /// To be called when the object was carried over to another space or version.
  void convertToSpace(const CorvConfigSpaceShPtr& i_space);

protected:
  CorvValidable() = default;
  /// A copy shares the reports and is outside of any change; it is not locked.
  CorvValidable(const CorvValidable& i_other)
    : m_isSelfValidationEnabled(i_other.m_isSelfValidationEnabled),
      m_needsSelfValidation(i_other.m_needsSelfValidation), m_isValidItself(i_other.m_isValidItself),
      m_reports(i_other.m_reports)
  {
  }
  /// Assignment keeps the target's own change depth and lock count.
  CorvValidable& operator=(const CorvValidable& i_other)
  {
    m_isSelfValidationEnabled = i_other.m_isSelfValidationEnabled;
    m_needsSelfValidation = i_other.m_needsSelfValidation;
    m_isValidItself = i_other.m_isValidItself;
    if (m_reports || i_other.m_reports)
    {
      m_ownsReports = m_ownsReports && this == &i_other;
      m_reports = i_other.m_reports;
    }
    return *this;
  }

  void selfValidateWhenDue() const
  {
    if (m_isSelfValidationEnabled && m_changeDepth == 0 && shouldSelfValidate())
      selfValidate();
  }

  /// `configSpace().get()`, without a handle.
  virtual const CorvConfigSpace* bareSpace() const;

private:
  friend class CorvValidator;
  struct CReports;

  void selfValidate() const;
  CReports& writableReports() const;

  mutable unsigned int m_changeDepth = 0;
  mutable int m_lockCount = 0;
  mutable bool m_isInChange = false;
  bool m_isSelfValidationEnabled = true;
  mutable bool m_needsSelfValidation = true;
  mutable bool m_isValidItself = true;
  mutable bool m_ownsReports = false; ///< false: the map is another object's too and is copied before a write
  mutable ShPtr<CReports> m_reports;  ///< null, or not empty
};
