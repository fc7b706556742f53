#pragma once

/// @file
/// Regular expressions.

#include <tam/regex/convert.h>
#include <tam/regex/regular_expression.h>
#include <tam/regex/wregular_expression.h>
