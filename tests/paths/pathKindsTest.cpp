#include "foundation/lumBox.h"
#include "kinematics/orvDevice.h"
#include "paths/orvDPComposite.h"
#include "paths/orvDPManhattan.h"
#include "paths/orvDPRestriction.h"
#include "paths/orvDPSequence.h"
#include "paths/orvPath.h"
#include "paths/orvSMComposite.h"
#include "paths/orvSMLinear.h"
#include "paths/orvSMLinearWithDiscreteEnds.h"
#include "paths/orvSMManhattan.h"
#include "paths/orvSMSequence.h"
#include "paths/pathSuite.h"
#include "support/devices.h"
#include "support/spaces.h"

#include <cmath>

// The kinds of path of plain dof values, and chains of them.

namespace
{
constexpr double GRID_STEP = 0.125;

template <class PATH>
CorvAbstractPathShPtr ofKind(const CorvDirectPathShPtr& i_path)
{
  return boost::dynamic_pointer_cast<PATH>(i_path);
}

/// By the given method, or by the space's own.
CorvDirectPathShPtr steered(const CorvConfigSpaceShPtr& i_space,
                            const CorvSteeringMethodShPtr& i_method = CorvSteeringMethodShPtr(), double i_range = 2.0)
{
  const CorvConfig start = randomConfigOf(i_space, i_range), end = randomConfigOf(i_space, i_range);
  return (i_method ? i_method : i_space->steeringMethod())->makeDirectPath(start, end);
}

/// A space of three sub-spaces whose own methods differ, so that no one motion does for them all.
CorvCSCompositeShPtr makeSpaceOfMethods()
{
  const CorvCSCompositeShPtr space = makeMixedSpace();
  space->dof(2)->steeringMethod(CorvSMLinearWithDiscreteEnds::create(0.0));
  return space;
}

/// The last of three angles stands still.
CorvDeviceShPtr lockedArm()
{
  const CorvDeviceShPtr arm = planarArm(3);
  arm->configSpace()->dof(2)->lockAt(0.5);
  return arm;
}

CorvAbstractPathShPtr makeLinearOnArm()
{
  return steered(planarArm(3)->configSpace(), CorvSMLinear::create());
}

CorvAbstractPathShPtr makeLinearInTree()
{
  return steered(makeRandomSpace(3), CorvSMLinear::create());
}

CorvAbstractPathShPtr makeLinearOnLockedArm()
{
  return steered(lockedArm()->configSpace(), CorvSMLinear::create());
}

CorvAbstractPathShPtr makeOrientedLinear()
{
  return steered(planarArm(2)->configSpace(), CorvSMLinear::create(true));
}

CorvAbstractPathShPtr makeBetweenDiscreteEnds()
{
  return steered(planarArm(3)->configSpace(), CorvSMLinearWithDiscreteEnds::create(GRID_STEP, 0.01));
}

CorvAbstractPathShPtr makeDefaultOnArm()
{
  return steered(sixAxisArm()->configSpace());
}

CorvAbstractPathShPtr makeDefaultOnFlyer()
{
  return steered(freeFlyer(ClumBox::create(1.0, 0.5, 0.25))->configSpace(), CorvSMComposite::create(), 1.5);
}

CorvAbstractPathShPtr makeCompositeOfMethods()
{
  const CorvDirectPathShPtr path = steered(makeSpaceOfMethods());
  const auto composite = boost::dynamic_pointer_cast<CorvDPComposite>(path);
  return composite && composite->countDirectPaths() > 1 ? composite : CorvDPCompositeShPtr();
}

CorvAbstractPathShPtr makeCompositeOnArm()
{
  const CorvDeviceShPtr arm = planarArm(3);
  arm->configSpace()->dof(1)->steeringMethod(CorvSMLinearWithDiscreteEnds::create(0.0));
  return ofKind<CorvDPComposite>(steered(arm->configSpace()));
}

CorvAbstractPathShPtr makeManhattanOnArm()
{
  return ofKind<CorvDPManhattan>(steered(planarArm(3)->configSpace(), CorvSMManhattan::create()));
}

CorvAbstractPathShPtr makeShuffledManhattan()
{
  const CorvSMManhattanShPtr method = CorvSMManhattan::create();
  method->doesRandomizeDofOrder(true);
  return ofKind<CorvDPManhattan>(steered(sixAxisArm()->configSpace(), method));
}

CorvAbstractPathShPtr makeManhattanOnLockedArm()
{
  return ofKind<CorvDPManhattan>(steered(lockedArm()->configSpace(), CorvSMManhattan::create()));
}

CorvAbstractPathShPtr makeSequenceInTree()
{
  return ofKind<CorvDPSequence>(steered(makeRandomSpace(2), CorvSMSequence::create()));
}

CorvAbstractPathShPtr makeSequenceOnArm()
{
  return ofKind<CorvDPSequence>(steered(planarArm(3)->configSpace(), CorvSMSequence::create()));
}

CorvAbstractPathShPtr makeRestriction()
{
  const CorvCSCompositeShPtr space =
    makeSpace({makeDof({false, false, 1.0}), makeSpace({makeDof({true, false, 2.0}), makeDof({true, true, 1.0})})});
  const CorvDirectPathShPtr whole = steered(space);
  return whole && whole->extractTo(0.75 * whole->length()).succeeded()
           ? CorvDPRestriction::create(whole, space->subspace(1))
           : CorvDPRestrictionShPtr();
}

CorvPathShPtr chainOn(const CorvConfigSpaceShPtr& i_space, const CorvSteeringMethodShPtr& i_method)
{
  const CorvPathShPtr path = CorvPath::createWithConfig(randomConfigOf(i_space, 1.5));
  for (int i = 0; i < 5; ++i)
  {
    const CorvConfig next = randomConfigOf(i_space, 1.5);
    path->appendDirectPath(i_method->makeDirectPath(*path->configAtEnd(), next));
  }
  return path;
}

CorvAbstractPathShPtr makeChain()
{
  const CorvConfigSpaceShPtr space = planarArm(2)->configSpace();
  return chainOn(space, space->steeringMethod());
}

CorvAbstractPathShPtr makeOrientedChain()
{
  return chainOn(planarArm(2)->configSpace(), CorvSMManhattan::create());
}

const PathKindEntry s_linearOnArm(PathKind("LinearOnArm", makeLinearOnArm));
const PathKindEntry s_linearInTree(PathKind("LinearInTree", makeLinearInTree));
const PathKindEntry s_linearOnLockedArm(PathKind("LinearOnLockedArm", makeLinearOnLockedArm));
const PathKindEntry s_orientedLinear(PathKind("OrientedLinear", makeOrientedLinear));
const PathKindEntry s_betweenDiscreteEnds(
  PathKind("LinearBetweenDiscreteEnds", makeBetweenDiscreteEnds).withPartsMadeAnew(0.5 * GRID_STEP + 1e-9));
const PathKindEntry s_defaultOnArm(PathKind("DefaultOnArm", makeDefaultOnArm));
const PathKindEntry s_defaultOnFlyer(PathKind("DefaultOnFlyer", makeDefaultOnFlyer));
const PathKindEntry
  s_compositeOfMethods(PathKind("CompositeOfMethods", makeCompositeOfMethods).withPartsMadeAnew(1e-9));
const PathKindEntry s_compositeOnArm(PathKind("CompositeOnArm", makeCompositeOnArm).withPartsMadeAnew(1e-9));
const PathKindEntry s_manhattanOnArm(PathKind("ManhattanOnArm", makeManhattanOnArm));
const PathKindEntry s_shuffledManhattan(PathKind("ShuffledManhattan", makeShuffledManhattan));
const PathKindEntry s_manhattanOnLockedArm(PathKind("ManhattanOnLockedArm", makeManhattanOnLockedArm));
const PathKindEntry s_sequenceInTree(PathKind("SequenceInTree", makeSequenceInTree));
const PathKindEntry s_sequenceOnArm(PathKind("SequenceOnArm", makeSequenceOnArm));
const PathKindEntry s_restriction(PathKind("Restriction", makeRestriction).withoutRates());
const PathKindEntry s_chain(PathKind("Chain", makeChain));
const PathKindEntry s_orientedChain(PathKind("OrientedChain", makeOrientedChain));
} // namespace
