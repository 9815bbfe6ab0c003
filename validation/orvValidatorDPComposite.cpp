#include "validation/orvValidatorDPComposite.h"

#include "foundation/lumDescribe.h"
#include "kinematics/orvConfigSpace.h"
#include "paths/orvDPRestriction.h"
#include "validation/orvValidatorSet.h"

LUM_DESCRIBE(CorvValidatorDPComposite)
{
  i_class.creates("(const CorvConfigSpaceShPtr& i_space)", &Self::create);
}

const std::string CorvValidatorDPComposite::DEFAULT_NAME("orvane.core.validator-dp-composite");

CorvValidatorDPComposite::CorvValidatorDPComposite(const CorvConfigSpaceShPtr& i_space)
  : CorvValidator(i_space, DEFAULT_NAME)
{
}

CorvValidatorDPComposite::~CorvValidatorDPComposite() = default;

lmStatus CorvValidatorDPComposite::init(const CorvValidatorDPCompositeWkPtr& i_weakPtr)
{
  return CorvValidator::init(i_weakPtr);
}

CorvValidatorDPCompositeShPtr CorvValidatorDPComposite::create(const CorvConfigSpaceShPtr& i_space)
{
  return lumCreate<CorvValidatorDPComposite>(i_space);
}

CorvValidatorDPCompositeShPtr
CorvValidatorDPComposite::createCopy(const CorvValidatorDPCompositeConstShPtr& i_objectToCopy)
{
  return lumCreateCopy(i_objectToCopy);
}

CorvValidatorShPtr CorvValidatorDPComposite::clone() const
{
  return createCopy(self());
}

void CorvValidatorDPComposite::updateJudgedSubspaces(const CorvConfigSpace& i_space) const
{
  if (m_version == i_space.version())
    return;
  m_judgedSubspaces.clear();
  for (unsigned int i = 0; i < i_space.countSubspaces(); ++i)
  {
    const CorvConfigSpaceShPtr subspace = i_space.subspace(i);
    if (subspace->directPathValidators()->count() > 0)
      m_judgedSubspaces.push_back(subspace);
  }
  m_version = i_space.version();
}

bool CorvValidatorDPComposite::doValidateDirectPath(const CorvDirectPath& i_dp,
                                                    const ClumParameterMapConstShPtr& i_params,
                                                    const CorvValidationReportConstShPtr&,
                                                    CorvValidationReportShPtr&) const
{
  const CorvConfigSpace* space = unwrappedSpace();
  if (!space)
    return true;
  updateJudgedSubspaces(*space);
  const std::vector<CorvConfigSpaceWkPtr> subspaces = m_judgedSubspaces;
  for (const CorvConfigSpaceWkPtr& weak : subspaces)
  {
    const CorvConfigSpaceShPtr subspace = weak.lock();
    const CorvDPRestrictionShPtr restriction = CorvDPRestriction::create(i_dp.self(), subspace);
    if (!restriction)
      return false;
    const bool isValid = restriction->validate(i_params);
    for (unsigned int i = 0; i < restriction->countReports(false); ++i)
    {
      std::string name;
      const CorvValidationReportConstShPtr report = restriction->report(i, name, false);
      i_dp.setReport(name, report, subspace);
    }
    if (!isValid)
      return false;
  }
  return true;
}

bool CorvValidatorDPComposite::shouldRevalidateDirectPath(const CorvDirectPath&, const ClumParameterMapConstShPtr&,
                                                          const CorvValidationReportConstShPtr&) const
{
  return true;
}
