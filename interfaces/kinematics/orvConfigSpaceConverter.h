#pragma once

#include "foundation/lumObject.h"
#include "foundation/lumStatus.h"
#include "kinematics/handles.h"

#include <set>
#include <string>

/// Carries configurations over between spaces of different make, known by their type keys.
///
/// A subclass says in its constructor which types it serves, and supplies the conversion.
class LUM_API CorvConfigSpaceConverter : public ClumObject
{
  LUM_ABSTRACT(CorvConfigSpaceConverter, ClumObject);

public:
  ~CorvConfigSpaceConverter() override;

  /// The types of the spaces between which this converter goes, in either direction.
  const std::set<std::string>& supportedTypes() const { return m_supportedTypes; }
  /// @param o_to on the space to convert to. @return -1, with `o_to` untouched, if a configuration has no space or its
  /// space is of a type that is not supported.
  lmStatus convert(const CorvConfig& i_from, CorvConfig& o_to) const;

protected:
  explicit CorvConfigSpaceConverter(const std::set<std::string>& i_supportedTypes);
  lmStatus init(const CorvConfigSpaceConverterWkPtr& i_weakPtr);

  /// The conversion itself, between two spaces of supported types.
  virtual lmStatus doConvert(const CorvConfig& i_from, CorvConfig& o_to) const = 0;

private:
  std::set<std::string> m_supportedTypes;
};
