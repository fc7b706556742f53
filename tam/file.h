#pragma once

/// @file
/// Paths, files and directories.

#include <tam/file/path.h>
