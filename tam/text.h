#pragma once

/// @file
/// Text.

#include <tam/text/case.h>
#include <tam/text/compare.h>
#include <tam/text/convert.h>
#include <tam/text/number.h>
#include <tam/text/quote.h>
#include <tam/text/tokeniser.h>
#include <tam/text/trim.h>
