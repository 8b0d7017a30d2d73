#pragma once
// CONNECTKIT_API marks what the Windows DLL exports. The library's own
// objects are compiled with CONNECTKIT_BUILDING; a host that uses the DLL
// imports the same names.

#if defined(_WIN32)
#if defined(CONNECTKIT_BUILDING)
#define CONNECTKIT_API __declspec(dllexport)
#else
#define CONNECTKIT_API __declspec(dllimport)
#endif
#else
#define CONNECTKIT_API __attribute__((visibility("default")))
#endif
