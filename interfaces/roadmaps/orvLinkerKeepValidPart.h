#pragma once

#include "roadmaps/orvLinkerStandard.h"

/// Links as `CorvLinkerStandard` does, with the same parameters, and keeps what a failed try has proved.
///
/// A try is tested from the node found in the other component towards the node to be linked. Where it fails, the part
/// that is proved from the found node is added to that node's component, so that every link attempt draws the other
/// trees nearer even if it cannot reach them: one new node for each candidate that failed, two by default. Parts
/// shorter than `minimumPartLength` are dropped.
class LUM_API CorvLinkerKeepValidPart : public CorvLinker
{
  LUM_CONCRETE(CorvLinkerKeepValidPart, CorvLinker);

public:
  static CorvLinkerKeepValidPartShPtr create();
  static CorvLinkerKeepValidPartShPtr createCopy(const CorvLinkerKeepValidPartConstShPtr& i_objectToCopy);
  ~CorvLinkerKeepValidPart() override;

  /// A path length; 0 at first.
  double minimumPartLength() const { return m_minimumPartLength; }
  void minimumPartLength(double i_length) { m_minimumPartLength = i_length; }

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

protected:
  CorvLinkerKeepValidPart() = default;
  CorvLinkerKeepValidPart(const CorvLinkerKeepValidPart&) = default;
  lmStatus init(const CorvLinkerKeepValidPartWkPtr& i_weakPtr);

  lmStatus doLink(EDirection i_direction, const CorvNodeShPtr& i_node,
                  const ClumParameterMapConstShPtr& i_parameters) const override;

private:
  double m_minimumPartLength = 0.0;
};
