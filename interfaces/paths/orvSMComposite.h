#pragma once

#include "paths/orvSteeringMethod.h"

#include <vector>

/// Steers each sub-space by its own steering method, all in parallel.
///
/// The tree of sub-spaces is flattened once for each version of a space. A tree of composites over plain linear dofs
/// needs no tree of motions: one linear motion does.
class LUM_API CorvSMComposite : public CorvSteeringMethod
{
  LUM_CONCRETE(CorvSMComposite, CorvSteeringMethod);

public:
  ~CorvSMComposite() override;
  static CorvSMCompositeShPtr create();
  static CorvSMCompositeShPtr createCopy(const CorvSMCompositeConstShPtr& i_objectToCopy);
  CorvSteeringMethodShPtr clone() const override;

  /// @return a `CorvDPComposite`, or null if the configurations are of two spaces or some moving sub-space has no
  /// motion.
  CorvDirectPathShPtr makeDirectPath(const CorvConfig& i_start, const CorvConfig& i_end) const override;
  bool isOriented(const CorvConfigSpaceConstShPtr& i_space) const override;
  bool isConservative(const CorvConfigSpaceConstShPtr& i_space) const override;
  bool operator==(const CorvSteeringMethod& i_other) const override;

protected:
  CorvSMComposite() = default;
  CorvSMComposite(const CorvSMComposite& i_other);
  lmStatus init(const CorvSMCompositeWkPtr& i_weakPtr);

private:
  struct CEntry
  {
    unsigned int rank; ///< the first dof
    unsigned int count;
    CorvConfigSpaceWkPtr space;
    CorvSteeringMethodShPtr steeringMethod;
  };

  /// The flat list for one version of one space.
  struct CCache
  {
    CorvConfigSpaceConstWkPtr space;
    const CorvConfigSpace* spaceAddress = nullptr; ///< meaningful while `space` lives
    unsigned int version = 0;
    bool isOriented = false;
    bool isConservative = true;
    bool isWholeLinear = false; ///< the one entry is a linear motion of the whole space
    std::vector<CEntry> entries;
  };

  const CCache& checkCache(const CorvConfigSpace& i_space) const;
  static void addToCache(const CorvConfigSpaceShPtr& i_space, unsigned int i_firstRank, CCache& io_cache);
  static bool isFullyLinear(const CorvConfigSpace& i_space);
  static bool makeChild(const CEntry& i_entry, CorvConfig& io_start, CorvConfig& io_end, CorvDirectPathShPtr& o_child);

  mutable CCache m_cache;
};
