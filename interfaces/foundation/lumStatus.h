#pragma once

#include "foundation/lumExport.h"

#include <memory>
#include <string>
#include <vector>

/// The outcome of an operation that can fail.
///
/// `code()` 0 is success, -1 (all bits set) an unnamed failure, anything else a code that some class registered with a
/// name and a message. A failure keeps what caused it: the codes beneath the top one, the innermost last. A success
/// costs nothing to make, copy and test.
class LUM_API lmStatus
{
public:
  static constexpr unsigned int SUCCESS = 0u;
  static constexpr unsigned int FAILURE = ~0u;

  lmStatus() = default;
  lmStatus(unsigned int i_code) : m_code(i_code) {}
  lmStatus(int i_code) : m_code(static_cast<unsigned int>(i_code)) {}
  lmStatus(const lmStatus& i_other) : m_code(i_other.m_code)
  {
    if (i_other.m_causes)
      copyCauses(i_other);
  }
  lmStatus(lmStatus&&) noexcept = default;
  lmStatus& operator=(const lmStatus& i_other);
  lmStatus& operator=(lmStatus&&) noexcept = default;
  lmStatus& operator=(unsigned int i_code);

  unsigned int code() const { return m_code; }
  bool succeeded() const { return m_code == SUCCESS; }
  bool failed() const { return m_code != SUCCESS; }

  /// Puts `i_code` on top: `code()` is then `i_code`, and what was there stays beneath it as the cause.
  /// Pushing on a success leaves no cause.
  void push(unsigned int i_code);
  void setWithReason(unsigned int i_code, unsigned int i_reason);
  void setWithReason(unsigned int i_code, const lmStatus& i_reason);

  /// @return true if the code stands anywhere in the status.
  bool hasCode(unsigned int i_code) const;

  /// The registered message of each code, the outermost first, joined by ", because: ".
  std::string description() const;

private:
  void copyCauses(const lmStatus& i_other);

  unsigned int m_code = SUCCESS;
  std::unique_ptr<std::vector<unsigned int>> m_causes;  ///< null, or the codes beneath the top, the nearest first
};

inline bool operator==(const lmStatus& i_status, unsigned int i_code) { return i_status.code() == i_code; }
inline bool operator==(unsigned int i_code, const lmStatus& i_status) { return i_status.code() == i_code; }
inline bool operator!=(const lmStatus& i_status, unsigned int i_code) { return i_status.code() != i_code; }
inline bool operator!=(unsigned int i_code, const lmStatus& i_status) { return i_status.code() != i_code; }
