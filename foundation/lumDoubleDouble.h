#pragma once

#include <cmath>

/// A number of about 32 digits, as the sum of two doubles (Dekker, "A floating-point technique for extending the
/// available precision", 1971). The products need no fused operation, so that all machines agree.
class ClumDoubleDouble
{
public:
  ClumDoubleDouble() = default;
  ClumDoubleDouble(double i_value) : m_high(i_value) {} // a number is one of these: conversion is meant

  double value() const { return m_high; }

  ClumDoubleDouble operator-() const { return ClumDoubleDouble(-m_high, -m_low); }
  ClumDoubleDouble operator+(const ClumDoubleDouble& i_other) const
  {
    const double sum = m_high + i_other.m_high;
    const double part = sum - m_high;
    const double error = (m_high - (sum - part)) + (i_other.m_high - part);
    return normalized(sum, error + (m_low + i_other.m_low));
  }
  ClumDoubleDouble operator-(const ClumDoubleDouble& i_other) const { return *this + -i_other; }
  ClumDoubleDouble operator*(const ClumDoubleDouble& i_other) const
  {
    const double product = m_high * i_other.m_high;
    double a = 0.0, b = 0.0, c = 0.0, d = 0.0;
    split(m_high, a, b);
    split(i_other.m_high, c, d);
    const double error = ((a * c - product) + a * d + b * c) + b * d;
    return normalized(product, error + (m_high * i_other.m_low + m_low * i_other.m_high));
  }
  ClumDoubleDouble operator/(const ClumDoubleDouble& i_other) const
  {
    const double first = m_high / i_other.m_high;
    const ClumDoubleDouble rest = *this - i_other * first;
    const double second = rest.m_high / i_other.m_high;
    const ClumDoubleDouble left = rest - i_other * second;
    return normalized(first, second) + left.m_high / i_other.m_high;
  }

  bool operator<(const ClumDoubleDouble& i_other) const
  {
    return m_high < i_other.m_high || (m_high == i_other.m_high && m_low < i_other.m_low);
  }
  bool operator>(const ClumDoubleDouble& i_other) const { return i_other < *this; }
  bool operator<=(const ClumDoubleDouble& i_other) const { return !(i_other < *this); }
  bool operator>=(const ClumDoubleDouble& i_other) const { return !(*this < i_other); }

private:
  ClumDoubleDouble(double i_high, double i_low) : m_high(i_high), m_low(i_low) {}

  /// @param i_low not larger than `i_high`.
  static ClumDoubleDouble normalized(double i_high, double i_low)
  {
    const double sum = i_high + i_low;
    return ClumDoubleDouble(sum, i_low - (sum - i_high));
  }
  static void split(double i_value, double& o_high, double& o_low)
  {
    const double scaled = 134217729.0 * i_value; // 2^27 + 1
    o_high = scaled - (scaled - i_value);
    o_low = i_value - o_high;
  }

  double m_high = 0.0;
  double m_low = 0.0;
};
