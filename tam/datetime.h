#pragma once

/// @file
/// Dates and times.

#include <tam/datetime/period.h>
#include <tam/datetime/time.h>
