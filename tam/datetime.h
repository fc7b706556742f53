#pragma once

/// @file
/// Dates and times.

#include <tam/datetime/calendar_date.h>
#include <tam/datetime/date.h>
#include <tam/datetime/date_and_time.h>
#include <tam/datetime/idgen.h>
#include <tam/datetime/period.h>
#include <tam/datetime/status_arg.h>
#include <tam/datetime/time.h>
#include <tam/datetime/time_zone.h>
