#pragma once

/// @file
/// Containers.

#include <tam/container/object_vector.h>
#include <tam/container/pointer_vector.h>
