#pragma once

/// @file
/// Configuration: profile files.

#include <tam/config/profile_access.h>
#include <tam/config/profile_reader.h>
