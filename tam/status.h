#pragma once

/// @file
/// Status and error reporting.

#include <tam/status/codes.h>
#include <tam/status/event_log.h>
#include <tam/status/exception_translator.h>
#include <tam/status/exceptions.h>
#include <tam/status/messages.h>
#include <tam/status/status.h>
#include <tam/status/status_arg.h>
