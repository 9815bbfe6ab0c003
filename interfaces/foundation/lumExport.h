#pragma once

/// Marks what the library exports; everything else stays hidden.
#if defined(ORVANE_STATIC)
#define LUM_API
#elif defined(_WIN32)
#if defined(ORVANE_BUILDING)
#define LUM_API __declspec(dllexport)
#else
#define LUM_API __declspec(dllimport)
#endif
#else
#define LUM_API __attribute__((visibility("default")))
#endif
