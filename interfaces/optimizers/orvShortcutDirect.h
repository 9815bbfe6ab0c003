#pragma once

#include "optimizers/orvShortcutMethod.h"

/// Replaces a stretch of path by the one direct path that the space's steering method makes between its ends, if that
/// is valid.
class LUM_API CorvShortcutDirect : public CorvShortcutMethod
{
  LUM_CONCRETE(CorvShortcutDirect, CorvShortcutMethod);

public:
  ~CorvShortcutDirect() override;
  static CorvShortcutDirectShPtr create();

protected:
  CorvShortcutDirect() = default;
  CorvShortcutDirect(const CorvShortcutDirect&) = default;

  using CorvShortcutMethod::doPlan;
  lmStatus doPlan(const CorvPathConstShPtr& i_inputPath, const std::vector<bool>& i_stableConfigs,
                  const ClumParameterMapConstShPtr& i_parameters, CorvPathShPtr& o_path) override;
};
