#pragma once

#include <functional>
#include <string>

/// Times two pieces of work against each other in one run.
///
/// Both are repeated until a round takes long enough to be timed; rounds of the two alternate, so that a change of the
/// machine's speed meets both; the medians are compared. Absolute times of different runs are not comparable.
struct Comparison
{
  double first = 0.0; ///< seconds for one execution
  double second = 0.0;
  double ratio() const { return first / second; }
};
Comparison compare(const std::function<void()>& i_first, const std::function<void()>& i_second);

/// One line of the result table: what, the ratio, and what it must be.
void report(const std::string& i_what, double i_ratio, const std::string& i_target);
void report(const std::string& i_what, const std::string& i_value);

/// Keeps the compiler from dropping work whose result is not used.
template <class T>
inline void keep(const T& i_value)
{
  asm volatile("" : : "r,m"(&i_value) : "memory");
}

/// Enters a section in the list that `orvane_bench` runs.
class Section
{
public:
  Section(const char* i_name, void (*i_run)());
};
