#pragma once

#include "kinematics/orvConfigSpace.h"

/// A space that owns an ordered list of sub-spaces and is the parent of each.
///
/// It starts with a composite constraint and a composite configuration validator, through which the sets of its
/// sub-spaces are run. A space has one parent at most: one that has a parent cannot be inserted.
class LUM_API CorvCSComposite : public CorvConfigSpace
{
  LUM_CONCRETE(CorvCSComposite, CorvConfigSpace);

public:
  ~CorvCSComposite() override;
  /// @return null for an empty type.
  static CorvCSCompositeShPtr create(const std::string& i_type);
  static CorvCSCompositeShPtr createCopy(const CorvCSCompositeConstShPtr& i_objectToCopy);

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

  /// @return -1, with nothing changed, for a rank above the count, null, a space with a parent, this space, or a space
  /// that includes this one.
  lmStatus insertSubspace(const CorvConfigSpaceShPtr& i_subspace, unsigned int i_rank) override;
  CorvConfigSpaceShPtr subspace(unsigned int i_rank) const override;
  unsigned int countSubspaces() const override;
  lmStatus removeSubspace(unsigned int i_rank) override;
  using CorvConfigSpace::removeSubspace;

protected:
  CorvCSComposite() = default;
  explicit CorvCSComposite(const std::string& i_type);
  lmStatus init(const CorvCSCompositeWkPtr& i_weakPtr);

  /// Lets the device of a device's root space add its collision validator.
  void willReturnConfigValidators(const CorvValidatorSetShPtr& i_set) const override;

private:
  std::vector<CorvConfigSpaceShPtr> m_subspaces;
};
