#include "kinematics/orvValidable.h"

#include "foundation/lumLogManager.h"
#include "foundation/lumParameterMap.h"
#include "foundation/lumStringKey.h"
#include "kinematics/orvConfigSpace.h"
#include "validation/orvValidationReport.h"
#include "validation/orvValidator.h"

#include <boost/container/small_vector.hpp>
#include <boost/smart_ptr/make_shared_object.hpp>

#include <algorithm>
#include <utility>

/// The reports, sorted by name and, under one name, in the order in which they came. Spaces stand without their
/// wrapper, so that what a device owns never holds the wrapper.
struct CorvValidable::CReports
{
  struct CEntry
  {
    ClumStringKey name;
    CorvConfigSpaceConstShPtr space;
    CorvValidationReportConstShPtr report;
  };
  using TEntries = boost::container::small_vector<CEntry, 2>;
  TEntries entries;

  TEntries::iterator find(const ClumStringKey& i_name, const CorvConfigSpace* i_space)
  {
    return std::find_if(entries.begin(), entries.end(),
                        [&](const CEntry& i_entry)
                        { return i_entry.space.get() == i_space && i_entry.name == i_name; });
  }

  void set(const ClumStringKey& i_name, const CorvConfigSpace* i_space, CorvValidationReportConstShPtr i_report)
  {
    const auto found = find(i_name, i_space);
    if (found != entries.end())
    {
      found->report = std::move(i_report);
      return;
    }
    CorvConfigSpaceConstShPtr space =
      i_space ? CorvConfigSpaceConstShPtr(i_space->self()) : CorvConfigSpaceConstShPtr();
    const auto place = std::upper_bound(entries.begin(), entries.end(), i_name,
                                        [](const ClumStringKey& i_key, const CEntry& i_entry)
                                        { return i_key.text() < i_entry.name.text(); });
    entries.insert(place, CEntry{i_name, std::move(space), std::move(i_report)});
  }
};

namespace
{
const CorvConfigSpace* unwrappedOrNull(const CorvConfigSpace* i_space)
{
  return i_space ? &i_space->unwrapped() : nullptr;
}
} // namespace

CorvValidable::~CorvValidable() = default;

bool CorvValidable::validate(const ClumParameterMapConstShPtr& i_params) const
{
  if (const CorvValidatorShPtr validator = designatedValidator())
    validator->validate(*this, i_params);
  return isValid();
}

bool CorvValidable::isValid() const
{
  selfValidateWhenDue();
  if (!m_isValidItself)
    return false;
  if (!m_reports)
    return true;
  const CorvConfigSpace* space = bareSpace();
  for (const CReports::CEntry& entry : m_reports->entries)
    if (!entry.report->isValid() && (space ? entry.space && space->includes(*entry.space) : !entry.space))
      return false;
  return true;
}

void CorvValidable::unvalidate() const
{
  clearReports();
  didUnvalidate();
  m_needsSelfValidation = true;
  m_isValidItself = true;
}

void CorvValidable::didUnvalidate() const
{
}

bool CorvValidable::needsRevalidationWith(const CorvValidator&, const ClumParameterMapConstShPtr&,
                                          const CorvValidationReportConstShPtr&) const
{
  return false;
}

CorvValidatorShPtr CorvValidable::designatedValidator() const
{
  return CorvValidatorShPtr();
}

const CorvConfigSpace* CorvValidable::bareSpace() const
{
  return configSpace().get();
}

bool CorvValidable::shouldSelfValidate() const
{
  return m_isSelfValidationEnabled && m_changeDepth == 0 && canSelfValidate() &&
         (m_needsSelfValidation || mustSelfValidate());
}

bool CorvValidable::canSelfValidate() const
{
  return true;
}

bool CorvValidable::mustSelfValidate() const
{
  return false;
}

bool CorvValidable::doSelfValidate()
{
  return true;
}

bool CorvValidable::doValidateWith(const CorvValidator& i_validator, const ClumParameterMapConstShPtr&,
                                   const CorvValidationReportConstShPtr&, CorvValidationReportShPtr&)
{
  ClumLogManager::addError(__FILE__, __LINE__,
                           "The validator '" + i_validator.name() + "' was asked about a thing that it cannot judge.");
  return false;
}

bool CorvValidable::isValidItself() const
{
  selfValidateWhenDue();
  return m_isValidItself;
}

bool CorvValidable::isValidFor(const std::string& i_name) const
{
  const CorvValidationReportConstShPtr found = report(i_name);
  return !found || found->isValid();
}

CorvValidationReportConstShPtr CorvValidable::report(const std::string& i_name) const
{
  return m_reports ? keyedReport(i_name) : CorvValidationReportConstShPtr();
}

CorvValidationReportConstShPtr CorvValidable::keyedReport(const ClumStringKey& i_name) const
{
  if (!m_reports)
    return CorvValidationReportConstShPtr();
  const auto found = m_reports->find(i_name, unwrappedOrNull(bareSpace()));
  return found == m_reports->entries.end() ? CorvValidationReportConstShPtr() : found->report;
}

CorvValidationReportConstShPtr CorvValidable::report(unsigned int i_rank, std::string& o_name,
                                                     bool i_withSubspaces) const
{
  selfValidateWhenDue();
  if (!m_reports)
    return CorvValidationReportConstShPtr();
  const CorvConfigSpace* space = bareSpace();
  for (const CReports::CEntry& entry : m_reports->entries)
  {
    const bool isHere = entry.space.get() == unwrappedOrNull(space);
    if (!isHere && !(i_withSubspaces && space && entry.space && space->includes(*entry.space)))
      continue;
    if (i_rank-- != 0)
      continue;
    o_name = entry.name.text();
    return entry.report;
  }
  return CorvValidationReportConstShPtr();
}

unsigned int CorvValidable::countReports(bool i_withSubspaces) const
{
  std::string name;
  unsigned int count = 0;
  while (report(count, name, i_withSubspaces))
    ++count;
  return count;
}

void CorvValidable::setReport(const std::string& i_name, const CorvValidationReportConstShPtr& i_report) const
{
  setKeyedReport(i_name, i_report, configSpace());
}

void CorvValidable::setReport(const std::string& i_name, const CorvValidationReportConstShPtr& i_report,
                              const CorvConfigSpaceShPtr& i_space) const
{
  setKeyedReport(i_name, i_report, i_space);
}

void CorvValidable::setKeyedReport(const ClumStringKey& i_name, const CorvValidationReportConstShPtr& i_report,
                                   const CorvConfigSpaceShPtr& i_space) const
{
  if (i_report)
    writableReports().set(i_name, unwrappedOrNull(i_space.get()), i_report);
}

void CorvValidable::removeReport(const std::string& i_name) const
{
  if (m_reports)
    removeKeyedReport(i_name);
}

void CorvValidable::removeKeyedReport(const ClumStringKey& i_name) const
{
  if (!m_reports)
    return;
  const CorvConfigSpace* space = unwrappedOrNull(bareSpace());
  if (m_reports->find(i_name, space) == m_reports->entries.end())
    return;
  CReports& reports = writableReports();
  reports.entries.erase(reports.find(i_name, space));
  if (reports.entries.empty())
    clearReports();
}

// What others share stays as it is; the handle alone goes.
void CorvValidable::clearReports() const
{
  m_reports.reset();
  m_ownsReports = false;
}

CorvValidable::CReports& CorvValidable::writableReports() const
{
  if (!m_reports)
    m_reports = boost::make_shared<CReports>();
  else if (!m_ownsReports || !m_reports.unique())
    m_reports = boost::make_shared<CReports>(*m_reports);
  m_ownsReports = true;
  return *m_reports;
}

void CorvValidable::lock() const
{
  if (m_lockCount == 0)
    selfValidateWhenDue();
  ++m_lockCount;
}

void CorvValidable::unlock() const
{
  --m_lockCount;
}

bool CorvValidable::validate(const CorvValidatorConstShPtr& i_validator,
                             const ClumParameterMapConstShPtr& i_params) const
{
  return i_validator && i_validator->validate(*this, i_params);
}

bool CorvValidable::validateWith(const CorvValidator& i_validator, const ClumParameterMapConstShPtr& i_params) const
{
  const bool usesReports = i_validator.doesUseReports();
  CorvValidationReportConstShPtr oldReport;
  if (usesReports && m_reports)
    oldReport = keyedReport(i_validator.nameKey());
  if (oldReport && !needsRevalidationWith(i_validator, i_params, oldReport))
    return oldReport->isValid();

  CorvValidationReportShPtr newReport;
  const bool isValid = const_cast<CorvValidable*>(this)->doValidateWith(i_validator, i_params, oldReport, newReport);
  if (!isValid && !newReport && usesReports)
    newReport = CorvValidationReport::create();
  if (newReport)
  {
    newReport->isValid(isValid);
    writableReports().set(i_validator.nameKey(), unwrappedOrNull(bareSpace()), std::move(newReport));
  }
  else if (oldReport)
    removeKeyedReport(i_validator.nameKey());
  return isValid;
}

bool CorvValidable::validateWith(const CorvValidatorConstShPtr& i_validator,
                                 const ClumParameterMapConstShPtr& i_params) const
{
  return i_validator && validateWith(*i_validator, i_params);
}

void CorvValidable::convertToSpace(const CorvConfigSpaceShPtr&)
{
  unvalidate();
}

// Constraints are applied within a change, so that they neither ask for a self-validation again nor unvalidate twice.
void CorvValidable::selfValidate() const
{
  CorvValidable& self = const_cast<CorvValidable&>(*this);
  if (mustSelfValidate())
    unvalidate();
  m_isValidItself = true;
  self.beginChange();
  const bool isValid = self.doSelfValidate();
  self.endChange();
  m_isValidItself = isValid;
  m_needsSelfValidation = false;
}
