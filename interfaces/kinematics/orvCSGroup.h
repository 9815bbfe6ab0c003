#pragma once

#include "kinematics/orvConfigSpace.h"

/// A composite of spaces that live elsewhere: their parents stay as they are.
///
/// A change in a member still reaches the group: each member keeps a weak list of the groups that hold it.
class LUM_API CorvCSGroup : public CorvConfigSpace
{
  LUM_CONCRETE(CorvCSGroup, CorvConfigSpace);

public:
  ~CorvCSGroup() override;
  /// @return null for an empty type.
  static CorvCSGroupShPtr create(const std::string& i_type);
  static CorvCSGroupShPtr createCopy(const CorvCSGroupConstShPtr& i_objectToCopy);

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;
  void awake() override;

  /// @return -1, with nothing changed, for a rank above the count, null, this space, or a space that includes this one.
  lmStatus insertSubspace(const CorvConfigSpaceShPtr& i_subspace, unsigned int i_rank) override;
  CorvConfigSpaceShPtr subspace(unsigned int i_rank) const override;
  unsigned int countSubspaces() const override;
  lmStatus removeSubspace(unsigned int i_rank) override;
  using CorvConfigSpace::removeSubspace;

protected:
  CorvCSGroup() = default;
  explicit CorvCSGroup(const std::string& i_type);
  lmStatus init(const CorvCSGroupWkPtr& i_weakPtr);

private:
  std::vector<CorvConfigSpaceShPtr> m_subspaces;
};
