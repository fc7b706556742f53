#pragma once

/// @file
/// The whole library.

#include <tam/file.h>
#include <tam/status.h>
