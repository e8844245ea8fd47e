// Export macro for the library's public classes (dllexport inside the DLL, dllimport for its users).
#pragma once

#if defined(_WIN32) && defined(UC_BUILDING_DLL)
#define UC_API __declspec(dllexport)
#elif defined(_WIN32) && defined(UC_USING_DLL)
#define UC_API __declspec(dllimport)
#else
#define UC_API
#endif
