#pragma once

#include "foundation/lumHandle.h"

// Every class of this layer, with its handles.
#define LUM_CLASS(NAME) LUM_HANDLES(NAME)
#define LUM_PLAIN_CLASS(NAME) LUM_HANDLES(NAME)
#include "paths/classes.def"
#undef LUM_CLASS
#undef LUM_PLAIN_CLASS
