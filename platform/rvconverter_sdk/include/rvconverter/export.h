#pragma once

#if defined(_WIN32) && defined(RVCONVERTER_BUILDING)
#define RVCONVERTER_API __declspec(dllexport)
#elif defined(_WIN32)
#define RVCONVERTER_API __declspec(dllimport)
#else
#define RVCONVERTER_API __attribute__((visibility("default")))
#endif
