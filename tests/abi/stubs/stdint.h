#pragma once
#include <cstdint>
using std::int32_t;
using std::uint32_t;
using std::uint64_t;
using std::uint8_t;
