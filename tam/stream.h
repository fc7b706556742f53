#pragma once

/// @file
/// Buffers and streams.

#include <tam/stream/buffer.h>
#include <tam/stream/buffered_istream.h>
#include <tam/stream/crc32.h>
#include <tam/stream/eol.h>
#include <tam/stream/istream.h>
#include <tam/stream/lines.h>
#include <tam/stream/position.h>
#include <tam/stream/seek_mode.h>
#include <tam/stream/unbuffered_istream.h>
