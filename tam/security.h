#pragma once

/// @file
/// Access lists and security descriptors.

#include <tam/security/acl.h>
#include <tam/security/group_cache.h>
#include <tam/security/security.h>
