#pragma once

/// @file
/// The whole library.

#include <tam/container.h>
#include <tam/status.h>
