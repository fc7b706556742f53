#pragma once

/// @file
/// Paths, files and directories.

#include <tam/file/directory.h>
#include <tam/file/directory_iterator.h>
#include <tam/file/file.h>
#include <tam/file/file_buffer.h>
#include <tam/file/file_system.h>
#include <tam/file/open_mode.h>
#include <tam/file/path.h>
#include <tam/file/search.h>
#include <tam/file/type.h>
