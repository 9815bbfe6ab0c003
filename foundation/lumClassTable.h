#pragma once

/// The layers in the order in which their classes describe themselves at load.
#define LUM_FOR_EACH_LAYER(DO) \
  DO(foundation)               \
  DO(kinematics)               \
  DO(metrics)                  \
  DO(paths)                    \
  DO(validation)               \
  DO(constraints)              \
  DO(manifolds)                \
  DO(roadmaps)                 \
  DO(planners)                 \
  DO(optimizers)

#define LUM_DECLARE_LAYER(NAME) void lumRegisterLayer_##NAME();
LUM_FOR_EACH_LAYER(LUM_DECLARE_LAYER)
#undef LUM_DECLARE_LAYER
