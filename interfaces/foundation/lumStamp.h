#pragma once

#include "foundation/lumExport.h"

#include <cstdint>

/// A fresh number, larger than every one given before in this process: tells whether something changed since.
/// Compared for equality only; may be called by several threads.
LUM_API std::uint64_t lumNextStamp();

/// The last number given: as long as it stays the same, nothing that has a stamp has changed.
LUM_API std::uint64_t lumLatestStamp();
