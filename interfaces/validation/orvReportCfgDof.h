#pragma once

#include "validation/orvValidationReport.h"

#include <vector>

/// The verdict on each dof of a configuration, in rank order.
class LUM_API CorvReportCfgDof : public CorvValidationReport
{
  LUM_CONCRETE(CorvReportCfgDof, CorvValidationReport);

public:
  ~CorvReportCfgDof() override;
  static CorvReportCfgDofShPtr create();
  static CorvReportCfgDofShPtr createCopy(const CorvReportCfgDofConstShPtr& i_objectToCopy);
  CorvValidationReportShPtr clone() const override;

  void appendDof(bool i_isValid) { m_dofs.push_back(i_isValid); }
  unsigned int countDofs() const { return static_cast<unsigned int>(m_dofs.size()); }
  bool isDofValid(unsigned int i_rank) const { return i_rank < m_dofs.size() && m_dofs[i_rank]; }

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

protected:
  CorvReportCfgDof() = default;
  CorvReportCfgDof(const CorvReportCfgDof&) = default;
  lmStatus init(const CorvReportCfgDofWkPtr& i_weakPtr);

private:
  std::vector<bool> m_dofs;
};
