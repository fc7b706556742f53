#pragma once

/// @file
/// The whole library.

#include <tam/status.h>
