#pragma once

#include "foundation/handles.h"
#include "foundation/lumExport.h"
#include "foundation/lumValue.h"

#include <vector>

/// A predicate on objects. Filters are immutable and are copied by `clone`.
///
/// `!a` and `a & b` make new filters, which hold copies. `implies` and `impliedBy` answer true only where they know;
/// false means "not known".
class LUM_API ClumObjectFilter
{
public:
  virtual ~ClumObjectFilter() = default;

  virtual bool accepts(const ClumObject& i_object) const = 0;
  virtual ClumObjectFilterShPtr clone() const = 0;
  /// A filter that accepts what this one accepts and `i_rejected` does not.
  virtual ClumObjectFilterShPtr cloneByRejection(const ClumObjectFilter& i_rejected) const;
  /// True if every object that this filter accepts is accepted by `i_other`. The default asks `i_other`.
  virtual bool implies(const ClumObjectFilter& i_other) const;
  virtual bool impliedBy(const ClumObjectFilter& i_other) const;
};

/// Accepts what another filter rejects.
class LUM_API ClumNegationFilter : public ClumObjectFilter
{
public:
  explicit ClumNegationFilter(const ClumObjectFilter& i_negated) : m_negated(i_negated.clone()) {}
  bool accepts(const ClumObject& i_object) const override { return !m_negated->accepts(i_object); }
  ClumObjectFilterShPtr clone() const override;
  bool implies(const ClumObjectFilter& i_other) const override;

private:
  ClumObjectFilterShPtr m_negated;
};

/// Accepts what all its members accept.
class LUM_API ClumConjunctionFilter : public ClumObjectFilter
{
public:
  ClumConjunctionFilter(const ClumObjectFilter& i_first, const ClumObjectFilter& i_second)
    : m_members{i_first.clone(), i_second.clone()}
  {
  }
  bool accepts(const ClumObject& i_object) const override;
  ClumObjectFilterShPtr clone() const override;
  bool implies(const ClumObjectFilter& i_other) const override;
  bool impliedBy(const ClumObjectFilter& i_other) const override;

private:
  std::vector<ClumObjectFilterShPtr> m_members;
};

/// Wraps a function, or anything that is called like one, `bool (const ClumObject&)`.
class LUM_API ClumCallbackObjectFilter : public ClumObjectFilter
{
public:
  template <class FUNCTION>
  explicit ClumCallbackObjectFilter(FUNCTION i_function) : m_callback(new TCallback<FUNCTION>(i_function))
  {
  }
  bool accepts(const ClumObject& i_object) const override { return m_callback->call(i_object); }
  ClumObjectFilterShPtr clone() const override;
  /// Two wrappers of one function accept the same, if one is a copy of the other.
  bool implies(const ClumObjectFilter& i_other) const override;

private:
  struct CCallback
  {
    virtual ~CCallback() = default;
    virtual bool call(const ClumObject& i_object) const = 0;
  };
  template <class FUNCTION>
  struct TCallback : CCallback
  {
    explicit TCallback(FUNCTION i_function) : function(i_function) {}
    bool call(const ClumObject& i_object) const override { return function(i_object); }
    FUNCTION function;
  };

  ShPtr<const CCallback> m_callback;
};

/// Accepts the objects of a class and of the classes below it.
class LUM_API ClumObjectClassFilterBase : public ClumObjectFilter
{
public:
  /// @param i_class never null.
  explicit ClumObjectClassFilterBase(const ClumClassShPtr& i_class) : m_class(i_class) {}
  bool accepts(const ClumObject& i_object) const override;
  ClumObjectFilterShPtr clone() const override;
  bool implies(const ClumObjectFilter& i_other) const override;

private:
  ClumClassShPtr m_class;
};

/// The class filter of a class known when compiling.
template <class X>
class TlumObjectClassFilter : public ClumObjectClassFilterBase
{
public:
  TlumObjectClassFilter() : ClumObjectClassFilterBase(X::__classObject()) {}
};

/// The same question asked of a value: accepts a value that holds an object, const or not, that a filter accepts.
class LUM_API ClumObjectValueFilter
{
public:
  static ClumObjectValueFilterShPtr create(const ClumObjectFilter& i_filter);
  bool accepts(const ClumValue& i_value) const;

private:
  explicit ClumObjectValueFilter(const ClumObjectFilter& i_filter) : m_filter(i_filter.clone()) {}

  ClumObjectFilterShPtr m_filter;
};

LUM_API ClumNegationFilter operator!(const ClumObjectFilter& i_filter);
LUM_API ClumConjunctionFilter operator&(const ClumObjectFilter& i_first, const ClumObjectFilter& i_second);
