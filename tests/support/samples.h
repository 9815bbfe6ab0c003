#pragma once

#include "foundation/handles.h"
#include "kinematics/handles.h"

#include <ostream>
#include <string>
#include <vector>

/// Makes one typical object of a class, initialised and complete by itself: a copy by coding has to equal it.
struct SampleMaker
{
  const char* className;
  ClumCodableShPtr (*make)();
};

/// How a test names a sample.
inline void PrintTo(const SampleMaker& i_maker, std::ostream* o_text)
{
  *o_text << i_maker.className;
}

/// One line a class.
const std::vector<SampleMaker>& sampleMakers();

/// What the samples know weakly: written beside them, it lets a file keep all their references.
std::vector<ClumCodableShPtr> sampleSurroundings();

/// A space of two translations, each bounded to [-10, 10], with linear steering.
CorvConfigSpaceShPtr sampleSpace();
