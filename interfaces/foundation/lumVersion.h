#pragma once

/// The version that coders store: a negative number whose magnitude grows with each release.
constexpr int LUM_CODING_VERSION = -601000;
