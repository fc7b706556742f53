#pragma once

// What most tests use: the whole library as a user includes it, GoogleTest, and the means of this folder. It is compiled
// once for all test programs.

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <climits>
#include <cstring>
#include <cwchar>
#include <functional>
#include <future>
#include <limits>
#include <map>
#include <memory>
#include <mutex>
#include <new>
#include <numeric>
#include <optional>
#include <random>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <windows.h>

#include <tam/tam.h>
#include <tests/support/chain.h>
#include <tests/support/locale.h>
#include <tests/support/resources.h>
#include <tests/support/swap.h>
#include <tests/support/temporary_folder.h>
#include <tests/support/thrown.h>
#include <tests/support/time_limit.h>
#include <tests/support/unique_name.h>
