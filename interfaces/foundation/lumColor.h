#pragma once

#include "foundation/lumExport.h"

/// A colour of three parts and an opacity, each from 0 to 1. A value class.
class LUM_API ClumColor
{
public:
  /// Opaque black.
  constexpr ClumColor() = default;
  constexpr ClumColor(float i_red, float i_green, float i_blue, float i_alpha = 1.0f)
    : m_parts{i_red, i_green, i_blue, i_alpha}
  {
  }

  constexpr float red() const { return m_parts[0]; }
  constexpr float green() const { return m_parts[1]; }
  constexpr float blue() const { return m_parts[2]; }
  constexpr float alpha() const { return m_parts[3]; }

  bool operator==(const ClumColor& i_other) const
  {
    return red() == i_other.red() && green() == i_other.green() && blue() == i_other.blue() &&
           alpha() == i_other.alpha();
  }
  bool operator!=(const ClumColor& i_other) const { return !(*this == i_other); }

private:
  float m_parts[4] = {0.0f, 0.0f, 0.0f, 1.0f};
};
