#include "foundation/lumObjectFilter.h"

#include "foundation/lumClass.h"
#include "foundation/lumObject.h"
#include "foundation/lumValue.h"

#include <algorithm>

ClumObjectFilterShPtr ClumObjectFilter::cloneByRejection(const ClumObjectFilter& i_rejected) const
{
  return (*this & !i_rejected).clone();
}

bool ClumObjectFilter::implies(const ClumObjectFilter& i_other) const
{
  return &i_other == this || i_other.impliedBy(*this);
}

bool ClumObjectFilter::impliedBy(const ClumObjectFilter& i_other) const
{
  return &i_other == this;
}

ClumObjectFilterShPtr ClumNegationFilter::clone() const
{
  return ClumObjectFilterShPtr(new ClumNegationFilter(*this));
}

bool ClumNegationFilter::implies(const ClumObjectFilter& i_other) const
{
  if (const auto* const negation = dynamic_cast<const ClumNegationFilter*>(&i_other))
    return negation->m_negated->implies(*m_negated);
  return ClumObjectFilter::implies(i_other);
}

bool ClumConjunctionFilter::accepts(const ClumObject& i_object) const
{
  return std::all_of(m_members.begin(), m_members.end(),
                     [&](const ClumObjectFilterShPtr& i_member) { return i_member->accepts(i_object); });
}

ClumObjectFilterShPtr ClumConjunctionFilter::clone() const
{
  return ClumObjectFilterShPtr(new ClumConjunctionFilter(*this));
}

bool ClumConjunctionFilter::implies(const ClumObjectFilter& i_other) const
{
  if (ClumObjectFilter::implies(i_other))
    return true;
  return std::any_of(m_members.begin(), m_members.end(),
                     [&](const ClumObjectFilterShPtr& i_member) { return i_member->implies(i_other); });
}

bool ClumConjunctionFilter::impliedBy(const ClumObjectFilter& i_other) const
{
  return std::all_of(m_members.begin(), m_members.end(),
                     [&](const ClumObjectFilterShPtr& i_member) { return i_other.implies(*i_member); });
}

ClumObjectFilterShPtr ClumCallbackObjectFilter::clone() const
{
  return ClumObjectFilterShPtr(new ClumCallbackObjectFilter(*this));
}

bool ClumCallbackObjectFilter::implies(const ClumObjectFilter& i_other) const
{
  const auto* const callback = dynamic_cast<const ClumCallbackObjectFilter*>(&i_other);
  return callback ? callback->m_callback == m_callback : ClumObjectFilter::implies(i_other);
}

bool ClumObjectClassFilterBase::accepts(const ClumObject& i_object) const
{
  return i_object.classObject()->isA(*m_class);
}

ClumObjectFilterShPtr ClumObjectClassFilterBase::clone() const
{
  return ClumObjectFilterShPtr(new ClumObjectClassFilterBase(*this));
}

bool ClumObjectClassFilterBase::implies(const ClumObjectFilter& i_other) const
{
  const auto* const other = dynamic_cast<const ClumObjectClassFilterBase*>(&i_other);
  return other ? m_class->isA(*other->m_class) : ClumObjectFilter::implies(i_other);
}

ClumObjectValueFilterShPtr ClumObjectValueFilter::create(const ClumObjectFilter& i_filter)
{
  return ClumObjectValueFilterShPtr(new ClumObjectValueFilter(i_filter));
}

bool ClumObjectValueFilter::accepts(const ClumValue& i_value) const
{
  const ClumObjectConstShPtr object = i_value.getConstObject();
  return object && m_filter->accepts(*object);
}

ClumNegationFilter operator!(const ClumObjectFilter& i_filter)
{
  return ClumNegationFilter(i_filter);
}

ClumConjunctionFilter operator&(const ClumObjectFilter& i_first, const ClumObjectFilter& i_second)
{
  return ClumConjunctionFilter(i_first, i_second);
}
