#pragma once

/// @file
/// The whole library.

#include <tam/container.h>
#include <tam/file.h>
#include <tam/status.h>
#include <tam/text.h>
