#pragma once

/// @file
/// The whole library.

#include <tam/config.h>
#include <tam/container.h>
#include <tam/datetime.h>
#include <tam/file.h>
#include <tam/process.h>
#include <tam/regex.h>
#include <tam/security.h>
#include <tam/status.h>
#include <tam/stream.h>
#include <tam/text.h>
#include <tam/thread.h>
