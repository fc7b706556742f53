#pragma once

/// @file
/// Processes, anonymous and named pipes, modules.

#include <tam/process/anonymous_pipe.h>
#include <tam/process/module.h>
#include <tam/process/named_pipe.h>
#include <tam/process/process.h>
