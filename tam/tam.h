#pragma once

/// @file
/// The whole library.

#include <tam/container.h>
#include <tam/process.h>
#include <tam/security.h>
#include <tam/status.h>
#include <tam/thread.h>
