#pragma once

/// @file
/// The whole library.

#include <tam/datetime.h>
#include <tam/status.h>
