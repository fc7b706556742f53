#pragma once

/// @file
/// Threads and synchronisation.

#include <tam/thread/critical.h>
#include <tam/thread/event.h>
#include <tam/thread/exclusive_lock.h>
#include <tam/thread/mutex.h>
#include <tam/thread/read_write_semaphore.h>
#include <tam/thread/semaphore.h>
#include <tam/thread/sleep.h>
#include <tam/thread/thread.h>
#include <tam/thread/timer.h>
