#pragma once

/// @file
/// TAM_API marks what tam.dll exports. Programs that use the DLL define nothing.

#if defined(TAM_STATIC)
#define TAM_API
#elif defined(TAM_BUILD)
#define TAM_API __declspec(dllexport)
#else
#define TAM_API __declspec(dllimport)
#endif
