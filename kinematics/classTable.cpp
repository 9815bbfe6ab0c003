#include "foundation/lumClassTable.h"

// Each class of the layer describes itself in its own source; a class that is listed but not described does not link.
#define LUM_CLASS(NAME) void lumRegister_##NAME();
#define LUM_PLAIN_CLASS(NAME)
#include "kinematics/classes.def"
#undef LUM_CLASS

void lumRegisterLayer_kinematics()
{
#define LUM_CLASS(NAME) lumRegister_##NAME();
#include "kinematics/classes.def"
#undef LUM_CLASS
#undef LUM_PLAIN_CLASS
}
