#pragma once

#include "foundation/lumCodable.h"
#include "kinematics/handles.h"
#include "validation/handles.h"

/// What a validator found on a validable. Subclasses tell more than the verdict.
///
/// A report is shared by the copies of what was judged: once stored it is not changed, only replaced.
class LUM_API CorvValidationReport : public ClumMutableCodable
{
  LUM_CONCRETE(CorvValidationReport, ClumMutableCodable);

public:
  ~CorvValidationReport() override;
  static CorvValidationReportShPtr create();
  static CorvValidationReportShPtr createCopy(const CorvValidationReportConstShPtr& i_objectToCopy);
  virtual CorvValidationReportShPtr clone() const;

  bool isValid() const { return m_isValid; }
  void isValid(bool i_isValid);
  /// The space for which the report holds, null if it was not told or is gone.
  CorvConfigSpaceShPtr space() const { return m_space.lock(); }
  void space(const CorvConfigSpaceShPtr& i_space);

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

protected:
  CorvValidationReport() = default;
  CorvValidationReport(const CorvValidationReport&) = default;
  lmStatus init(const CorvValidationReportWkPtr& i_weakPtr);

private:
  bool m_isValid = true;
  CorvConfigSpaceWkPtr m_space;
};
