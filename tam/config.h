#pragma once

/// @file
/// Configuration: the registry and profile files.

#include <tam/config/profile_access.h>
#include <tam/config/profile_reader.h>
#include <tam/config/registry_key.h>
#include <tam/config/registry_places.h>
#include <tam/config/registry_value.h>
