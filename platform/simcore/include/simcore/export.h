#pragma once

// Marks what the device library offers to its users.
#if defined(_WIN32)
#ifdef SIMCORE_BUILD
#define SIMCORE_API __declspec(dllexport)
#else
#define SIMCORE_API __declspec(dllimport)
#endif
#else
#define SIMCORE_API __attribute__((visibility("default")))
#endif
