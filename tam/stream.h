#pragma once

/// @file
/// Buffers and streams.

#include <tam/stream/buffer.h>
#include <tam/stream/buffered_istream.h>
#include <tam/stream/copy.h>
#include <tam/stream/crc32.h>
#include <tam/stream/eol.h>
#include <tam/stream/istream.h>
#include <tam/stream/lines.h>
#include <tam/stream/memory_buffer.h>
#include <tam/stream/ostream.h>
#include <tam/stream/page_buffer.h>
#include <tam/stream/position.h>
#include <tam/stream/raw_memory_buffer.h>
#include <tam/stream/seek_mode.h>
#include <tam/stream/sub_buffer.h>
#include <tam/stream/unbuffered_istream.h>
